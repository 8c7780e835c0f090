#include "providers/MockDataFactory.h"
#include "store/ProviderAccount.h"

#include <QTest>
#include <QTimeZone>

namespace {
QUuid idStartingWith(const char* prefix) {
    return QUuid::fromString(QString::fromLatin1(prefix) +
                             QStringLiteral("E1F8-C36C-495A-93FC-0C247A3E6E5F"));
}

ProviderAccount account(AIProvider provider, const char* prefix = "0000") {
    return ProviderAccount(ProviderAccount::Init{.id = idStartingWith(prefix),
                                                 .provider = provider,
                                                 .label = QString(),
                                                 .accountKind = AccountKind::consumer});
}

const Timestamp kNow = Timestamp::fromDateTime(
    QDateTime(QDate(2026, 4, 2, QCalendar()), QTime(9, 30), QTimeZone(QByteArrayLiteral("Europe/Berlin"))));
} // namespace

class TestMockDataFactory final : public QObject {
    Q_OBJECT

private slots:
    void shift_data() {
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<double>("shift");
        QTest::newRow("000C is 12, remainder 0") << "000C" << 0.0;
        QTest::newRow("000D is 13, remainder 1") << "000D" << 0.1;
        QTest::newRow("FFFF is 65535, remainder 3") << "FFFF" << 0.3;
        QTest::newRow("000B is 11") << "000B" << 1.1;
        QTest::newRow("lower case reads the same") << "ffff" << 0.3;
    }
    void shift() {
        QFETCH(QString, prefix);
        QFETCH(double, shift);
        const QUuid id = QUuid::fromString(prefix + QStringLiteral("E1F8-C36C-495A-93FC-0C247A3E6E5F"));
        QCOMPARE(MockDataFactory::shift(id), shift);
    }

    void openAISample() {
        const ProviderAccount sample = account(AIProvider::openAI, "000D");
        const UsageSnapshot s = MockDataFactory::snapshot(sample, kNow);
        const double j = 0.1;
        QCOMPARE(s.source, UsageSource(UsageSource::mock));
        QCOMPARE(s.capturedAt, kNow);
        QVERIFY(s.warnings.isEmpty());
        QCOMPARE(s.windows.size(), 3);
        const UsageWindow& requests = s.windows[0];
        QCOMPARE(requests.id, QStringLiteral("requests-minute"));
        QCOMPARE(requests.title, QStringLiteral("Requests / minute"));
        QCOMPARE(requests.unit, UsageUnit(UsageUnit::requests));
        QCOMPARE(requests.horizon, UsageHorizon(UsageHorizon::shortTerm));
        QCOMPARE(requests.modelName, std::optional<QString>(QStringLiteral("OpenAI API")));
        QVERIFY(!requests.agentLabel);
        QCOMPARE(*requests.used, 42 + j);
        QCOMPARE(*requests.limit, 60.0);
        QCOMPARE(*requests.reportedRemaining, 18 - j);
        QCOMPARE(*requests.resetAt, kNow.addingSeconds(2520));
        QCOMPARE(requests.note, std::optional<QString>(QStringLiteral("Rate-limit header when available")));
        const UsageWindow& tokens = s.windows[1];
        QCOMPARE(tokens.id, QStringLiteral("tokens-minute"));
        QCOMPARE(*tokens.used, 68240 + 100 * j);
        QCOMPARE(*tokens.limit, 150000.0);
        QCOMPARE(*tokens.reportedRemaining, 81760 - 100 * j);
        const UsageWindow& spend = s.windows[2];
        QCOMPARE(spend.id, QStringLiteral("api-spend"));
        QCOMPARE(spend.title, QStringLiteral("API spend / 30 days"));
        QCOMPARE(spend.unit, UsageUnit(UsageUnit::dollars));
        QCOMPARE(spend.horizon, UsageHorizon(UsageHorizon::billing));
        QVERIFY(!spend.modelName && !spend.limit && !spend.reportedRemaining && !spend.resetAt);
        QCOMPARE(*spend.used, 84.32 + j);
        QCOMPARE(spend.note, std::optional<QString>(QStringLiteral("No spend ceiling reported")));

        // The spend has no limit: no billing health, an additional window, in no summary.
        QCOMPARE(s.billingHealth(), UsageHealth(UsageHealth::unavailable));
        QVERIFY(s.additionalWindows().contains(spend));
        QCOMPARE(s.modelSummaries.size(), 1);
        QCOMPARE(s.modelSummaries[0].modelName, QStringLiteral("OpenAI API"));
        QCOMPARE(s.modelSummaries[0].windows, (QList<UsageWindow>{requests, tokens}));

        // Billing history from the spend window, with no shift in it.
        QCOMPARE(s.billingHistory.size(), 8);
        QCOMPARE(s.billingHistory[0].value, (84.32 + j) * 0.48);
        QCOMPARE(s.billingHistory[0].unit, UsageUnit(UsageUnit::dollars));
    }

