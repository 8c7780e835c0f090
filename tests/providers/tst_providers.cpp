#include "providers/CancellableWait.h"
#include "providers/ManualUsageProvider.h"
#include "providers/MockDataFactory.h"
#include "providers/MockUsageProvider.h"
#include "providers/OpenAIUsageProvider.h"
#include "providers/ProviderCancelled.h"
#include "providers/ProviderFactory.h"
#include "providers/UnsupportedUsageProvider.h"
#include "providers/UsageProviderError.h"
#include "services/KeychainStore.h"
#include "store/ProviderAccount.h"

#include "TestSupport.h"

#include <QCoro/QCoroTask>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

namespace {
ProviderAccount::Init init(AIProvider provider, ConnectionMode mode) {
    return ProviderAccount::Init{.provider = provider,
                                 .label = QStringLiteral("A"),
                                 .accountKind = AccountKind::api,
                                 .connectionMode = mode};
}

const DateInterval kRange{Timestamp(0), Timestamp(2'592'000)};

template <typename T>
std::optional<UsageProviderError> failureOf(QCoro::Task<T>&& task) {
    try {
        awaitTask(std::move(task));
    } catch (const UsageProviderError& error) {
        return error;
    }
    return std::nullopt;
}

UsageSnapshot manualSnapshot(QStringList warnings = {}) {
    return UsageSnapshot{
        .source = UsageSource::manual,
        .capturedAt = Timestamp(10),
        .windows = {UsageWindow{.id = QStringLiteral("weekly"),
                                .title = QStringLiteral("Weekly"),
                                .unit = UsageUnit::messages,
                                .horizon = UsageHorizon::weekly,
                                .used = 5,
                                .limit = 50}},
        .history = {UsagePoint{.date = Timestamp(9), .value = 5, .unit = UsageUnit::messages}},
        .billingHistory = {UsagePoint{.date = Timestamp(8), .value = 1, .unit = UsageUnit::dollars}},
        .warnings = std::move(warnings),
        .modelSummaries = {}};
}
} // namespace

