#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class ProviderAccount;

// The recorded snapshots of accounts, taken out of the app: as CSV, one row per window
// per snapshot, or as JSON, the snapshots as the store keeps them. Absent values stay
// empty (CSV) or absent (JSON), never 0; numbers are written in the C locale.
class HistoryExport final {
public:
    HistoryExport() = delete;

    enum class Format { csv, json };

    static QByteArray csv(const QList<ProviderAccount*>& accounts);
    static QByteArray json(const QList<ProviderAccount*>& accounts);
    // The format a file name asks for: JSON for ".json", CSV otherwise.
    static Format formatFor(const QString& fileName);
    // Writes all of it or nothing: a failed write leaves no file, and `error` says why.
    static bool write(const QString& path, const QByteArray& bytes, QString* error);
};
