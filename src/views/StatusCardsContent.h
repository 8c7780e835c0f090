#pragma once

#include "model/Timestamp.h"
#include "model/UsageWindow.h"
#include "views/Badge.h"
#include "views/MetricCardContent.h"

#include <QList>
#include <QLocale>
#include <QPair>
#include <QString>
#include <QTimeZone>

#include <optional>

class ProviderAccount;

// The small cards every screen shares and the two kept ready that no screen places yet:
// the empty state, the unavailable metric, the account summary and the metric cell.
class StatusCardsContent final {
public:
    StatusCardsContent() = delete;

    struct EmptyState {
        QString symbol;
        QString title;
        QString message;
        // Present only when both a title and an action were given.
        std::optional<QString> actionTitle;
        static constexpr int kMessageWidth = 420;
        friend bool operator==(const EmptyState&, const EmptyState&) = default;
    };
    static EmptyState emptyState(const QString& title, const QString& message,
                                 const std::optional<QString>& actionTitle, bool hasAction);

    struct Unavailable {
        QString symbol;
        QString title;
        QString message;
    };
    static Unavailable unavailable(const QString& title, const QString& message);

    struct AccountSummary {
        QString name;
        QString symbol; // the provider's system image
        Badge status;   // of the stored status, not the effective one
        QString provider;
        QString noSnapshot; // "No snapshot yet — refresh or add manual data." without one
        QList<QPair<QString, QString>> windows; // the first two: title, remaining
        QString updated;
    };
    static AccountSummary accountSummary(const ProviderAccount& account, Timestamp now,
                                         const QLocale& locale = QLocale(),
                                         const QTimeZone& timeZone = QTimeZone::systemTimeZone());

    struct MetricCell {
        QString title;
        QString used;
        QString noLimit; // "Limit not reported" without a limit
        double progress = 0;
        Tone progressTone = Tone::accent;
        QString remainder;
        QString ceiling;
        QString resetSymbol;
        QString countdown;
    };
    static MetricCell metricCell(const UsageWindow& window, Timestamp now, const QLocale& locale = QLocale());
};
