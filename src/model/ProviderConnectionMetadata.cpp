#include "ProviderConnectionMetadata.h"

#include "ValueHashing.h"

size_t qHash(const ProviderConnectionMetadata& m, size_t seed) {
    return hashFields(seed, m.displayName, m.identityDetail, m.connectionIdentifier, m.modelScope, m.windows,
                      m.sourceDescription, m.notes, m.capturedAt);
}