    void openAIHealthIsWatchForEveryShift() {
        for (const char* prefix : {"000C", "000D", "000E", "000F", "0010", "0011", "0012", "0013", "0014",
                                   "0015", "0016", "0017"}) {
            const UsageSnapshot s = MockDataFactory::snapshot(account(AIProvider::openAI, prefix), kNow);
            QCOMPARE(s.health(), UsageHealth(UsageHealth::watch));
        }
    }

    void anthropicSample() {
        const ProviderAccount sample = account(AIProvider::anthropic, "FFFF");
        const double j = 0.3;
        const UsageSnapshot s = MockDataFactory::snapshot(sample, kNow);
        QCOMPARE(s.windows.size(), 2);
        QCOMPARE(s.windows[0].id, QStringLiteral("messages-five-hours"));
        QCOMPARE(*s.windows[0].used, 34 + j);
        QCOMPARE(*s.windows[0].resetAt, kNow.addingSeconds(7920));
        QCOMPARE(s.windows[1].id, QStringLiteral("messages-seven-days"));
        QCOMPARE(s.windows[1].horizon, UsageHorizon(UsageHorizon::weekly));
        QCOMPARE(*s.windows[1].used, 420 + 2 * j);
        QCOMPARE(*s.windows[1].reportedRemaining, 80 - 2 * j);
        QCOMPARE(*s.windows[1].resetAt, kNow.addingSeconds(345600));
        QVERIFY(s.billingHistory.isEmpty());

        QCOMPARE(s.history.size(), 8);
        QCOMPARE(s.history.last().value, (34 + j) * 1.01 + j);
        QCOMPARE(s.history.last().date, kNow);
        QCOMPARE(s.history.first().value, (34 + j) * 0.52 + j);
        QCOMPARE(s.history.first().unit, UsageUnit(UsageUnit::messages));
        QVERIFY(!s.history.first().modelName && !s.history.first().agentLabel);
    }

    void historyDatesAreCalendarDays() {
        // From 26 March to 2 April 2026 in Berlin, across the spring clock change.
        const UsageSnapshot s = MockDataFactory::snapshot(account(AIProvider::gemini), kNow);
        for (int i = 0; i < 8; ++i) {
            const QDateTime local = s.history[i].date.toDateTime();
            QCOMPARE(local.date(), QDate(2026, 4, 2).addDays(i - 7));
            QCOMPARE(local.time(), QTime(9, 30));
        }
        QCOMPARE(s.history[2].date.secondsSince(s.history[1].date), 86400.0);
        QCOMPARE(s.history[3].date.secondsSince(s.history[2].date), 82800.0); // 29 March has 23 hours
        QCOMPARE(s.history[4].date.secondsSince(s.history[3].date), 86400.0);
    }

