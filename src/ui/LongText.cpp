#include "ui/LongText.h"

#include <QRegularExpression>

#include <utility>

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

namespace {
QStringList& cuts() {
    static QStringList noted;
    return noted;
}
} // namespace

QString LongText::elided(const QFontMetrics& metrics, const QString& text, int width, Kind kind) {
    const QString whole = bounded(text);
    QString shown = metrics.elidedText(whole, Qt::ElideRight, width);
    if (kind == Kind::meaningful && shown != whole && cuts().size() < 100) {
        cuts().append(text);
    }
    return shown;
}

int LongText::widestWord(const QFontMetrics& metrics, const QString& text, int limit) {
    static const QRegularExpression space(QStringLiteral("\\s+"));
    int widest = 0;
    // A word's first 64 characters are wider than any limit a line sets.
    for (const QString& word : text.split(space, Qt::SkipEmptyParts)) {
        widest = qMax(widest, metrics.horizontalAdvance(word.left(64)));
        if (widest >= limit) {
            return limit;
        }
    }
    return widest;
}

QStringList LongText::takeCuts() {
    return std::exchange(cuts(), {});
}
