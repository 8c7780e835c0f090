#pragma once

#include "model/Timestamp.h"

#include <QByteArray>
#include <QString>
#include <QUuid>

#include <optional>

// The 21 stored attributes of an account, exactly as they sit in the database:
// raw strings for enumerations, JSON bytes for blobs, absent for NULL.
struct ProviderAccountRow {
    QUuid id;
    QString providerRaw;
    QString label;
    QString accountKindRaw;
    QString planName;
    std::optional<QByteArray> detectedMetadataData;
    std::optional<QString> identityDetail;
    std::optional<QString> modelScope;
    std::optional<QString> agentScope;
    std::optional<QString> agentRosterText;
    std::optional<QByteArray> agentBudgetsData;
    std::optional<qint64> agentCount;
    std::optional<Timestamp> renewalDate;
    QString connectionModeRaw;
    Timestamp createdAt;
    std::optional<Timestamp> lastRefreshAt;
    QString syncStatusRaw;
    QString syncMessage;
    std::optional<QByteArray> snapshotData;
    std::optional<QByteArray> snapshotHistoryData;
    bool sampleDataEnabled = true;

    friend bool operator==(const ProviderAccountRow&, const ProviderAccountRow&) = default;
};
