#pragma once

#include "model/AgentBudget.h"
#include "views/Badge.h"
#include "views/Tone.h"

#include <QList>
#include <QLocale>
#include <QString>

#include <optional>

// The operator's agent budgets, one row each with a short and a weekly figure.
struct AgentBudgetPanelContent {
    struct Row {
        // A pulse dot of the health: its tone, and the health title as its name.
        Badge dot;
        QString name;
        QString shortTitle;
        QString shortValue;
        QString weekTitle;
        QString weekValue;

        friend bool operator==(const Row&, const Row&) = default;
    };

    QString label;
    QString symbol;
    QString note;
    QList<Row> rows;

    static AgentBudgetPanelContent make(const QList<AgentBudget>& budgets, const QLocale& locale = QLocale());
    // "—" without a used value; "3 tokens / 10 tokens" with a limit; the used alone without.
    static QString metricText(std::optional<double> used, std::optional<double> limit, UsageUnit unit,
                              const QLocale& locale = QLocale());

    friend bool operator==(const AgentBudgetPanelContent&, const AgentBudgetPanelContent&) = default;
};
