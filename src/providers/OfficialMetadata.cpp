#include "providers/OfficialMetadata.h"

ProviderConnectionMetadata OfficialMetadata::base(AIProvider provider, Timestamp capturedAt) {
    return ProviderConnectionMetadata{
        .displayName = provider == AIProvider::openAI
                           ? std::optional<QString>(QStringLiteral("OpenAI API organization"))
                           : std::nullopt,
        .windows = {},
        .sourceDescription = QStringLiteral("Official provider usage API"),
        .notes = {},
        .capturedAt = capturedAt};
}
