#include "model/AIProvider.h"
#include "model/AccountKind.h"
#include "model/ConnectionMode.h"
#include "model/SyncStatus.h"
#include "model/UsageHealth.h"
#include "model/UsageHorizon.h"
#include "model/UsageSource.h"
#include "model/UsageUnit.h"

#include "TestSupport.h"

#include <QSet>
#include <QTest>

#include <unordered_set>

// Every enumeration, row by row: raw value, texts, icons, priorities and case order.
class TestEnumerations final : public QObject {
    Q_OBJECT

private:
    template <typename E>
    static QStringList rawValues() {
        QStringList raws;
        for (const E value : E::allCases()) {
            raws.append(value.rawValue());
        }
        return raws;
    }

    template <typename E>
    static void checkRoundTripAndHashing() {
        QSet<E> qtSet;
        std::unordered_set<E> stdSet;
        for (const E value : E::allCases()) {
            const auto decoded = E::fromRawValue(value.rawValue());
            QVERIFY(decoded.has_value());
            QCOMPARE(decoded->value(), value.value());
            qtSet.insert(value);
            stdSet.insert(value);
        }
        QCOMPARE(qtSet.size(), E::allCases().size());
        QCOMPARE(static_cast<qsizetype>(stdSet.size()), E::allCases().size());
        QVERIFY(!E::fromRawValue(u"").has_value());
        QVERIFY(!E::fromRawValue(u"unknown-value").has_value());
    }

private slots:
    void aiProvider_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("displayName");
        QTest::addColumn<QString>("shortName");
        QTest::addColumn<QString>("systemImage");
        QTest::newRow("openAI") << 0 << "openai"
                                << "OpenAI"
                                << "OpenAI"
                                << "circle.hexagongrid.fill";
        QTest::newRow("anthropic") << 1 << "anthropic"
                                   << "Anthropic / Claude"
                                   << "Claude"
                                   << "sparkles";
        QTest::newRow("xAI") << 2 << "xai"
                             << "xAI / Grok"
                             << "Grok"
                             << "bolt.horizontal.circle.fill";
        QTest::newRow("gemini") << 3 << "gemini"
                                << "Google Gemini"
                                << "Gemini"
                                << "diamond.fill";
    }
    void aiProvider() {
        QFETCH(int, index);
        QFETCH(QString, raw);
        const AIProvider provider = AIProvider::allCases().at(index);
        QCOMPARE(provider.rawValue(), raw);
        QCOMPARE(provider.id(), raw);
        QCOMPARE(provider.displayName(), fetched<QString>("displayName"));
        QCOMPARE(provider.shortName(), fetched<QString>("shortName"));
        QCOMPARE(provider.systemImage(), fetched<QString>("systemImage"));
    }

    void accountKind_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("title");
        QTest::newRow("consumer") << 0 << "consumer"
                                  << "Consumer subscription";
        QTest::newRow("api") << 1 << "api"
                             << "API organization / project";
    }
    void accountKind() {
        QFETCH(int, index);
        const AccountKind kind = AccountKind::allCases().at(index);
        QCOMPARE(kind.rawValue(), fetched<QString>("raw"));
        QCOMPARE(kind.id(), kind.rawValue());
        QCOMPARE(kind.title(), fetched<QString>("title"));
    }

    void connectionMode_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("subtitle");
        QTest::newRow("mock") << 0 << "mock"
                              << "Mock sample data"
                              << "Safe demo data; no network calls";
        QTest::newRow("manual") << 1 << "manual"
                                << "Manual tracking"
                                << "You enter limits and resets";
        QTest::newRow("apiKey") << 2 << "apiKey"
                                << "Official API key"
                                << "Only supported provider APIs; explicit refresh";
        QTest::newRow("browser") << 3 << "browser"
                                 << "Provider sign-in"
                                 << "Open the official provider account in your browser";
    }
    void connectionMode() {
        QFETCH(int, index);
        const ConnectionMode mode = ConnectionMode::allCases().at(index);
        QCOMPARE(mode.rawValue(), fetched<QString>("raw"));
        QCOMPARE(mode.id(), mode.rawValue());
        QCOMPARE(mode.title(), fetched<QString>("title"));
        QCOMPARE(mode.subtitle(), fetched<QString>("subtitle"));
    }

    void syncStatus_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("title");
        QTest::newRow("current") << 0 << "current"
                                 << "Current";
        QTest::newRow("stale") << 1 << "stale"
                               << "Stale";
        QTest::newRow("partial") << 2 << "partial"
                                 << "Partial";
        QTest::newRow("offline") << 3 << "offline"
                                 << "Offline";
        QTest::newRow("unauthorized") << 4 << "unauthorized"
                                      << "Unauthorized";
        QTest::newRow("unsupported") << 5 << "unsupported"
                                     << "Unsupported";
        QTest::newRow("rateLimited") << 6 << "rateLimited"
                                     << "Rate limited";
        QTest::newRow("needsAttention") << 7 << "needsAttention"
                                        << "Needs attention";
    }
    void syncStatus() {
        QFETCH(int, index);
        const SyncStatus status = SyncStatus::allCases().at(index);
        QCOMPARE(status.rawValue(), fetched<QString>("raw"));
        QCOMPARE(status.title(), fetched<QString>("title"));
    }

    void usageSource_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("title");
        QTest::newRow("mock") << 0 << "mock"
                              << "Mock sample";
        QTest::newRow("manual") << 1 << "manual"
                                << "Manual";
        QTest::newRow("officialAPI") << 2 << "officialAPI"
                                     << "Official API";
    }
    void usageSource() {
        QFETCH(int, index);
        const UsageSource source = UsageSource::allCases().at(index);
        QCOMPARE(source.rawValue(), fetched<QString>("raw"));
        QCOMPARE(source.title(), fetched<QString>("title"));
    }

    void usageUnit_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("title");
        QTest::newRow("messages") << 0 << "messages"
                                  << "messages";
        QTest::newRow("requests") << 1 << "requests"
                                  << "requests";
        QTest::newRow("tokens") << 2 << "tokens"
                                << "tokens";
        QTest::newRow("credits") << 3 << "credits"
                                 << "credits";
        QTest::newRow("dollars is titled USD") << 4 << "dollars"
                                               << "USD";
        QTest::newRow("items") << 5 << "items"
                               << "items";
    }
    void usageUnit() {
        QFETCH(int, index);
        const UsageUnit unit = UsageUnit::allCases().at(index);
        QCOMPARE(unit.rawValue(), fetched<QString>("raw"));
        QCOMPARE(unit.title(), fetched<QString>("title"));
    }

    void usageHorizon_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("systemImage");
        QTest::newRow("shortTerm") << 0 << "shortTerm"
                                   << "Short term"
                                   << "bolt.fill";
        QTest::newRow("weekly") << 1 << "weekly"
                                << "Weekly"
                                << "calendar";
        QTest::newRow("billing") << 2 << "billing"
                                 << "Billing"
                                 << "creditcard.fill";
        QTest::newRow("historical") << 3 << "historical"
                                    << "History"
                                    << "chart.xyaxis.line";
        QTest::newRow("unspecified") << 4 << "unspecified"
                                     << "Other"
                                     << "ellipsis.circle";
    }
    void usageHorizon() {
        QFETCH(int, index);
        const UsageHorizon horizon = UsageHorizon::allCases().at(index);
        QCOMPARE(horizon.rawValue(), fetched<QString>("raw"));
        QCOMPARE(horizon.title(), fetched<QString>("title"));
        QCOMPARE(horizon.systemImage(), fetched<QString>("systemImage"));
    }

    void usageHealth_data() {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("title");
        QTest::addColumn<int>("priority");
        QTest::newRow("healthy") << 0 << "healthy"
                                 << "Healthy" << 0;
        QTest::newRow("watch") << 1 << "watch"
                               << "Watch" << 1;
        QTest::newRow("urgent") << 2 << "urgent"
                                << "Action needed" << 2;
        QTest::newRow("unavailable") << 3 << "unavailable"
                                     << "No limit reported" << -1;
    }
    void usageHealth() {
        QFETCH(int, index);
        const UsageHealth health = UsageHealth::allCases().at(index);
        QCOMPARE(health.rawValue(), fetched<QString>("raw"));
        QCOMPARE(health.title(), fetched<QString>("title"));
        QCOMPARE(health.priority(), fetched<int>("priority"));
    }

    void caseCounts() {
        QCOMPARE(AIProvider::allCases().size(), 4);
        QCOMPARE(AccountKind::allCases().size(), 2);
        QCOMPARE(ConnectionMode::allCases().size(), 4);
        QCOMPARE(SyncStatus::allCases().size(), 8);
        QCOMPARE(UsageSource::allCases().size(), 3);
        QCOMPARE(UsageUnit::allCases().size(), 6);
        QCOMPARE(UsageHorizon::allCases().size(), 5);
        QCOMPARE(UsageHealth::allCases().size(), 4);
    }

    void allCasesFollowDeclaredOrder() {
        QCOMPARE(rawValues<AIProvider>(), QStringList({"openai", "anthropic", "xai", "gemini"}));
        QCOMPARE(rawValues<ConnectionMode>(), QStringList({"mock", "manual", "apiKey", "browser"}));
        QCOMPARE(AIProvider::allCases().first(), AIProvider(AIProvider::openAI));
        QCOMPARE(ConnectionMode::allCases().first(), ConnectionMode(ConnectionMode::mock));
        QCOMPARE(AccountKind::allCases().last(), AccountKind(AccountKind::api));
    }

    void rawValuesRoundTripAndHash() {
        checkRoundTripAndHashing<AIProvider>();
        checkRoundTripAndHashing<AccountKind>();
        checkRoundTripAndHashing<ConnectionMode>();
        checkRoundTripAndHashing<SyncStatus>();
        checkRoundTripAndHashing<UsageSource>();
        checkRoundTripAndHashing<UsageUnit>();
        checkRoundTripAndHashing<UsageHorizon>();
        checkRoundTripAndHashing<UsageHealth>();
    }

    void rawValuesAreCaseSensitive() {
        QVERIFY(!AIProvider::fromRawValue(u"OpenAI").has_value());
        QVERIFY(!ConnectionMode::fromRawValue(u"apikey").has_value());
        QVERIFY(!SyncStatus::fromRawValue(u"Current").has_value());
        QVERIFY(!UsageUnit::fromRawValue(u"USD").has_value());
    }

    void equality() {
        const SyncStatus status = SyncStatus::rateLimited;
        QVERIFY(status == SyncStatus::rateLimited);
        QVERIFY(status != SyncStatus::offline);
        QCOMPARE(qHash(UsageUnit(UsageUnit::tokens)), qHash(UsageUnit(UsageUnit::tokens)));
    }
};

QTEST_GUILESS_MAIN(TestEnumerations)
#include "tst_enumerations.moc"
