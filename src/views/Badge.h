#pragma once

#include "model/SyncStatus.h"
#include "model/UsageHealth.h"
#include "model/UsageSource.h"
#include "model/UsageUnit.h"
#include "views/Tone.h"

#include <QMetaType>
#include <QString>

// What a badge or a pulse dot shows: a symbol, a text, a tone, and the name a screen
// reader gives it. The status, pulse and source badges and the pulse dot are built
// here; their widgets draw nothing else.
struct Badge {
    // A symbol name of the platform's symbol set; the widget layer maps it to an icon.
    QString symbol;
    // The visible text; empty for the pulse dot.
    QString text;
    Tone tone = Tone::muted;
    QString accessibleName;

    static Badge status(SyncStatus status);
    static Badge pulse(UsageHealth health);
    static Badge source(UsageSource source);
    // A small dot in the health's tone; its name is the health's title.
    static Badge dot(UsageHealth health);

    static QString statusSymbol(SyncStatus status);
    static QString healthSymbol(UsageHealth health);
    static QString sourceSymbol(UsageSource source);
    // The icon of a unit in a metric card.
    static QString unitSymbol(UsageUnit unit);

    friend bool operator==(const Badge&, const Badge&) = default;
};

Q_DECLARE_METATYPE(Badge)
