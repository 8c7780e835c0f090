#include "core/ConnectionTest.h"

#include "providers/OpenAIClient.h"
#include "providers/OpenAIUsageProvider.h"
#include "providers/ProviderFactory.h"

#include <QCoro/QCoroTask>
#include <QPointer>
#include <QTimer>

struct ConnectionTest::State {
    std::shared_ptr<OpenAIUsageProvider> connector;
    std::shared_ptr<ProviderAccount> trial;
    QTimer timer;
    bool decided = false;
    Outcome outcome = Outcome::failed;
    std::optional<ProviderConnection> connection;
    std::optional<UsageProviderError> error;
    std::exception_ptr failure;
};

ConnectionTest::ConnectionTest(const QString& key, const ProviderAccount::Init& trial, QObject* parent)
    : QObject(parent)
    , m_state(std::make_shared<State>()) {
    m_state->connector = ProviderFactory::makeOpenAI(key);
    m_state->trial = std::make_shared<ProviderAccount>(trial);

    // The time child: on the monotonic clock, to the millisecond.
    m_state->timer.setSingleShot(true);
    m_state->timer.setTimerType(Qt::PreciseTimer);
    connect(&m_state->timer, &QTimer::timeout, this, [this] { decide(Outcome::timedOut); });
    m_state->timer.start(kTimeLimit);

    // The connection child.
    [](QPointer<ConnectionTest> self, std::shared_ptr<State> state) -> QCoro::Task<> {
        std::optional<ProviderConnection> connection;
        try {
            connection = co_await state->connector->connect(*state->trial);
        } catch (const UsageProviderError& error) {
            state->error = error;
            state->failure = std::current_exception();
        } catch (...) {
            // A transport failure, a body that would not decode, or the request cancelled.
            state->failure = std::current_exception();
        }
        if (state->decided || !self) {
            co_return; // the timer was first, or the test was abandoned
        }
        state->connection = std::move(connection);
        self->decide(state->connection ? Outcome::connected
                     : state->error    ? Outcome::refused
                                       : Outcome::failed);
    }(QPointer<ConnectionTest>(this), m_state);
}

ConnectionTest::~ConnectionTest() {
    if (!m_state->decided) {
        m_state->decided = true;
        m_state->timer.stop();
        m_state->connector->cancel();
    }
}

void ConnectionTest::decide(Outcome outcome) {
    if (m_state->decided) {
        return;
    }
    m_state->decided = true;
    m_state->outcome = outcome;
    // Whoever won, the other child ends now.
    m_state->timer.stop();
    m_state->connector->cancel();
    Q_EMIT finished();
}

bool ConnectionTest::isFinished() const noexcept {
    return m_state->decided;
}

ConnectionTest::Outcome ConnectionTest::outcome() const noexcept {
    return m_state->outcome;
}

const std::optional<ProviderConnection>& ConnectionTest::connection() const noexcept {
    return m_state->connection;
}

const std::optional<UsageProviderError>& ConnectionTest::error() const noexcept {
    return m_state->error;
}

QString ConnectionTest::failureDescription() const {
    if (!m_state->failure) {
        return QStringLiteral("The operation couldn’t be completed.");
    }
    try {
        std::rethrow_exception(m_state->failure);
    } catch (const UsageProviderError& error) {
        return error.errorDescription();
    } catch (const OpenAIClient::TransportError& error) {
        return error.message;
    } catch (const OpenAIClient::DecodingError&) {
        return QStringLiteral("The data couldn’t be read because it isn’t in the correct format.");
    } catch (...) {
        return QStringLiteral("The operation couldn’t be completed.");
    }
}

void ConnectionTest::cancel() {
    m_state->connector->cancel();
}
