#include "views/AgentBudgetPanelContent.h"

#include "views/DisplayFormatters.h"

QString AgentBudgetPanelContent::metricText(std::optional<double> used, std::optional<double> limit,
                                            UsageUnit unit, const QLocale& locale) {
    if (!used) {
        return QStringLiteral("—");
    }
    const QString value = DisplayFormatters::metric(used, unit, locale);
    return limit ? value + QStringLiteral(" / ") + DisplayFormatters::metric(limit, unit, locale) : value;
}

AgentBudgetPanelContent AgentBudgetPanelContent::make(const QList<AgentBudget>& budgets,
                                                      const QLocale& locale) {
    AgentBudgetPanelContent content;
    content.label = QStringLiteral("Manual agent budgets");
    content.symbol = QStringLiteral("person.3.fill");
    content.note = QStringLiteral("Operator-entered budgets; they are not provider-reported limits.");
    for (const AgentBudget& budget : budgets) {
        content.rows.append(
            Row{.dot = Badge::dot(budget.health()),
                .name = budget.name,
                .shortTitle = QStringLiteral("Short"),
                .shortValue = metricText(budget.shortUsed, budget.shortLimit, budget.unit, locale),
                .weekTitle = QStringLiteral("Week"),
                .weekValue = metricText(budget.weeklyUsed, budget.weeklyLimit, budget.unit, locale)});
    }
    return content;
}
