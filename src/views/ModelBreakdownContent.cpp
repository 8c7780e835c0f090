#include "views/ModelBreakdownContent.h"

#include "views/DisplayFormatters.h"

#include <algorithm>

ModelBreakdownContent ModelBreakdownContent::make(const QList<UsageModelSummary>& summaries,
                                                  const QLocale& locale) {
    const bool attributed =
        std::any_of(summaries.cbegin(), summaries.cend(),
                    [](const UsageModelSummary& summary) { return !summary.agentLabels().isEmpty(); });
    ModelBreakdownContent content;
    content.label = attributed ? QStringLiteral("Model & agent usage") : QStringLiteral("Model-level usage");
    content.symbol = QStringLiteral("cpu");
    for (const UsageModelSummary& summary : summaries) {
        Row row;
        if (summary.shortTermWindows().isEmpty() && summary.weeklyWindows().isEmpty()) {
            row.symbol = QStringLiteral("chart.xyaxis.line");
            row.symbolName = QStringLiteral("Historical model usage");
        } else {
            row.dot = Badge::dot(summary.health());
        }
        row.modelName = summary.modelName;
        const QList<UsageWindow> historical = summary.historicalWindows();
        for (const UsageWindow& window : historical.mid(0, 3)) {
            row.historical.append(window.horizon.title() + QStringLiteral(": ") +
                                  DisplayFormatters::metric(window.used, window.unit, locale));
        }
        content.rows.append(row);
    }
    content.attributionNote =
        attributed
            ? QStringLiteral("Agent/key attribution is provider-reported for this snapshot. Rate limits "
                             "remain account-level unless published per model.")
            : QStringLiteral("Model rows preserve the provider-reported horizon. Agent/key attribution "
                             "appears when the provider returns it.");
    return content;
}
