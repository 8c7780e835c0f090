#pragma once

#include <QString>

// A sentence the person reads, followed by the underlying reason as a sentence of its
// own ("… Reason: database or disk is full."); the sentence alone when there is none.
// One spelling for every refusal and failure that says why.
inline QString withReason(const QString& sentence, QString reason) {
    while (reason.endsWith(u'.')) {
        reason.chop(1);
    }
    if (reason.isEmpty()) {
        return sentence;
    }
    return sentence +
           (sentence.endsWith(u'.') ? QStringLiteral(" Reason: %1.") : QStringLiteral(". Reason: %1."))
               .arg(reason);
}
