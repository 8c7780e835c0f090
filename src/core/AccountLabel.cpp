#include "core/AccountLabel.h"

#include <QLocale>

QString AccountLabel::normalized(const QString& label, AIProvider provider) {
    const QString trimmed = label.trimmed();
    return trimmed.isEmpty() ? provider.shortName() + QStringLiteral(" · Personal") : trimmed;
}

QString AccountLabel::comparable(const QString& label) {
    return QLocale().toLower(label.trimmed());
}
