#pragma once

#include "model/JsonResult.h"

#include <QByteArray>
#include <QByteArrayView>

// What a provider can report.
struct ProviderCapabilities {
    bool historicalUsage;
    bool cost;
    bool shortWindow;
    bool longWindow;
    bool remainingRequests;
    bool remainingTokens;
    bool resetTimestamps;

    // Nothing at all.
    static const ProviderCapabilities unsupported;

    // JSON with the seven keys, all written and all required on reading.
    QByteArray toJson() const;
    static JsonResult<ProviderCapabilities> fromJson(QByteArrayView json);

    friend bool operator==(const ProviderCapabilities&, const ProviderCapabilities&) = default;
};

size_t qHash(const ProviderCapabilities& capabilities, size_t seed = 0);
