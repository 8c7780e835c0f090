#include "ui/LongText.h"

QString LongText::bounded(const QString& text, qsizetype limit) {
    if (text.size() <= limit) {
        return text;
    }
    qsizetype cut = limit;
    // A surrogate pair stays whole: cut before its first half.
    if (cut > 0 && text.at(cut - 1).isHighSurrogate()) {
        --cut;
    }
    return text.left(cut) + u'…';
}

QString LongText::elided(const QFontMetrics& metrics, const QString& text, int width) {
    return metrics.elidedText(bounded(text), Qt::ElideRight, width);
}
