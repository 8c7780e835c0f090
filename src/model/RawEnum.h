#pragma once

#include <QHashFunctions>
#include <QList>
#include <QString>
#include <QStringView>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>
#include <type_traits>

// Shared behaviour of the enumerations that persist as a raw value string.
// A derived type brings its cases in with `using enum`, and lists `kRawValues`
// in declared order; the declared order is the order of allCases().
template <typename Derived, typename ValueEnum>
class RawEnum {
public:
    using Value = ValueEnum;

    constexpr RawEnum(Value value) noexcept // NOLINT(google-explicit-constructor): cases convert implicitly
        : m_value(value) {}

    constexpr Value value() const noexcept { return m_value; }

    QString rawValue() const { return Derived::kRawValues[index()].toString(); }

    static std::optional<Derived> fromRawValue(QStringView raw) {
        for (std::size_t i = 0; i < Derived::kRawValues.size(); ++i) {
            if (Derived::kRawValues[i] == raw) {
                return Derived(static_cast<Value>(i));
            }
        }
        return std::nullopt;
    }

    // The same, for raw UTF-8 bytes straight from a parser; raw values are ASCII.
    static std::optional<Derived> fromRawValueUtf8(std::string_view raw) {
        for (std::size_t i = 0; i < Derived::kRawValues.size(); ++i) {
            const QStringView candidate = Derived::kRawValues[i];
            if (static_cast<std::size_t>(candidate.size()) == raw.size() &&
                std::equal(raw.begin(), raw.end(), candidate.begin(), [](char byte, QChar c) {
                    return c.unicode() == static_cast<unsigned char>(byte);
                })) {
                return Derived(static_cast<Value>(i));
            }
        }
        return std::nullopt;
    }

    // The raw value without making a QString, for writers.
    QStringView rawValueView() const { return Derived::kRawValues[index()]; }

    static QList<Derived> allCases() {
        QList<Derived> cases;
        cases.reserve(static_cast<qsizetype>(Derived::kRawValues.size()));
        for (std::size_t i = 0; i < Derived::kRawValues.size(); ++i) {
            cases.append(Derived(static_cast<Value>(i)));
        }
        return cases;
    }

    friend constexpr bool operator==(Derived a, Derived b) noexcept { return a.value() == b.value(); }
    friend size_t qHash(Derived d, size_t seed = 0) noexcept {
        return ::qHash(static_cast<int>(d.value()), seed);
    }

private:
    std::size_t index() const { return static_cast<std::size_t>(m_value); }

    Value m_value;
};

template <typename T>
requires std::is_base_of_v<RawEnum<T, typename T::Value>, T>
struct std::hash<T> {
    std::size_t operator()(T v) const noexcept { return std::hash<int>{}(static_cast<int>(v.value())); }
};
