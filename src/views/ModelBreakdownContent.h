#pragma once

#include "model/UsageModelSummary.h"
#include "views/Badge.h"
#include "views/Tone.h"

#include <QList>
#include <QLocale>
#include <QString>

// The per-model rows of a snapshot, shared by the subscription card and the detail.
struct ModelBreakdownContent {
    struct Row {
        // "chart.xyaxis.line" for a summary with only historical windows; else empty
        // and `dot` stands first.
        QString symbol;
        QString symbolName; // "Historical model usage" for the chart icon
        // A pulse dot of the health: its tone, and the health title as its name.
        Badge dot;
        QString modelName;
        // Up to three: "Historical: 1,337 tokens".
        QStringList historical;

        friend bool operator==(const Row&, const Row&) = default;
    };

    QString label;
    QString symbol;
    QList<Row> rows;
    QString attributionNote;

    static ModelBreakdownContent make(const QList<UsageModelSummary>& summaries,
                                      const QLocale& locale = QLocale());

    friend bool operator==(const ModelBreakdownContent&, const ModelBreakdownContent&) = default;
};
