#pragma once

#include "model/AIProvider.h"
#include "model/SyncStatus.h"
#include "model/Timestamp.h"
#include "views/Badge.h"
#include "views/MonitoringSort.h"
#include "views/MonitoringViewMode.h"
#include "views/StatusCardsContent.h"

#include <QList>
#include <QLocale>
#include <QString>
#include <QTimeZone>
#include <QUuid>

#include <optional>

class ProviderAccount;

// The dashboard of one sidebar selection, as plain values: the header, five summary
// tiles, the sample notice, the empty state or the attention list and the monitoring
// section. Every function reads only the accounts it is given and the time, so the
// screen is a drawing of what they return.
class OverviewView final {
public:
    OverviewView() = delete;

    struct SummaryTile {
        QString title;
        QString value;
        QString detail;
        QString icon;
        Tone accent = Tone::accent;
        friend bool operator==(const SummaryTile&, const SummaryTile&) = default;
    };

    struct SectionHeading {
        QString title;
        QString subtitle;
        friend bool operator==(const SectionHeading&, const SectionHeading&) = default;
    };

    struct Header {
        QString title;
        QString tagline;
    };

    struct SampleDataNotice {
        QString icon;
        QString title;
        QString message;
        QString actionTitle;
    };

    struct AttentionRow {
        QUuid id;
        AIProvider provider = AIProvider::openAI;
        QString name;
        // "Usage pulse: Watch" for a current account, its sync message otherwise.
        QString message;
        Badge pulse;
    };

    struct AttentionSection {
        SectionHeading heading;
        QList<AttentionRow> rows;
    };

    // One provider's cards in the cards mode.
    struct ProviderGroup {
        AIProvider provider = AIProvider::openAI;
        QString title; // the provider's display name
        QString count; // "1 subscription", "3 subscriptions"
        QList<ProviderAccount*> accounts;
    };

    struct MonitoringSection {
        SectionHeading heading;
        // The pickers' labels: not drawn, read by screen readers.
        QString viewPickerLabel;
        QString sortPickerLabel;
        MonitoringViewMode viewMode = MonitoringViewMode::cards;
        MonitoringSort sort = MonitoringSort::attention;
        // Matrix mode: every account, sorted.
        QList<ProviderAccount*> sorted;
        // Cards mode: the providers in their declared order, each sorted inside.
        QList<ProviderGroup> groups;
        // The hint a card carries for assistive technology.
        QString cardHint;
    };

    // The whole screen, top to bottom.
    struct Screen {
        Header header;
        QList<SummaryTile> tiles;
        std::optional<SampleDataNotice> sampleNotice;
        // Present exactly when there are no accounts; nothing follows it.
        std::optional<StatusCardsContent::EmptyState> emptyState;
        std::optional<AttentionSection> attention;
        std::optional<MonitoringSection> monitoring;
    };

    static Screen make(const QString& title, const QList<ProviderAccount*>& accounts, MonitoringSort sort,
                       MonitoringViewMode viewMode, Timestamp now, const QLocale& locale = QLocale(),
                       const QTimeZone& timeZone = QTimeZone::systemTimeZone());

    static Header header(const QString& title);
    static QList<SummaryTile> summaryTiles(const QList<ProviderAccount*>& accounts, Timestamp now,
                                           const QLocale& locale = QLocale(),
                                           const QTimeZone& timeZone = QTimeZone::systemTimeZone());
    static std::optional<SampleDataNotice> sampleDataNotice(const QList<ProviderAccount*>& accounts);
    static StatusCardsContent::EmptyState emptyState();
    static std::optional<AttentionSection> attentionSection(const QList<ProviderAccount*>& accounts);
    static MonitoringSection monitoringSection(const QList<ProviderAccount*>& accounts, MonitoringSort sort,
                                               MonitoringViewMode viewMode,
                                               const QLocale& locale = QLocale());
    static QList<ProviderAccount*> sortedAccounts(const QList<ProviderAccount*>& accounts,
                                                  MonitoringSort sort);
    static int statusPriority(SyncStatus status);
    // The attention score: the status's priority plus twice the pulse's.
    static int attentionScore(const ProviderAccount& account);
};
