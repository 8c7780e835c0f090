#pragma once

#include <QList>
#include <QString>

#include <optional>

// The pages of the guided flow, in order; the raw value is the page's number from 0.
class OnboardingPage final {
public:
    enum Value : int { welcome = 0, provider = 1, name = 2, connection = 3, ready = 4 };

    constexpr OnboardingPage(Value value) noexcept // NOLINT(google-explicit-constructor)
        : m_value(value) {}

    constexpr Value value() const noexcept { return m_value; }
    constexpr int rawValue() const noexcept { return m_value; }
    constexpr int id() const noexcept { return m_value; }
    constexpr int number() const noexcept { return m_value; }
    QString label() const;

    static std::optional<OnboardingPage> fromRawValue(int raw);
    static QList<OnboardingPage> allCases();

    friend constexpr bool operator==(OnboardingPage, OnboardingPage) noexcept = default;

private:
    Value m_value;
};

// The text fields of the flow that can hold focus.
enum class OnboardingFocusField { label, apiKey, shortUsed, shortLimit, weeklyUsed, weeklyLimit };

// The connection test ran out of time.
struct ConnectionTimeoutError {
    enum class Case { exceeded };
    Case reason = Case::exceeded;
};
