#include "model/ProviderConnectionMetadata.h"

#include "model/ValueHashing.h"

#include <algorithm>

const QString ProviderConnectionMetadata::kInitialSnapshotWarning =
    QStringLiteral("Limits detected during connection. Refresh for current usage.");

std::optional<UsageSnapshot> ProviderConnectionMetadata::initialSnapshot() const {
    if (windows.isEmpty()) {
        return std::nullopt;
    }
    return UsageSnapshot{.source = UsageSource::officialAPI,
                         .capturedAt = capturedAt,
                         .windows = windows,
                         .history = {},
                         .billingHistory = {},
                         .warnings = {kInitialSnapshotWarning},
                         .modelSummaries = {}};
}

ProviderConnectionMetadata ProviderConnectionMetadata::merging(const UsageSnapshot& snapshot,
                                                               AIProvider provider) const {
    QStringList models;
    for (const UsageWindow& window : snapshot.windows) {
        if (window.modelName && !window.modelName->isEmpty() && !models.contains(*window.modelName)) {
            models.append(*window.modelName);
        }
    }
    std::sort(models.begin(), models.end(),
              [](const QString& a, const QString& b) { return a.toUcs4() < b.toUcs4(); });
    const QString detected = models.join(QStringLiteral(", "));

    QList<UsageWindow> merged = windows;
    for (const UsageWindow& window : snapshot.windows) {
        if (!window.limit) {
            continue;
        }
        const auto known = std::find_if(merged.begin(), merged.end(), [&window](const UsageWindow& existing) {
            return existing.id == window.id;
        });
        if (known != merged.end()) {
            *known = window;
        } else {
            merged.append(window);
        }
    }

    const auto orFallback = [](const std::optional<QString>& known, bool useFallback,
                               const QString& fallback) {
        return known || !useFallback ? known : std::optional<QString>(fallback);
    };
    return ProviderConnectionMetadata{.displayName = orFallback(displayName, provider == AIProvider::openAI,
                                                                QStringLiteral("OpenAI API organization")),
                                      .identityDetail = identityDetail,
                                      .connectionIdentifier = connectionIdentifier,
                                      .modelScope = orFallback(modelScope, !detected.isEmpty(), detected),
                                      .windows = merged,
                                      .sourceDescription = sourceDescription,
                                      .notes = notes,
                                      .capturedAt = snapshot.capturedAt};
}

size_t qHash(const ProviderConnectionMetadata& m, size_t seed) {
    return hashFields(seed, m.displayName, m.identityDetail, m.connectionIdentifier, m.modelScope, m.windows,
                      m.sourceDescription, m.notes, m.capturedAt);
}