    void xAISampleIsBillingOnly() {
        const UsageSnapshot s = MockDataFactory::snapshot(account(AIProvider::xAI, "000C"), kNow);
        QCOMPARE(s.windows.size(), 1);
        QCOMPARE(s.windows[0].id, QStringLiteral("credits-period"));
        QCOMPARE(s.windows[0].title, QStringLiteral("Credits / billing period"));
        QCOMPARE(*s.windows[0].used, 210.0);
        QCOMPARE(*s.windows[0].resetAt, kNow.addingSeconds(691200));
        QCOMPARE(s.health(), UsageHealth(UsageHealth::unavailable));
        QCOMPARE(s.billingHealth(), UsageHealth(UsageHealth::healthy));
        QCOMPARE(s.modelSummaries.size(), 1);
        QCOMPARE(s.modelSummaries[0].health(), UsageHealth(UsageHealth::unavailable));
        QCOMPARE(s.billingHistory.size(), 8);
        QCOMPARE(s.billingHistory.last().value, 210 * (0.48 + 7 * 0.07));
    }

    void geminiSample() {
        const UsageSnapshot s = MockDataFactory::snapshot(account(AIProvider::gemini, "000C"), kNow);
        QCOMPARE(s.windows.size(), 2);
        QCOMPARE(s.windows[0].id, QStringLiteral("gemini-messages-five-hours"));
        QCOMPARE(*s.windows[0].resetAt, kNow.addingSeconds(10800));
        QCOMPARE(s.windows[1].id, QStringLiteral("gemini-messages-seven-days"));
        QCOMPARE(*s.windows[1].resetAt, kNow.addingSeconds(432000));
        QCOMPARE(*s.windows[1].reportedRemaining, 240.0);
        QVERIFY(s.billingHistory.isEmpty());
        QCOMPARE(s.modelSummaries.size(), 1);
        QCOMPARE(s.modelSummaries[0].modelName, QStringLiteral("Gemini"));
    }

    void everySampleRowExactly_data() {
        QTest::addColumn<int>("provider");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<QString>("horizon");
        QTest::addColumn<QString>("model");
        QTest::addColumn<double>("used");
        QTest::addColumn<double>("limit"); // -1: absent
        QTest::addColumn<double>("remaining");
        QTest::addColumn<double>("resetIn");
        QTest::addColumn<QString>("note");
        const double j = 0.1; // an id starting 000D
        const auto row = [](const char* name, AIProvider p, int i, const char* id, const char* title,
                            const char* unit, const char* horizon, const char* model, double used,
                            double limit, double remaining, double resetIn, const char* note) {
            QTest::newRow(name) << int(p.value()) << i << QString::fromUtf8(id) << QString::fromUtf8(title)
                                << QString::fromUtf8(unit) << QString::fromUtf8(horizon)
                                << QString::fromUtf8(model) << used << limit << remaining << resetIn
                                << QString::fromUtf8(note);
        };
        row("openAI requests", AIProvider::openAI, 0, "requests-minute", "Requests / minute", "requests",
            "shortTerm", "OpenAI API", 42 + j, 60, 18 - j, 2520, "Rate-limit header when available");
        row("openAI tokens", AIProvider::openAI, 1, "tokens-minute", "Tokens / minute", "tokens", "shortTerm",
            "OpenAI API", 68240 + 100 * j, 150000, 81760 - 100 * j, 2520, "Rate-limit header when available");
        row("openAI spend", AIProvider::openAI, 2, "api-spend", "API spend / 30 days", "dollars", "billing",
            "", 84.32 + j, -1, -1, -1, "No spend ceiling reported");
        row("claude five hours", AIProvider::anthropic, 0, "messages-five-hours", "Messages / 5 hours",
            "messages", "shortTerm", "Claude Sonnet", 34 + j, 50, 16 - j, 7920,
            "Consumer limit; sample only");
        row("claude seven days", AIProvider::anthropic, 1, "messages-seven-days", "Messages / 7 days",
            "messages", "weekly", "Claude Sonnet", 420 + 2 * j, 500, 80 - 2 * j, 345600,
            "Consumer limit; sample only");
        row("grok credits", AIProvider::xAI, 0, "credits-period", "Credits / billing period", "credits",
            "billing", "Grok API", 210 + 3 * j, 500, 290 - 3 * j, 691200, "Billing units are not tokens");
        row("gemini five hours", AIProvider::gemini, 0, "gemini-messages-five-hours", "Messages / 5 hours",
            "messages", "shortTerm", "Gemini", 18 + j, 50, 32 - j, 10800, "Consumer limit; sample only");
        row("gemini seven days", AIProvider::gemini, 1, "gemini-messages-seven-days", "Messages / 7 days",
            "messages", "weekly", "Gemini", 260 + 2 * j, 500, 240 - 2 * j, 432000,
            "Consumer limit; sample only");
    }
    void everySampleRowExactly() {
        QFETCH(int, provider);
        QFETCH(int, index);
        QFETCH(QString, id);
        QFETCH(QString, title);
        QFETCH(QString, unit);
        QFETCH(QString, horizon);
        QFETCH(QString, model);
        QFETCH(double, used);
        QFETCH(double, limit);
        QFETCH(double, remaining);
        QFETCH(double, resetIn);
        QFETCH(QString, note);
        const UsageSnapshot s = MockDataFactory::snapshot(
            account(AIProvider(static_cast<AIProviderValue>(provider)), "000D"), kNow);
        const UsageWindow& w = s.windows.at(index);
        QCOMPARE(w.id, id);
        QCOMPARE(w.title, title);
        QCOMPARE(w.unit.rawValue(), unit);
        QCOMPARE(w.horizon.rawValue(), horizon);
        QCOMPARE(w.modelName, model.isEmpty() ? std::nullopt : std::optional<QString>(model));
        QVERIFY(!w.agentLabel);
        QVERIFY(qFuzzyCompare(*w.used, used));
        QCOMPARE(w.limit, limit < 0 ? std::nullopt : std::optional<double>(limit));
        if (remaining < 0) {
            QVERIFY(!w.reportedRemaining);
        } else {
            QVERIFY(qFuzzyCompare(*w.reportedRemaining, remaining));
        }
        QCOMPARE(w.resetAt,
                 resetIn < 0 ? std::nullopt : std::optional<Timestamp>(kNow.addingSeconds(resetIn)));
        QCOMPARE(w.note, std::optional<QString>(note));
    }

