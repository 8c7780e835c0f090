#pragma once

#include "model/AgentBudget.h"
#include "model/JsonResult.h"
#include "model/ProviderConnectionMetadata.h"
#include "model/UsageModelSummary.h"
#include "model/UsagePoint.h"
#include "model/UsageSnapshot.h"
#include "model/UsageWindow.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

// The stored and exchanged JSON form of the usage records: compact, optional keys
// written only when present, timestamps as seconds since 1 January 2001.
// Supported for UsageWindow, UsagePoint, UsageModelSummary, AgentBudget, UsageSnapshot,
// ProviderConnectionMetadata, and a QList of any of them. A list fails whole when one
// element fails.
class UsageJson final {
public:
    UsageJson() = delete;

    template <typename T>
    static JsonResult<QByteArray> encode(const T& value);

    template <typename T>
    static JsonResult<T> decode(QByteArrayView json);
};

#define TALLYFEN_USAGE_JSON_EXTERN(T)                                                                        \
    extern template JsonResult<QByteArray> UsageJson::encode<T>(const T&);                                   \
    extern template JsonResult<T> UsageJson::decode<T>(QByteArrayView);                                      \
    extern template JsonResult<QByteArray> UsageJson::encode<QList<T>>(const QList<T>&);                     \
    extern template JsonResult<QList<T>> UsageJson::decode<QList<T>>(QByteArrayView);
TALLYFEN_USAGE_JSON_EXTERN(UsageWindow)
TALLYFEN_USAGE_JSON_EXTERN(UsagePoint)
TALLYFEN_USAGE_JSON_EXTERN(UsageModelSummary)
TALLYFEN_USAGE_JSON_EXTERN(AgentBudget)
TALLYFEN_USAGE_JSON_EXTERN(UsageSnapshot)
TALLYFEN_USAGE_JSON_EXTERN(ProviderConnectionMetadata)
#undef TALLYFEN_USAGE_JSON_EXTERN
