#include "onboarding/OnboardingPage.h"

QString OnboardingPage::label() const {
    switch (m_value) {
    case welcome:
        return QStringLiteral("Welcome");
    case provider:
        return QStringLiteral("Choose provider");
    case name:
        return QStringLiteral("Name account");
    case connection:
        return QStringLiteral("Choose updates");
    case ready:
        return QStringLiteral("Ready");
    }
    Q_UNREACHABLE();
    return QString();
}

std::optional<OnboardingPage> OnboardingPage::fromRawValue(int raw) {
    if (raw < welcome || raw > ready) {
        return std::nullopt;
    }
    return OnboardingPage(static_cast<Value>(raw));
}

QList<OnboardingPage> OnboardingPage::allCases() {
    return {welcome, provider, name, connection, ready};
}