    void openAIHistoryCarriesTheShift() {
        const UsageSnapshot s = MockDataFactory::snapshot(account(AIProvider::openAI, "FFFF"), kNow); // J 0.3
        QCOMPARE(s.history.size(), 8);
        for (int i = 0; i < 8; ++i) {
            QVERIFY(qFuzzyCompare(s.history[i].value, (42 + 0.3) * (0.52 + i * 0.07) + 0.3));
            QCOMPARE(s.history[i].unit, UsageUnit(UsageUnit::requests));
            QVERIFY(!s.history[i].modelName && !s.history[i].agentLabel);
            // The spend window is the billing one; its history has no shift in it.
            QVERIFY(qFuzzyCompare(s.billingHistory[i].value, (84.32 + 0.3) * (0.48 + i * 0.07)));
            QCOMPARE(s.billingHistory[i].unit, UsageUnit(UsageUnit::dollars));
        }
        QCOMPARE(s.history.last().date, kNow);
        QCOMPARE(s.modelSummaries.size(), 1);
        QCOMPARE(s.modelSummaries[0].modelName, QStringLiteral("OpenAI API"));
        QCOMPARE(s.modelSummaries[0].windows.size(), 2);
    }

    void malformedIdPrefixUsesOne() {
        // A null id's text is all zeros; only an unreadable prefix falls back to 1.
        QCOMPARE(MockDataFactory::shift(QUuid()), 0.0);
    }

    void sameAccountSameMomentSameSnapshot() {
        const ProviderAccount sample = account(AIProvider::anthropic);
        QCOMPARE(MockDataFactory::snapshot(sample, kNow), MockDataFactory::snapshot(sample, kNow));
        QVERIFY(MockDataFactory::snapshot(sample, kNow) !=
                MockDataFactory::snapshot(account(AIProvider::anthropic, "0001"), kNow));
    }
};

QTEST_GUILESS_MAIN(TestMockDataFactory)
#include "tst_mockdatafactory.moc"
