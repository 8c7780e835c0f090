#pragma once

#include "model/UsageSnapshot.h"
#include "views/AgentBudgetPanelContent.h"
#include "views/Badge.h"
#include "views/HorizonPanelContent.h"
#include "views/ModelBreakdownContent.h"

#include <QList>
#include <QLocale>
#include <QString>
#include <QTimeZone>

#include <optional>

class ProviderAccount;

// The full monitoring card of one subscription, top to bottom: identity and badges,
// then either "No snapshot yet" or the two horizons, the model and agent panels, the
// billing-only line, the other signals and the footer. Every part appears only when it
// has something to say.
struct SubscriptionCardContent {
    struct Chip {
        QString symbol;
        QString text;
        friend bool operator==(const Chip&, const Chip&) = default;
    };
    struct AdditionalRow {
        // A pulse dot of the health: its tone, and the health title as its name.
        Badge dot;
        QString title;
        QString used;
        QString limitText; // "No limit" or the remainder
        friend bool operator==(const AdditionalRow&, const AdditionalRow&) = default;
    };

    // Identity row.
    QString providerRaw; // the logo
    QString name;
    QString subtitle; // "OpenAI · #1A2B3C · API"
    QList<Chip> chips;
    QList<Badge> badges; // pulse, status, then source when there is a snapshot
    QString updated;     // "Updated 2 hr. ago"

    bool hasSnapshot = false;
    // Without a snapshot.
    QString noSnapshotSymbol;
    QString noSnapshotTitle;
    QString noSnapshotMessage;

    // With one.
    QList<HorizonPanelContent> horizons;
    std::optional<ModelBreakdownContent> models;
    std::optional<AgentBudgetPanelContent> budgets;
    // The billing-only line, when the snapshot has only a billing signal.
    std::optional<Badge> billingOnly;
    QString billingOnlyText;
    QString billingOnlySymbol;
    QString additionalHeading; // empty without additional windows
    QList<AdditionalRow> additional;
    // Footer.
    QString trendTitle;
    QString trendUnit; // "Requests", or "No history"
    QString resetTitle;
    QString resetCountdown;
    QString resetDate; // or "No reset reported"

    static SubscriptionCardContent make(const ProviderAccount& account, Timestamp now,
                                        const QLocale& locale = QLocale(),
                                        const QTimeZone& timeZone = QTimeZone::systemTimeZone());
    static AdditionalRow additionalRow(const UsageWindow& window, const QLocale& locale);
    // The snapshot has no short-term or weekly signal but a billing one.
    static bool isBillingOnly(const UsageSnapshot& snapshot);

    friend bool operator==(const SubscriptionCardContent&, const SubscriptionCardContent&) = default;
};
