#pragma once

#include "model/AIProvider.h"
#include "model/AgentBudget.h"
#include "model/ConnectionMode.h"
#include "model/Timestamp.h"
#include "model/UsageModelSummary.h"
#include "model/UsagePoint.h"
#include "model/UsageSnapshot.h"
#include "model/UsageWindow.h"
#include "views/Badge.h"
#include "views/OverviewView.h"
#include "views/StatusCardsContent.h"

#include <QList>
#include <QLocale>
#include <QPair>
#include <QString>
#include <QTimeZone>

#include <optional>

class ProviderAccount;

// One account in full, as plain values: the header, the window toolbar, the
// connection panel and its sign-out dialog, then either the empty state or the
// callouts, allowances, histories and provenance of its snapshot. Each text is chosen
// here from the account, whether it is refreshing, and the time.
class AccountDetailView final {
public:
    AccountDetailView() = delete;

    using SectionHeading = OverviewView::SectionHeading;

    // What a connection mode looks like on the panel and says when there is no data yet.
    struct ConnectionStyle {
        QString icon;
        Tone tone = Tone::muted;
        QString title;
        QString message;
        QString emptyMessage;
        friend bool operator==(const ConnectionStyle&, const ConnectionStyle&) = default;
    };
    static ConnectionStyle connectionStyle(ConnectionMode mode);

    struct Chip {
        QString symbol;
        QString text;
        friend bool operator==(const Chip&, const Chip&) = default;
    };

    struct Header {
        AIProvider provider = AIProvider::openAI;
        QString name;
        QString subtitle; // "OpenAI · API organization / project"
        QString planName; // empty: no plan line
        // "Auto-detected" with its icon, when the plan name was detected.
        std::optional<Chip> planDetected;
        QString roster; // "Roster: Scout · Builder", or empty
        QList<Chip> chips;
        Badge status;
        std::optional<Badge> source;
        QString updated; // "Updated 5 min. ago"
        friend bool operator==(const Header&, const Header&) = default;
    };

    struct Toolbar {
        QString refreshTitle; // "Refresh" or "Refreshing"
        QString refreshIcon;
        bool refreshEnabled = true;
        QString editTitle;
        friend bool operator==(const Toolbar&, const Toolbar&) = default;
    };

    struct ConnectionPanel {
        ConnectionStyle style;
        Badge status;
        QString refreshTitle; // "Smart refresh" or "Refreshing"
        QString refreshIcon;
        bool refreshEnabled = true;
        std::optional<QString> editTitle;    // "Edit connection", for every mode but mock
        std::optional<QString> signOutTitle; // "Sign out", for apiKey only
        friend bool operator==(const ConnectionPanel&, const ConnectionPanel&) = default;
    };

    struct SignOutDialog {
        QString title;
        QString message;
        QString confirmTitle;
        QString cancelTitle;
    };

    struct WarningCallout {
        QString symbol;
        QString label;
        QStringList lines;
        friend bool operator==(const WarningCallout&, const WarningCallout&) = default;
    };

    struct BillingOnlyCallout {
        QString symbol;
        QString title;
        QString message;
        Badge pulse;
        Tone tone = Tone::muted;
        friend bool operator==(const BillingOnlyCallout&, const BillingOnlyCallout&) = default;
    };

    struct Metrics {
        SectionHeading heading;
        QList<UsageWindow> windows;
        QList<UsageModelSummary> models;
        QList<AgentBudget> budgets;
        // The narrowest a metric card's column gets: at least 280, and 320 keeps a
        // remainder and its ceiling ("81,760 tokens remaining", "of 150,000 tokens") on
        // one line without cutting either.
        static constexpr int kMinimumColumnWidth = 320;
        friend bool operator==(const Metrics&, const Metrics&) = default;
    };

    struct History {
        SectionHeading heading;
        QString leading;  // the unit's title, capitalised, or "Usage"
        QString trailing; // "Persisted daily view · up to 90 days" or "Selected range"
        QList<UsagePoint> points;
        friend bool operator==(const History&, const History&) = default;
    };

    struct Provenance {
        SectionHeading heading;
        QList<QPair<QString, QString>> rows;
        std::optional<QString> note;
        friend bool operator==(const Provenance&, const Provenance&) = default;
    };

    struct Screen {
        Header header;
        Toolbar toolbar;
        ConnectionPanel connection;
        // Without a snapshot: this, and nothing below it.
        std::optional<StatusCardsContent::EmptyState> emptyState;
        std::optional<WarningCallout> warnings;
        std::optional<BillingOnlyCallout> billingOnly;
        std::optional<Metrics> metrics;
        std::optional<History> history;
        std::optional<History> billingHistory;
        std::optional<Provenance> provenance;
        friend bool operator==(const Screen&, const Screen&) = default;
    };

    static Screen make(const ProviderAccount& account, bool isRefreshing, Timestamp now,
                       const QLocale& locale = QLocale(),
                       const QTimeZone& timeZone = QTimeZone::systemTimeZone());

    static Header header(const ProviderAccount& account, Timestamp now, const QLocale& locale = QLocale(),
                         const QTimeZone& timeZone = QTimeZone::systemTimeZone());
    static Toolbar toolbar(bool isRefreshing);
    static ConnectionPanel connectionPanel(const ProviderAccount& account, bool isRefreshing);
    static SignOutDialog signOutDialog();
    static StatusCardsContent::EmptyState emptyState(ConnectionMode mode);
    static std::optional<WarningCallout> warningCallout(const UsageSnapshot& snapshot);
    static std::optional<BillingOnlyCallout> billingOnlyCallout(const UsageSnapshot& snapshot);
    static Metrics metrics(const ProviderAccount& account, const UsageSnapshot& snapshot);
    static History history(const ProviderAccount& account, const UsageSnapshot& snapshot);
    static std::optional<History> billingHistory(const ProviderAccount& account,
                                                 const UsageSnapshot& snapshot);
    static Provenance provenance(const ProviderAccount& account, const UsageSnapshot& snapshot,
                                 const QLocale& locale = QLocale(),
                                 const QTimeZone& timeZone = QTimeZone::systemTimeZone());
};
