#pragma once

#include "model/Timestamp.h"
#include "model/UsageWindow.h"
#include "views/Badge.h"

#include <QList>
#include <QLocale>
#include <QString>
#include <QUuid>

class ProviderAccount;

// One row of the subscription matrix: the subscription, its short-term and weekly
// cells, and its pulse and status.
struct MatrixRowContent {
    // A horizon's cell: "—" alone, or up to three windows and "+N more".
    struct Cell {
        struct Line {
            // A pulse dot of the health: its tone, and the health title as its name.
            Badge dot;
            QString used;
            QString limit; // "No limit" or "of 60 requests"
            friend bool operator==(const Line&, const Line&) = default;
        };
        QString empty; // "—" for a horizon with no window
        QList<Line> lines;
        QString more; // "+1 more" beyond the third window
        friend bool operator==(const Cell&, const Cell&) = default;
    };

    static const QStringList kColumns;

    QUuid id;
    QString name;
    QString subtitle; // "OpenAI · #1A2B3C"
    Cell shortTerm;
    Cell weekly;
    Badge pulse;
    QString status;
    Tone statusTone = Tone::muted;
    QString source;      // empty without a snapshot
    QString billingOnly; // "Billing only" when the card's billing-only rule holds
    QString countdown;

    // What the row says beside its name and cells, for a screen reader: the second line,
    // then the status and what stands under it, " · " between.
    QString statusLine() const;

    static MatrixRowContent make(const ProviderAccount& account, Timestamp now,
                                 const QLocale& locale = QLocale());
    static Cell cell(const QList<UsageWindow>& windows, const QLocale& locale = QLocale());

    friend bool operator==(const MatrixRowContent&, const MatrixRowContent&) = default;
};
