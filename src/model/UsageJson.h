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

#include <optional>

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

    // One element of a stored list: its JSON text as stored and its value, absent when
    // this version can't read it.
    template <typename T>
    struct Entry {
        QByteArray json;
        std::optional<T> value;
    };
    // A list read element by element, so that one element this version can't read costs
    // only itself. Absent when the document is not a JSON list at all.
    template <typename T>
    static std::optional<QList<Entry<T>>> decodeEntries(QByteArrayView json);
    // A list written from elements' JSON texts, each kept exactly as given.
    static QByteArray joinEntries(const QList<QByteArray>& elements);
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
extern template std::optional<QList<UsageJson::Entry<UsageSnapshot>>>
    UsageJson::decodeEntries<UsageSnapshot>(QByteArrayView);