class TestProviders final : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { Clock::setFixedNow(std::nullopt); }

    // ---- errors ----
    void errorTexts() {
        QCOMPARE(UsageProviderError::unsupported(QStringLiteral("x")).errorDescription(),
                 QStringLiteral("x"));
        QCOMPARE(UsageProviderError::server(QStringLiteral("y")).errorDescription(), QStringLiteral("y"));
        QCOMPARE(UsageProviderError::missingCredential().errorDescription(),
                 QStringLiteral("No credential is stored for this account."));
        QCOMPARE(UsageProviderError::unauthorized().errorDescription(),
                 QStringLiteral("The provider rejected this credential."));
        QCOMPARE(UsageProviderError::rateLimited().errorDescription(),
                 QStringLiteral("The provider asked the app to try again later."));
        QCOMPARE(UsageProviderError::malformedResponse().errorDescription(),
                 QStringLiteral("The provider returned data the app could not read."));
    }

    void errorEquality() {
        QCOMPARE(UsageProviderError::server(QStringLiteral("a")),
                 UsageProviderError::server(QStringLiteral("a")));
        QVERIFY(UsageProviderError::server(QStringLiteral("a")) !=
                UsageProviderError::server(QStringLiteral("b")));
        QVERIFY(UsageProviderError::server(QStringLiteral("a")) !=
                UsageProviderError::unsupported(QStringLiteral("a")));
        QCOMPARE(UsageProviderError::rateLimited(), UsageProviderError::rateLimited());
    }

    void fromHTTPStatus_data() {
        QTest::addColumn<qint64>("status");
        QTest::addColumn<QString>("expected"); // empty: absent
        QTest::newRow("200") << qint64(200) << QString();
        QTest::newRow("400") << qint64(400) << QString();
        QTest::newRow("401") << qint64(401) << "The provider rejected this credential.";
        QTest::newRow("403") << qint64(403) << "The provider rejected this credential.";
        QTest::newRow("404") << qint64(404) << QString();
        QTest::newRow("429") << qint64(429) << "The provider asked the app to try again later.";
        QTest::newRow("499") << qint64(499) << QString();
        QTest::newRow("500") << qint64(500) << "Provider server error (500).";
        QTest::newRow("503") << qint64(503) << "Provider server error (503).";
        QTest::newRow("599") << qint64(599) << "Provider server error (599).";
        QTest::newRow("600") << qint64(600) << QString();
        QTest::newRow("negative") << qint64(-1) << QString();
    }
    void fromHTTPStatus() {
        QFETCH(qint64, status);
        QFETCH(QString, expected);
        const auto error = UsageProviderError::fromHTTPStatus(status);
        QCOMPARE(error.has_value(), !expected.isEmpty());
        if (error) {
            QCOMPARE(error->errorDescription(), expected);
        }
    }

    // ---- capabilities ----
    void capabilitiesJson() {
        const ProviderCapabilities some{true, false, true, false, true, false, true};
        const QByteArray json = some.toJson();
        QCOMPARE(json,
                 QByteArray(R"({"historicalUsage":true,"cost":false,"shortWindow":true,"longWindow":false,)"
                            R"("remainingRequests":true,"remainingTokens":false,"resetTimestamps":true})"));
        QCOMPARE(ProviderCapabilities::fromJson(json).value(), some);
        QCOMPARE(ProviderCapabilities::fromJson(ProviderCapabilities::unsupported.toJson()).value(),
                 ProviderCapabilities::unsupported);
        QVERIFY(!ProviderCapabilities::fromJson(R"({"historicalUsage":true})"));
        QVERIFY(!ProviderCapabilities::fromJson(
            R"({"historicalUsage":1,"cost":false,"shortWindow":true,"longWindow":false,"remainingRequests":true,)"
            R"("remainingTokens":false,"resetTimestamps":true})"));
        QCOMPARE(qHash(some), qHash(ProviderCapabilities(some)));
    }

    void unsupportedCapabilitiesAreAllFalse() {
        const ProviderCapabilities none = ProviderCapabilities::unsupported;
        QVERIFY(!none.historicalUsage && !none.cost && !none.shortWindow && !none.longWindow &&
                !none.remainingRequests && !none.remainingTokens && !none.resetTimestamps);
    }

    // ---- local providers ----
    void mockCapabilities_data() {
        QTest::addColumn<QString>("provider");
        QTest::addColumn<bool>("extra");
        QTest::newRow("openai") << "openai" << true;
        QTest::newRow("anthropic") << "anthropic" << false;
        QTest::newRow("xai") << "xai" << false;
        QTest::newRow("gemini") << "gemini" << false;
    }
    void mockCapabilities() {
        QFETCH(QString, provider);
        QFETCH(bool, extra);
        const ProviderAccount account(init(*AIProvider::fromRawValue(provider), ConnectionMode::mock));
        MockUsageProvider mock(account.provider());
        const ProviderConnection connection = awaitTask(mock.connect(account));
        QCOMPARE(connection.capabilities,
                 (ProviderCapabilities{true, extra, true, true, extra, extra, true}));
        QVERIFY(!connection.metadata);
    }

    void mockWaitsThenGivesTheSample() {
        Clock::setFixedNow(Timestamp(700'000'000));
        const ProviderAccount account(init(AIProvider::anthropic, ConnectionMode::mock));
        MockUsageProvider mock(AIProvider::anthropic);
        QElapsedTimer clock;
        clock.start();
        const UsageSnapshot snapshot = awaitTask(mock.fetchUsage(account, kRange));
        QVERIFY2(clock.elapsed() >= 79, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(snapshot, MockDataFactory::snapshot(account, Timestamp(700'000'000)));
    }

    void mockWaitCanBeCancelled() {
        const ProviderAccount account(init(AIProvider::openAI, ConnectionMode::mock));
        MockUsageProvider mock(AIProvider::openAI);
        QTimer::singleShot(10, this, [&mock] { mock.cancel(); });
        QElapsedTimer clock;
        clock.start();
        bool cancelled = false;
        try {
            awaitTask(mock.fetchUsage(account, kRange));
        } catch (const ProviderCancelled&) {
            cancelled = true;
        }
        QVERIFY(cancelled);
        QVERIFY(clock.elapsed() < 70);
    }

    void manualCapabilitiesWithOrWithoutASnapshot() {
        const ProviderCapabilities manual{false, false, true, true, false, false, true};
        ProviderAccount account(init(AIProvider::gemini, ConnectionMode::manual));
        ManualUsageProvider provider(AIProvider::gemini);
        ProviderConnection connection = awaitTask(provider.connect(account));
        QCOMPARE(connection.capabilities, manual);
        QVERIFY(!connection.metadata);
        QCOMPARE(failureOf(provider.fetchUsage(account, kRange)),
                 std::optional<UsageProviderError>(UsageProviderError::unsupported(
                     QStringLiteral("Add a manual limit and reset time to start tracking this account."))));
        account.setSnapshot(manualSnapshot());
        connection = awaitTask(provider.connect(account));
        QCOMPARE(connection.capabilities, manual);
    }

    void manualRefreshRenewsOnlyTheTime() {
        Clock::setFixedNow(Timestamp(5000));
        ProviderAccount account(init(AIProvider::anthropic, ConnectionMode::manual));
        const UsageSnapshot stored =
            manualSnapshot({QStringLiteral("Only one manual window is configured.")});
        account.setSnapshot(stored);
        ManualUsageProvider provider(AIProvider::anthropic);
        const UsageSnapshot renewed = awaitTask(provider.fetchUsage(account, kRange));
        QCOMPARE(renewed.source, UsageSource(UsageSource::manual));
        QCOMPARE(renewed.capturedAt, Timestamp(5000));
        QCOMPARE(renewed.windows, stored.windows);
        QCOMPARE(renewed.history, stored.history);
        QCOMPARE(renewed.billingHistory, stored.billingHistory);
        QCOMPARE(renewed.warnings, stored.warnings);
        QVERIFY(renewed.isPartial()); // the warnings stay
    }

    void unsupportedAlwaysFails() {
        const ProviderAccount account(init(AIProvider::xAI, ConnectionMode::browser));
        UnsupportedUsageProvider provider(AIProvider::xAI);
        const auto expected =
            std::optional<UsageProviderError>(UsageProviderError::unsupported(QStringLiteral(
                "Live usage is not available from a documented provider API for this account type.")));
        QCOMPARE(failureOf(provider.validate(account)), expected);
        QCOMPARE(failureOf(provider.fetchUsage(account, kRange)), expected);
        QCOMPARE(failureOf(provider.connect(account)), expected);
    }

    // ---- factory ----
    void factoryTable_data() {
        QTest::addColumn<QString>("provider");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("storedKey"); // "-" for none
        QTest::addColumn<QString>("made");
        QTest::newRow("mock") << "gemini"
                              << "mock"
                              << "-"
                              << "mock";
        QTest::newRow("manual") << "xai"
                                << "manual"
                                << "-"
                                << "manual";
        QTest::newRow("anthropic apiKey with a key") << "anthropic"
                                                     << "apiKey"
                                                     << "sk-ant"
                                                     << "unsupported";
        QTest::newRow("openai browser with a key") << "openai"
                                                   << "browser"
                                                   << "sk-admin-1"
                                                   << "unsupported";
        QTest::newRow("openai apiKey without a key") << "openai"
                                                     << "apiKey"
                                                     << "-"
                                                     << "unsupported";
        QTest::newRow("openai apiKey with an empty key") << "openai"
                                                         << "apiKey"
                                                         << ""
                                                         << "unsupported";
    }
    void factoryTable() {
        QFETCH(QString, provider);
        QFETCH(QString, mode);
        QFETCH(QString, storedKey);
        QFETCH(QString, made);
        const ProviderAccount account(
            init(*AIProvider::fromRawValue(provider), *ConnectionMode::fromRawValue(mode)));
        if (storedKey != u"-") {
            KeychainStore::save(storedKey, account.secretReference());
        }
        const std::unique_ptr<UsageProvider> result = ProviderFactory::make(account);
        KeychainStore::deleteItem(account.secretReference());
        QCOMPARE(result->provider(), account.provider());
        if (made == u"mock") {
            QVERIFY(dynamic_cast<MockUsageProvider*>(result.get()));
        } else if (made == u"manual") {
            QVERIFY(dynamic_cast<ManualUsageProvider*>(result.get()));
        } else if (made == u"openai") {
            QVERIFY(dynamic_cast<OpenAIUsageProvider*>(result.get()));
        } else {
            QVERIFY(dynamic_cast<UnsupportedUsageProvider*>(result.get()));
        }
    }
};

QTEST_GUILESS_MAIN(TestProviders)
#include "tst_providers.moc"
