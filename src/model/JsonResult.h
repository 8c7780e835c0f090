#pragma once

#include <QString>

#include <optional>
#include <utility>

// The outcome of encoding or decoding: a value, or a short technical reason why not.
// The reason is for the caller and for tests; it is never shown to the operator as is.
template <typename T>
class JsonResult final {
public:
    static JsonResult success(T value) { return JsonResult(std::move(value), QString()); }
    static JsonResult failure(QString reason) { return JsonResult(std::nullopt, std::move(reason)); }

    bool ok() const noexcept { return m_value.has_value(); }
    explicit operator bool() const noexcept { return ok(); }

    const T& value() const& { return *m_value; }
    T&& value() && { return std::move(*m_value); }
    const T* operator->() const { return &*m_value; }
    const QString& error() const noexcept { return m_error; }

    // Absent on failure: what the stored-blob readers want.
    std::optional<T> toOptional() && { return std::move(m_value); }

private:
    JsonResult(std::optional<T> value, QString error)
        : m_value(std::move(value))
        , m_error(std::move(error)) {}

    std::optional<T> m_value;
    QString m_error;
};
