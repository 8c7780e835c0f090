#pragma once

#include "providers/ProviderCancelled.h"
#include "providers/UsageProvider.h"
#include "providers/UsageProviderError.h"

#include <QCoro/QCoroTimer>

#include <functional>
#include <memory>
#include <stdexcept>
#include <variant>

// A stand-in for a live connector, for outcomes only a remote provider produces:
// after a short wait it gives the scripted snapshot or fails the scripted way.
struct Script {
    struct OtherFailure {};
    using Outcome = std::variant<OtherFailure, UsageSnapshot, UsageProviderError, ProviderCancelled>;
    Outcome outcome;
    int calls = 0;
};

class ScriptedProvider final : public UsageProvider {
public:
    explicit ScriptedProvider(std::shared_ptr<Script> script)
        : m_script(std::move(script)) {}

    AIProvider provider() const override { return AIProvider::openAI; }
    QCoro::Task<ProviderCapabilities> validate(const ProviderAccount&) override {
        co_return ProviderCapabilities::unsupported;
    }
    QCoro::Task<UsageSnapshot> fetchUsage(const ProviderAccount&, DateInterval) override {
        const std::shared_ptr<Script> script = m_script;
        ++script->calls;
        QTimer timer;
        timer.setSingleShot(true);
        timer.start(5);
        co_await timer;
        if (const auto* snapshot = std::get_if<UsageSnapshot>(&script->outcome)) {
            co_return *snapshot;
        }
        if (const auto* error = std::get_if<UsageProviderError>(&script->outcome)) {
            throw *error;
        }
        if (std::holds_alternative<ProviderCancelled>(script->outcome)) {
            throw ProviderCancelled();
        }
        throw std::runtime_error("connection reset");
    }

private:
    std::shared_ptr<Script> m_script;
};
