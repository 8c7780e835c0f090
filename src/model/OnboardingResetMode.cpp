#include "model/OnboardingResetMode.h"

QString OnboardingResetMode::title() const {
    switch (value()) {
    case later:
        return QStringLiteral("Add later");
    case notProvided:
        return QStringLiteral("No reset provided");
    case setTime:
        return QStringLiteral("I know the reset time");
    }
    Q_UNREACHABLE();
    return QString();
}
