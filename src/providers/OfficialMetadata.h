#pragma once

#include "model/AIProvider.h"
#include "model/ProviderConnectionMetadata.h"
#include "model/Timestamp.h"

// What a refresh from an official API starts from when the account has no detected
// metadata yet: the provider's organization name where it has one, and the source.
class OfficialMetadata final {
public:
    OfficialMetadata() = delete;

    static ProviderConnectionMetadata base(AIProvider provider, Timestamp capturedAt);
};
