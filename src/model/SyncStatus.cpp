#include "model/SyncStatus.h"

QString SyncStatus::title() const {
    switch (value()) {
    case current:
        return QStringLiteral("Current");
    case stale:
        return QStringLiteral("Stale");
    case partial:
        return QStringLiteral("Partial");
    case offline:
        return QStringLiteral("Offline");
    case unauthorized:
        return QStringLiteral("Unauthorized");
    case unsupported:
        return QStringLiteral("Unsupported");
    case rateLimited:
        return QStringLiteral("Rate limited");
    case needsAttention:
        return QStringLiteral("Needs attention");
    }
    Q_UNREACHABLE();
    return QString();
}
