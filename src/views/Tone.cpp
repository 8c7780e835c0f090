#include "views/Tone.h"

Tone Tones::forStatus(SyncStatus status) {
    switch (status.value()) {
    case SyncStatus::current:
        return Tone::positive;
    case SyncStatus::stale:
    case SyncStatus::partial:
        return Tone::caution;
    case SyncStatus::offline:
    case SyncStatus::unauthorized:
    case SyncStatus::rateLimited:
    case SyncStatus::needsAttention:
        return Tone::critical;
    case SyncStatus::unsupported:
        return Tone::muted;
    }
    Q_UNREACHABLE();
    return Tone::muted;
}

Tone Tones::forHealth(UsageHealth health) {
    switch (health.value()) {
    case UsageHealth::healthy:
        return Tone::positive;
    case UsageHealth::watch:
        return Tone::caution;
    case UsageHealth::urgent:
        return Tone::critical;
    case UsageHealth::unavailable:
        return Tone::muted;
    }
    Q_UNREACHABLE();
    return Tone::muted;
}
