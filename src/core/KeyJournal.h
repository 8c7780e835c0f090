#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// The keychain changes an account change still owes, written down before the store is
// saved and crossed out once the keychain has them. A crash between the two steps leaves
// the note, and the next start settles it against the store: a key whose record was
// deleted goes, a key whose record never came to be goes, and a record saved for a key
// that never reached the keychain is signed out. So records and keys agree whatever
// moment the process was killed at.
//
// The note is a small file beside the store (a journal belongs to one store, as the
// records it is settled against), replaced whole on every change, so a kill leaves either
// the old note or the new one and never a lock behind.
class KeyJournal final {
public:
    enum class Change { createKey, deleteKey };
    struct Entry {
        Change change;
        QString reference;
        friend bool operator==(const Entry&, const Entry&) = default;
    };

    explicit KeyJournal(QString storePath)
        : m_path(std::move(storePath) + QStringLiteral(".keys")) {}

    // Writes the entries down, durably, before the change they belong to is saved.
    void note(const QList<Entry>& entries);
    // Crosses the entries out: done, or not to be done (the save was refused).
    void crossOut(const QList<Entry>& entries);
    QList<Entry> entries() const;

    const QString& path() const noexcept { return m_path; }

private:
    QStringList lines() const;
    void write(const QStringList& lines);

    QString m_path;
};
