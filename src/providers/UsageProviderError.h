#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>

// The one error of usage providers. Its description is the sentence the operator reads.
class UsageProviderError final {
public:
    enum class Kind { unsupported, server, missingCredential, unauthorized, rateLimited, malformedResponse };

    static UsageProviderError unsupported(QString message) { return {Kind::unsupported, std::move(message)}; }
    static UsageProviderError server(QString message) { return {Kind::server, std::move(message)}; }
    static UsageProviderError missingCredential() { return {Kind::missingCredential, QString()}; }
    static UsageProviderError unauthorized() { return {Kind::unauthorized, QString()}; }
    static UsageProviderError rateLimited() { return {Kind::rateLimited, QString()}; }
    static UsageProviderError malformedResponse() { return {Kind::malformedResponse, QString()}; }

    // The error an HTTP status stands for; absent for statuses that are no error here.
    static std::optional<UsageProviderError> fromHTTPStatus(qint64 status);

    Kind kind() const noexcept { return m_kind; }
    // The payload of `unsupported` and `server`; empty for the other cases.
    const QString& message() const noexcept { return m_message; }
    QString errorDescription() const;

    friend bool operator==(const UsageProviderError&, const UsageProviderError&) = default;

private:
    UsageProviderError(Kind kind, QString message)
        : m_kind(kind)
        , m_message(std::move(message)) {}

    Kind m_kind;
    QString m_message;
};
