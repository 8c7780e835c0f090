#include "model/AccountKind.h"

QString AccountKind::title() const {
    switch (value()) {
    case consumer:
        return QStringLiteral("Consumer subscription");
    case api:
        return QStringLiteral("API organization / project");
    }
    Q_UNREACHABLE();
    return QString();
}
