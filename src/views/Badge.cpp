#include "views/Badge.h"

QString Badge::statusSymbol(SyncStatus status) {
    switch (status.value()) {
    case SyncStatus::current:
        return QStringLiteral("checkmark.circle.fill");
    case SyncStatus::stale:
        return QStringLiteral("clock.badge.exclamationmark");
    case SyncStatus::partial:
        return QStringLiteral("circle.lefthalf.filled");
    case SyncStatus::offline:
        return QStringLiteral("wifi.slash");
    case SyncStatus::unauthorized:
        return QStringLiteral("lock.trianglebadge.exclamationmark");
    case SyncStatus::unsupported:
        return QStringLiteral("questionmark.circle");
    case SyncStatus::rateLimited:
        return QStringLiteral("hourglass");
    case SyncStatus::needsAttention:
        return QStringLiteral("exclamationmark.triangle");
    }
    Q_UNREACHABLE();
    return QString();
}

QString Badge::healthSymbol(UsageHealth health) {
    switch (health.value()) {
    case UsageHealth::healthy:
        return QStringLiteral("waveform.path.ecg");
    case UsageHealth::watch:
        return QStringLiteral("eye");
    case UsageHealth::urgent:
        return QStringLiteral("exclamationmark.triangle.fill");
    case UsageHealth::unavailable:
        return QStringLiteral("minus.circle");
    }
    Q_UNREACHABLE();
    return QString();
}

QString Badge::sourceSymbol(UsageSource source) {
    switch (source.value()) {
    case UsageSource::mock:
        return QStringLiteral("wand.and.stars");
    case UsageSource::manual:
        return QStringLiteral("pencil");
    case UsageSource::officialAPI:
        return QStringLiteral("network");
    }
    Q_UNREACHABLE();
    return QString();
}

QString Badge::unitSymbol(UsageUnit unit) {
    switch (unit.value()) {
    case UsageUnit::messages:
        return QStringLiteral("message.fill");
    case UsageUnit::requests:
        return QStringLiteral("arrow.up.right.circle.fill");
    case UsageUnit::tokens:
        return QStringLiteral("textformat.123");
    case UsageUnit::credits:
        return QStringLiteral("creditcard.fill");
    case UsageUnit::dollars:
        return QStringLiteral("dollarsign.circle.fill");
    case UsageUnit::items:
        return QStringLiteral("square.grid.2x2.fill");
    }
    Q_UNREACHABLE();
    return QString();
}

Badge Badge::status(SyncStatus status) {
    return Badge{.symbol = statusSymbol(status),
                 .text = status.title(),
                 .tone = Tones::forStatus(status),
                 .accessibleName = status.title()};
}

Badge Badge::pulse(UsageHealth health) {
    return Badge{.symbol = healthSymbol(health),
                 .text = health.title(),
                 .tone = Tones::forHealth(health),
                 .accessibleName = QStringLiteral("Usage pulse: ") + health.title()};
}

Badge Badge::source(UsageSource source) {
    return Badge{.symbol = sourceSymbol(source),
                 .text = source.title(),
                 .tone = Tone::muted,
                 .accessibleName = QStringLiteral("Data source: ") + source.title()};
}

Badge Badge::dot(UsageHealth health) {
    return Badge{.symbol = QString(),
                 .text = QString(),
                 .tone = Tones::forHealth(health),
                 .accessibleName = health.title()};
}
