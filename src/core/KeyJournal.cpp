#include "core/KeyJournal.h"

const QString KeyJournal::kKey = QStringLiteral("keyJournal");

namespace {
QString line(const KeyJournal::Entry& entry) {
    return (entry.change == KeyJournal::Change::createKey ? QStringLiteral("create ")
                                                          : QStringLiteral("delete ")) +
           entry.reference;
}
} // namespace

QList<KeyJournal::Entry> KeyJournal::entries() const {
    QList<Entry> entries;
    for (const QString& text : m_settings->value(kKey).toStringList()) {
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
    QStringList lines = m_settings->value(kKey).toStringList();
    for (const Entry& entry : entries) {
        if (!lines.contains(line(entry))) {
            lines.append(line(entry));
        }
    }
    write(lines);
}

void KeyJournal::crossOut(const QList<Entry>& entries) {
    if (entries.isEmpty()) {
        return;
    }
    QStringList lines = m_settings->value(kKey).toStringList();
    for (const Entry& entry : entries) {
        lines.removeAll(line(entry));
    }
    write(lines);
}

void KeyJournal::write(const QStringList& lines) {
    if (lines.isEmpty()) {
        m_settings->remove(kKey);
    } else {
        m_settings->setValue(kKey, lines);
    }
    m_settings->sync();
}
