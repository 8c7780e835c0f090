#include "model/UsageHealth.h"

QString UsageHealth::title() const {
    switch (value()) {
    case healthy:
        return QStringLiteral("Healthy");
    case watch:
        return QStringLiteral("Watch");
    case urgent:
        return QStringLiteral("Action needed");
    case unavailable:
        return QStringLiteral("No limit reported");
    }
    Q_UNREACHABLE();
    return QString();
}

int UsageHealth::priority() const {
    switch (value()) {
    case healthy:
        return 0;
    case watch:
        return 1;
    case urgent:
        return 2;
    case unavailable:
        return -1;
    }
    Q_UNREACHABLE();
    return -1;
}

UsageHealth UsageHealth::aggregate(const QList<UsageHealth>& healths) {
    std::optional<UsageHealth> worst;
    for (const UsageHealth health : healths) {
        if (health == unavailable) {
            continue;
        }
        if (!worst || health.priority() > worst->priority()) {
            worst = health;
        }
    }
    return worst.value_or(unavailable);
}
