#include "views/MonitoringViewMode.h"

QString MonitoringViewMode::title() const {
    const QString raw = rawValue();
    return raw.left(1).toUpper() + raw.mid(1);
}

QString MonitoringViewMode::icon() const {
    return value() == cards ? QStringLiteral("rectangle.grid.1x2") : QStringLiteral("tablecells");
}
