#include "model/ConnectionMode.h"

QString ConnectionMode::title() const {
    switch (value()) {
    case mock:
        return QStringLiteral("Mock sample data");
    case manual:
        return QStringLiteral("Manual tracking");
    case apiKey:
        return QStringLiteral("Official API key");
    case browser:
        return QStringLiteral("Provider sign-in");
    }
    Q_UNREACHABLE();
    return QString();
}

QString ConnectionMode::subtitle() const {
    switch (value()) {
    case mock:
        return QStringLiteral("Safe demo data; no network calls");
    case manual:
        return QStringLiteral("You enter limits and resets");
    case apiKey:
        return QStringLiteral("Only supported provider APIs; explicit refresh");
    case browser:
        return QStringLiteral("Open the official provider account in your browser");
    }
    Q_UNREACHABLE();
    return QString();
}
