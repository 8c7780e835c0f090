#pragma once

#include "providers/ProviderConnection.h"
#include "providers/UsageProviderError.h"
#include "store/ProviderAccount.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <exception>
#include <memory>
#include <optional>

// One test of an OpenAI admin key before it is accepted: the connector's call races a
// 12-second limit and the first to end decides. Both the guided flow and the account
// editor run their test through it and word the outcome themselves.
class ConnectionTest final : public QObject {
    Q_OBJECT

public:
    enum class Outcome { connected, timedOut, refused, failed };
    static constexpr std::chrono::milliseconds kTimeLimit{12'000};

    // Starts at once. `trial` describes the account the connector reads; it is never stored.
    ConnectionTest(const QString& key, const ProviderAccount::Init& trial, QObject* parent = nullptr);
    // A test that has not finished is abandoned: its request ends and it reports nothing.
    ~ConnectionTest() override;

    bool isFinished() const noexcept;
    Outcome outcome() const noexcept;
    // What the connector found, after `connected`.
    const std::optional<ProviderConnection>& connection() const noexcept;
    // The provider's refusal, after `refused`.
    const std::optional<UsageProviderError>& error() const noexcept;
    // What the failure says of itself, after `refused` or `failed`.
    QString failureDescription() const;

    // Ends the request in flight; the test then finishes through its failure path.
    void cancel();

signals:
    // Once, whatever the outcome.
    void finished();

private:
    struct State;
    void decide(Outcome outcome);

    std::shared_ptr<State> m_state;
};
