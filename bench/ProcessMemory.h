#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

// A memory figure of this process from /proc, in MiB: "VmRSS" now, "VmHWM" at its peak.
inline double statusMiB(const QByteArray& field) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return -1;
    }
    for (const QByteArray& line : status.readAll().split('\n')) {
        if (line.startsWith(QByteArray(field + ':'))) {
            return line.mid(field.size() + 1).trimmed().split(' ').first().toDouble() / 1024.0;
        }
    }
    return -1;
}
