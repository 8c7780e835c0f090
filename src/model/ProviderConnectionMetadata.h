#pragma once

#include "Clock.h"
#include "Timestamp.h"
#include "UsageWindow.h"

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

    friend bool operator==(const ProviderConnectionMetadata&, const ProviderConnectionMetadata&) = default;
};

size_t qHash(const ProviderConnectionMetadata& metadata, size_t seed = 0);
