#include "ui/LongText.h"

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

QStringList LongText::takeCuts() {
    return std::exchange(cuts(), {});
}
