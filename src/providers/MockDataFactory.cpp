#include "providers/MockDataFactory.h"

#include "model/UuidText.h"
#include "store/ProviderAccount.h"

#include <QMap>

#include <algorithm>
#include <cmath>

namespace {
UsageWindow window(const char* id, const char* title, UsageUnit unit, UsageHorizon horizon,
                   std::optional<QString> model, double used, std::optional<double> limit,
                   std::optional<double> remaining, std::optional<Timestamp> resetAt, const char* note) {
    return UsageWindow{.id = QString::fromLatin1(id),
                       .title = QString::fromUtf8(title),
                       .unit = unit,
                       .horizon = horizon,
                       .modelName = std::move(model),
                       .used = used,
                       .limit = limit,
                       .reportedRemaining = remaining,
                       .resetAt = resetAt,
                       .note = QString::fromUtf8(note)};
}

QList<UsageWindow> windowsFor(AIProvider provider, double j, Timestamp now) {
    const auto in = [now](double seconds) { return std::optional<Timestamp>(now.addingSeconds(seconds)); };
    const QString openAI = QStringLiteral("OpenAI API");
    const QString claude = QStringLiteral("Claude Sonnet");
    const QString gemini = QStringLiteral("Gemini");
    switch (provider.value()) {
    case AIProvider::openAI:
        return {window("requests-minute", "Requests / minute", UsageUnit::requests, UsageHorizon::shortTerm,
                       openAI, 42 + j, 60, 18 - j, in(2520), "Rate-limit header when available"),
                window("tokens-minute", "Tokens / minute", UsageUnit::tokens, UsageHorizon::shortTerm, openAI,
                       68240 + 100 * j, 150000, 81760 - 100 * j, in(2520),
                       "Rate-limit header when available"),
                window("api-spend", "API spend / 30 days", UsageUnit::dollars, UsageHorizon::billing,
                       std::nullopt, 84.32 + j, std::nullopt, std::nullopt, std::nullopt,
                       "No spend ceiling reported")};
    case AIProvider::anthropic:
        return {window("messages-five-hours", "Messages / 5 hours", UsageUnit::messages,
                       UsageHorizon::shortTerm, claude, 34 + j, 50, 16 - j, in(7920),
                       "Consumer limit; sample only"),
                window("messages-seven-days", "Messages / 7 days", UsageUnit::messages, UsageHorizon::weekly,
                       claude, 420 + 2 * j, 500, 80 - 2 * j, in(345600), "Consumer limit; sample only")};
    case AIProvider::xAI:
        return {window("credits-period", "Credits / billing period", UsageUnit::credits,
                       UsageHorizon::billing, QStringLiteral("Grok API"), 210 + 3 * j, 500, 290 - 3 * j,
                       in(691200), "Billing units are not tokens")};
    case AIProvider::gemini:
        return {window("gemini-messages-five-hours", "Messages / 5 hours", UsageUnit::messages,
                       UsageHorizon::shortTerm, gemini, 18 + j, 50, 32 - j, in(10800),
                       "Consumer limit; sample only"),
                window("gemini-messages-seven-days", "Messages / 7 days", UsageUnit::messages,
                       UsageHorizon::weekly, gemini, 260 + 2 * j, 500, 240 - 2 * j, in(432000),
                       "Consumer limit; sample only")};
    }
    Q_UNREACHABLE();
    return {};
}

// `now` moved by `days` in the user's calendar, keeping the wall-clock time; `now`
// itself for zero days, to the bit. `local` is `now` in the user's time zone.
Timestamp daysFrom(Timestamp now, const QDateTime& local, int days) {
    if (days == 0) {
        return now;
    }
    const QDateTime moved = local.addDays(days);
    if (!moved.isValid()) {
        return now;
    }
    return now.addingSeconds(static_cast<double>(local.msecsTo(moved)) / 1000.0);
}

QList<UsagePoint> series(const UsageWindow& source, Timestamp now, double start, double extra) {
    const double base = source.used.value_or(0.0);
    // Converted once: the time zone lookup is the dearest part, and a storm of sample
    // refreshes makes many of these.
    const QDateTime local = now.toDateTime();
    QList<UsagePoint> points;
    points.reserve(8);
    for (int i = 0; i <= 7; ++i) {
        points.append(UsagePoint{.date = daysFrom(now, local, i - 7),
                                 .value = std::max(base * (start + i * 0.07) + extra, 0.0),
                                 .unit = source.unit});
    }
    return points;
}
} // namespace

double MockDataFactory::shift(const QUuid& id) {
    bool ok = false;
    const qint64 prefix = UuidText::toText(id).left(4).toLongLong(&ok, 16);
    const double value = ok ? static_cast<double>(prefix) : 1.0;
    return std::fmod(value, 12.0) / 10.0;
}

UsageSnapshot MockDataFactory::snapshot(const ProviderAccount& account, Timestamp now) {
    return snapshot(account.id(), account.provider(), now);
}

UsageSnapshot MockDataFactory::snapshot(const QUuid& id, AIProvider provider, Timestamp now) {
    const double j = shift(id);
    const QList<UsageWindow> windows = windowsFor(provider, j, now);

    QList<UsagePoint> billing;
    const auto billingWindow = std::find_if(windows.cbegin(), windows.cend(), [](const UsageWindow& w) {
        return w.horizon == UsageHorizon::billing;
    });
    if (billingWindow != windows.cend()) {
        billing = series(*billingWindow, now, 0.48, 0.0);
    }

    // Grouped by model name in plain order of Unicode scalar values; windows keep
    // their order inside a group.
    QList<QString> models;
    for (const UsageWindow& w : windows) {
        if (w.modelName && !w.modelName->isEmpty() && !models.contains(*w.modelName)) {
            models.append(*w.modelName);
        }
    }
    std::sort(models.begin(), models.end(),
              [](const QString& a, const QString& b) { return a.toUcs4() < b.toUcs4(); });
    QList<UsageModelSummary> summaries;
    for (const QString& model : models) {
        UsageModelSummary summary{.modelName = model, .windows = {}};
        for (const UsageWindow& w : windows) {
            if (w.modelName == model) {
                summary.windows.append(w);
            }
        }
        summaries.append(summary);
    }

    return UsageSnapshot{.source = UsageSource::mock,
                         .capturedAt = now,
                         .windows = windows,
                         .history = series(windows.first(), now, 0.52, j),
                         .billingHistory = billing,
                         .warnings = {},
                         .modelSummaries = summaries};
}
