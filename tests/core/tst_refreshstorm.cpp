#include "ContentView.h"

#include "CoreFixtures.h"

#include <QElapsedTimer>
#include <QTest>

// 200 sample accounts refreshed by selection at once, with a watchdog on the main thread.
class TestRefreshStorm final : public QObject {
    Q_OBJECT

private slots:
    void twoHundredSampleAccounts() {
        CoreFixture fixture;
        const std::array providers{AIProvider(AIProvider::openAI), AIProvider(AIProvider::anthropic),
                                   AIProvider(AIProvider::xAI), AIProvider(AIProvider::gemini)};
        for (int i = 0; i < 200; ++i) {
            fixture.addAccount(QStringLiteral("Sample %1").arg(i), providers[static_cast<std::size_t>(i % 4)],
                               i);
        }
        QVERIFY(fixture.store->save());
        ContentView content(fixture.store.get(), fixture.preferences.get());
        QHash<QUuid, int> finishedCount;
        connect(&content, &ContentView::refreshFinished, this,
                [&finishedCount](const QUuid& id) { ++finishedCount[id]; });

        // The watchdog ticks every millisecond; the longest gap between ticks is the
        // longest time the main thread was kept from its event loop.
        QElapsedTimer sinceLastTick;
        qint64 longestGap = 0;
        QTimer watchdog;
        watchdog.setTimerType(Qt::PreciseTimer);
        watchdog.setInterval(1);
        connect(&watchdog, &QTimer::timeout, this,
                [&] { longestGap = std::max(longestGap, sinceLastTick.restart()); });
        watchdog.start();
        sinceLastTick.start();
        QTest::qWait(20); // the watchdog settles

        content.refreshSelection(); // the overview is selected: every account
        QCOMPARE(content.refreshingIDs().size(), 200);
        QTRY_VERIFY_WITH_TIMEOUT(content.refreshingIDs().isEmpty(), 10000);
        QTRY_VERIFY(!fixture.store->hasChanges());
        QTest::qWait(20);
        watchdog.stop();

        QCOMPARE(finishedCount.size(), 200);
        for (const ProviderAccount* account : content.accounts()) {
            QCOMPARE(finishedCount.value(account->id()), 1);
            QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::current));
            QCOMPARE(account->snapshotHistory().size(), 1);
        }
        QVERIFY2(longestGap <= 16,
                 qPrintable(QStringLiteral("the main thread was busy for %1 ms").arg(longestGap)));
        qInfo("longest gap between watchdog ticks: %lld ms", static_cast<long long>(longestGap));

        // Saved: a fresh look at the file finds every refresh.
        QString error;
        auto reopened = AccountStore::open(fixture.store->path(), &error);
        QVERIFY2(reopened, qPrintable(error));
        for (const ProviderAccount* account : reopened->accounts()) {
            QCOMPARE(account->syncMessage(), QStringLiteral("Refresh completed"));
            QCOMPARE(account->snapshotHistory().size(), 1);
        }
    }
};

QTEST_GUILESS_MAIN(TestRefreshStorm)
#include "tst_refreshstorm.moc"
