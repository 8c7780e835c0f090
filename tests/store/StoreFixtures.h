#pragma once

#include "model/UsageSnapshot.h"
#include "store/ProviderAccount.h"

// Builders for accounts and snapshots in store tests.
inline UsageSnapshot snapshotAt(Timestamp capturedAt, QList<UsagePoint> history = {},
                                QList<UsageWindow> windows = {}) {
    return UsageSnapshot{.source = UsageSource::mock,
                         .capturedAt = capturedAt,
                         .windows = std::move(windows),
                         .history = std::move(history),
                         .warnings = {}};
}

inline UsagePoint pointAt(Timestamp date, double value, UsageUnit unit = UsageUnit::tokens) {
    return UsagePoint{.date = date, .value = value, .unit = unit};
}

inline ProviderAccount::Init accountInit(const QString& label = QStringLiteral("Work")) {
    return ProviderAccount::Init{
        .provider = AIProvider::openAI, .label = label, .accountKind = AccountKind::api};
}
