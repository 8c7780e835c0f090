#include "core/ContentView.h"

#include "CoreFixtures.h"
#include "app/MainWindow.h"

#include <QElapsedTimer>
#include <QEventLoop>

#include <QTest>
#include <functional>
#include <limits>

// 200 sample accounts refreshed by selection at once, with a watchdog on the main thread.
class TestRefreshStorm final : public QObject {
    Q_OBJECT

private:
    // One storm; the longest gap between the watchdog's ticks goes to `longest`.
    void stormOnce(bool withWindow, qint64* longest) {
        CoreFixture fixture;
        const std::array providers{AIProvider(AIProvider::openAI), AIProvider(AIProvider::anthropic),
                                   AIProvider(AIProvider::xAI), AIProvider(AIProvider::gemini)};
        for (int i = 0; i < 200; ++i) {
            fixture.addAccount(QStringLiteral("Sample %1").arg(i), providers[static_cast<std::size_t>(i % 4)],
                               i);
        }
        QVERIFY(fixture.store->save());
        ContentView content(fixture.store.get(), fixture.preferences.get());
        std::unique_ptr<MainWindow> window;
        if (withWindow) {
            fixture.preferences->setOnboardingCompleted(true);
            window = std::make_unique<MainWindow>(&content);
            window->show();
        }
        // QTest's waiting sleeps in 10 ms steps, which the watchdog would count: run the
        // event loop itself instead.
        const auto runFor = [](int milliseconds) {
            QEventLoop loop;
            QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
            loop.exec();
        };
        const auto runUntil = [](const std::function<bool()>& done) {
            QElapsedTimer limit;
            limit.start();
            while (!done() && limit.elapsed() < 10000) {
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            }
            return done();
        };
        // One refresh first, of an account of its own, so that what a process sets up on
        // first use (time-zone data, the JSON parser) is not counted as a stall.
        ProviderAccount* warmUp = fixture.addAccount(QStringLiteral("Warm-up"), AIProvider::gemini, -1);
        content.refresh(warmUp);
        QVERIFY(runUntil([&content] { return content.refreshingIDs().isEmpty(); }));
        QVERIFY(runUntil([&fixture] { return !fixture.store->hasChanges(); }));
        fixture.store->remove(warmUp);
        QVERIFY(fixture.store->save());
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
        QList<qint64> longGaps;
        connect(&watchdog, &QTimer::timeout, this, [&] {
            const qint64 gap = sinceLastTick.restart();
            if (gap > 3) {
                longGaps.append(gap);
            }
            longestGap = std::max(longestGap, gap);
        });
        watchdog.start();
        sinceLastTick.start();
        runFor(20); // the watchdog settles

        content.refreshSelection(); // the overview is selected: every account
        QCOMPARE(content.refreshingIDs().size(), 200);
        QVERIFY(runUntil([&content] { return content.refreshingIDs().isEmpty(); }));
        QVERIFY(runUntil([&fixture] { return !fixture.store->hasChanges(); }));
        runFor(20);
        watchdog.stop();

        QCOMPARE(finishedCount.size(), 200);
        for (const ProviderAccount* account : content.accounts()) {
            QCOMPARE(finishedCount.value(account->id()), 1);
            QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::current));
            QCOMPARE(account->snapshotHistory().size(), 1);
        }
        *longest = longestGap;
        qInfo("longest gap between watchdog ticks: %lld ms", static_cast<long long>(longestGap));
        QStringList gaps;
        for (const qint64 gap : longGaps) {
            gaps.append(QString::number(gap));
        }
        qInfo("gaps above 3 ms: %s", qPrintable(gaps.join(u' ')));

        // Saved: a fresh look at the file finds every refresh.
        QString error;
        auto reopened = AccountStore::open(fixture.store->path(), &error);
        QVERIFY2(reopened, qPrintable(error));
        for (const ProviderAccount* account : reopened->accounts()) {
            QCOMPARE(account->syncMessage(), QStringLiteral("Refresh completed"));
            QCOMPARE(account->snapshotHistory().size(), 1);
        }
    }

private slots:
    void twoHundredSampleAccounts_data() {
        QTest::addColumn<bool>("withWindow");
        QTest::newRow("controller alone") << false;
        QTest::newRow("with the main window on screen") << true;
    }
    void twoHundredSampleAccounts() {
        QFETCH(bool, withWindow);
#ifdef TALLYFEN_SANITIZED
        constexpr qint64 kLongestGap = 200; // instrumented code is several times slower
#else
        constexpr qint64 kLongestGap = 16; // one frame
#endif
        // A stall of our own comes back in every storm; a pause of the machine under us
        // (a virtual machine losing its processor for a moment) does not. Up to three
        // storms, and the quietest counts.
        qint64 quietest = std::numeric_limits<qint64>::max();
        for (int attempt = 0; attempt < 3 && quietest > kLongestGap; ++attempt) {
            qint64 longest = 0;
            stormOnce(withWindow, &longest);
            if (QTest::currentTestFailed()) {
                return;
            }
            quietest = std::min(quietest, longest);
        }
        QVERIFY2(quietest <= kLongestGap,
                 qPrintable(QStringLiteral("the main thread was busy for %1 ms").arg(quietest)));
    }
};

QTEST_MAIN(TestRefreshStorm)
#include "tst_refreshstorm.moc"
