#pragma once

#include "model/ProviderConnectionMetadata.h"
#include "providers/ProviderCapabilities.h"

#include <optional>

// What connecting to a provider gave: what it can report, and what it detected.
struct ProviderConnection {
    ProviderCapabilities capabilities;
    std::optional<ProviderConnectionMetadata> metadata = std::nullopt;
};
