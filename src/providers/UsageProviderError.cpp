#include "providers/UsageProviderError.h"

std::optional<UsageProviderError> UsageProviderError::fromHTTPStatus(qint64 status) {
    if (status == 401 || status == 403) {
        return unauthorized();
    }
    if (status == 429) {
        return rateLimited();
    }
    if (status >= 500 && status <= 599) {
        return server(QStringLiteral("Provider server error (%1).").arg(status));
    }
    return std::nullopt;
}

QString UsageProviderError::errorDescription() const {
    switch (m_kind) {
    case Kind::unsupported:
    case Kind::server:
        return m_message;
    case Kind::missingCredential:
        return QStringLiteral("No credential is stored for this account.");
    case Kind::unauthorized:
        return QStringLiteral("The provider rejected this credential.");
    case Kind::rateLimited:
        return QStringLiteral("The provider asked the app to try again later.");
    case Kind::malformedResponse:
        return QStringLiteral("The provider returned data the app could not read.");
    }
    Q_UNREACHABLE();
    return QString();
}
