#include "core/KeyJournal.h"

#include <QFile>
#include <QSaveFile>

namespace {
QString line(const KeyJournal::Entry& entry) {
    return (entry.change == KeyJournal::Change::createKey ? QStringLiteral("create ")
                                                          : QStringLiteral("delete ")) +
           entry.reference;
}
} // namespace

QStringList KeyJournal::lines() const {
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
}

QList<KeyJournal::Entry> KeyJournal::entries() const {
    QList<Entry> entries;
    for (const QString& text : lines()) {
        if (text.startsWith(QStringLiteral("create "))) {
            entries.append(Entry{Change::createKey, text.mid(7)});
        } else if (text.startsWith(QStringLiteral("delete "))) {
            entries.append(Entry{Change::deleteKey, text.mid(7)});
        }
    }
    return entries;
}

void KeyJournal::note(const QList<Entry>& entries) {
    if (entries.isEmpty()) {
        return;
    }
    QStringList all = lines();
    for (const Entry& entry : entries) {
        if (!all.contains(line(entry))) {
            all.append(line(entry));
        }
    }
    write(all);
}

void KeyJournal::crossOut(const QList<Entry>& entries) {
    if (entries.isEmpty()) {
        return;
    }
    QStringList all = lines();
    qsizetype crossed = 0;
    for (const Entry& entry : entries) {
        crossed += all.removeAll(line(entry));
    }
    if (crossed > 0) {
        write(all);
    }
}

void KeyJournal::write(const QStringList& lines) {
    if (lines.isEmpty()) {
        QFile::remove(m_path);
        return;
    }
    // Written aside and renamed over the old note, synced first: whole or not at all.
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly)) {
        return;
    }
    file.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    file.write((lines.join(u'\n') + u'\n').toUtf8());
    file.commit();
}
