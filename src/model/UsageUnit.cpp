#include "model/UsageUnit.h"

QString UsageUnit::title() const {
    switch (value()) {
    case messages:
        return QStringLiteral("messages");
    case requests:
        return QStringLiteral("requests");
    case tokens:
        return QStringLiteral("tokens");
    case credits:
        return QStringLiteral("credits");
    case dollars:
        return QStringLiteral("USD");
    case items:
        return QStringLiteral("items");
    }
    Q_UNREACHABLE();
    return QString();
}

QString UsageUnit::capitalizedTitle() const {
    QString result = title();
    if (!result.isEmpty()) {
        result[0] = result[0].toUpper();
    }
    return result;
}
