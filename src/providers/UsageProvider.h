#pragma once

#include "model/AIProvider.h"
#include "model/UsageSnapshot.h"
#include "providers/DateInterval.h"
#include "providers/ProviderCapabilities.h"
#include "providers/ProviderConnection.h"

#include <QCoro/QCoroTask>

class ProviderAccount;

// Everything that can produce a usage snapshot for an account. Operations are
// coroutines on the main thread: they suspend while they wait, so other work goes on.
// They fail by throwing UsageProviderError, or ProviderCancelled when a wait is
// cancelled.
//
// An operation reads what it needs of the account before its first suspension: the
// account may be gone by the time the wait ends.
class UsageProvider {
public:
    virtual ~UsageProvider();

    virtual AIProvider provider() const = 0;
    // Establishes that the provider can serve this account now.
    virtual QCoro::Task<ProviderCapabilities> validate(const ProviderAccount& account) = 0;
    virtual QCoro::Task<UsageSnapshot> fetchUsage(const ProviderAccount& account, DateInterval range) = 0;
    // By default: validate, and a connection with those capabilities and no metadata.
    virtual QCoro::Task<ProviderConnection> connect(const ProviderAccount& account);
    // Cancels the operation in flight, if it waits; the default has nothing to cancel.
    virtual void cancel();
};
