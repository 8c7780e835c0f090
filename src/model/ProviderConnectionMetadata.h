#pragma once

#include "model/AIProvider.h"
#include "model/Clock.h"
#include "model/Timestamp.h"
#include "model/UsageSnapshot.h"
#include "model/UsageWindow.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// What a live connection detected about an account. A plain value, kept on the account.
struct ProviderConnectionMetadata {
    std::optional<QString> displayName;
    std::optional<QString> identityDetail;
    std::optional<QString> connectionIdentifier;
    std::optional<QString> modelScope;
    QList<UsageWindow> windows = {};
    QString sourceDescription;
    QStringList notes = {};
    Timestamp capturedAt = Clock::now();

    // The warning an account's first snapshot carries when it was made from detected limits.
    static const QString kInitialSnapshotWarning;

    // The snapshot a new account starts with, so that its detected limits show before
    // the first refresh; absent when nothing with a window was detected.
    std::optional<UsageSnapshot> initialSnapshot() const;
    // Folds a refresh's facts in: limited windows replace or join the known ones, and a
    // missing name or model scope is filled. Known names, identities and scopes stay.
    ProviderConnectionMetadata merging(const UsageSnapshot& snapshot, AIProvider provider) const;

    friend bool operator==(const ProviderConnectionMetadata&, const ProviderConnectionMetadata&) = default;
};

size_t qHash(const ProviderConnectionMetadata& metadata, size_t seed = 0);
