#pragma once

#include "model/SyncStatus.h"
#include "model/UsageHealth.h"

// The colour of something on screen, as a meaning rather than a colour: content says
// `caution`, and the widget layer's palette decides which orange that is in a light or
// a dark window.
enum class Tone : quint8 {
    // good: current, healthy
    positive,
    // worth a look: stale, partial, watch
    caution,
    // needs action: failing, unauthorized, urgent
    critical,
    // secondary text: unsupported, unavailable
    muted,
    // the application's own colour: selection, links, primary actions
    accent,
    // sample data, which never contacts a provider
    sample,
    // a reference link that reads no data
    reference,
};

// The tone of a sync status and of a usage health.
class Tones final {
public:
    Tones() = delete;

    static Tone forStatus(SyncStatus status);
    static Tone forHealth(UsageHealth health);
};
