#include "views/MonitoringSort.h"

QString MonitoringSort::title() const {
    switch (value()) {
    case attention:
        return QStringLiteral("Attention first");
    case nextReset:
        return QStringLiteral("Next reset");
    case name:
        return QStringLiteral("Name");
    }
    Q_UNREACHABLE();
    return QString();
}
