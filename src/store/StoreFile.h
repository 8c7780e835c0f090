#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>

// What is known of the store file before the database engine opens it, and what is done
// to it around the engine: the schema version its header carries, whether it can be
// written at all, creating it for its owner alone, and a reason that names a full disk.
// Nothing here writes to an existing file.
class StoreFile final {
public:
    StoreFile() = delete;

    // The schema this version writes and reads; stamped in the header's user version.
    static constexpr quint32 kSchemaVersion = 1;

    // The user version in the file's SQLite header; absent when there is no file or it
    // is no SQLite database (the engine then says what it is).
    static std::optional<quint32> schemaVersion(const QString& path);
    // Why a file that exists can't be written, the folder beside it included (the
    // engine keeps its log and index files there); absent when it can.
    static std::optional<QString> whyNotWritable(const QString& path);
    // Creates a missing file empty, readable and writable by its owner only; the
    // engine's log and index files take the file's permissions. False when it can't.
    static bool createPrivately(const QString& path);
    // Creates a missing folder for the owner only; false when it can't.
    static bool makePrivateFolder(const QString& folder);
    // The engine's reason, saying plainly when the file has become read-only or the disk
    // under `path` is full.
    static QString explain(const QString& reason, const QString& path);
};
