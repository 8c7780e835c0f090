#pragma once

#include "model/AIProvider.h"
#include "model/Clock.h"
#include "model/UsageSnapshot.h"

#include <QUuid>

class ProviderAccount;

// Believable sample snapshots that never touch the network: fixed numbers per provider,
// shifted a little by the account's id, so that sample accounts differ and one account
// reads the same at a given moment.
class MockDataFactory final {
public:
    MockDataFactory() = delete;

    static UsageSnapshot snapshot(const ProviderAccount& account, Timestamp now = Clock::now());
    // The same from the two facts it reads, for callers that keep them over a wait.
    static UsageSnapshot snapshot(const QUuid& id, AIProvider provider, Timestamp now);
    // The shift J, one of 0.0, 0.1 … 1.1, from the first four hex digits of the id.
    static double shift(const QUuid& id);
};
