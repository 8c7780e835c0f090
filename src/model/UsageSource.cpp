#include "model/UsageSource.h"

QString UsageSource::title() const {
    switch (value()) {
    case mock:
        return QStringLiteral("Mock sample");
    case manual:
        return QStringLiteral("Manual");
    case officialAPI:
        return QStringLiteral("Official API");
    }
    Q_UNREACHABLE();
    return QString();
}
