#include "app/MainWindow.h"

#include "MainWindowFixtures.h"
#include "WidgetTree.h"
#include "core/ContentView.h"
#include "core/CoreFixtures.h"
#include "model/Clock.h"
#include "ui/CardButton.h"
#include "ui/ElidedLabel.h"
#include "ui/LongText.h"
#include "ui/MetricCardWidget.h"
#include "ui/SubscriptionCardWidget.h"
#include "ui/SummaryTileWidget.h"
#include "ui/TrendChartWidget.h"
#include "views/SubscriptionCardContent.h"
#include "views/widgets/AccountDetailScreen.h"
#include "views/widgets/OverviewScreen.h"
#include "views/widgets/SidebarView.h"

#include <QTest>

namespace {
using windowfixtures::refreshed;

// Saves the fixture's store and reads it back from the file, as the next launch would.
void saveAndReopen(CoreFixture& fixture) {
    QString error;
    QVERIFY2(fixture.store->save(&error), qPrintable(error));
    const QString path = fixture.dir.filePath(QStringLiteral("accounts.store"));
    fixture.store.reset();
    fixture.store = AccountStore::open(path, &error);
    QVERIFY2(fixture.store, qPrintable(error));
}

// The overview's card of `name`, once it has been drawn (cards in view are drawn just after
// the window is laid out).
SubscriptionCardWidget* drawnCard(const MainWindow& window, const QString& name) {
    for (CardButton* card : window.overview()->cards()) {
        if (card->accessibleName() == name) {
            return qobject_cast<SubscriptionCardWidget*>(card->card());
        }
    }
    return nullptr;
}

QStringList accountRows(const MainWindow& window) {
    return windowfixtures::accountRows(window.sidebar()->list());
}

void open(ContentView& content, ProviderAccount* account) {
    content.setSelection(SidebarSelection::account(account->id()));
}
} // namespace

// The window on stores no sane refresh would write: it shows something sensible for each,
// stays responsive, and leaves the stored values as they were.
class TestMainWindowBadInput final : public QObject {
    Q_OBJECT

private slots:
    void undecodableBlobsShowAsMissingAndStayStored() {
        CoreFixture fixture;
        ProviderAccount* broken = fixture.addAccount(QStringLiteral("Broken blobs"));
        broken->setConnectionMode(ConnectionMode::manual);
        const QByteArray snapshot("{\"source\": \"officialAPI\", \"windows\": [");
        const QByteArray history("[{]");
        broken->setSnapshotData(snapshot);
        broken->setSnapshotHistoryData(history);
        broken->setSyncStatus(SyncStatus::current);
        broken->setLastRefreshAt(Clock::now());
        saveAndReopen(fixture);

        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(accountRows(window), QStringList{QStringLiteral("Broken blobs")});
        ProviderAccount* account = fixture.store->accounts().first();
        QVERIFY(!account->snapshot());
        QTRY_VERIFY(drawnCard(window, QStringLiteral("Broken blobs")));
        // The card says there is no snapshot, as its content does for a missing one.
        const SubscriptionCardContent expected = SubscriptionCardContent::make(*account, Clock::now());
        QVERIFY(!expected.noSnapshotTitle.isEmpty());
        QVERIFY(texts(drawnCard(window, QStringLiteral("Broken blobs"))).contains(expected.noSnapshotTitle));

        open(content, account);
        AccountDetailScreen* detail = window.detail();
        QCOMPARE(detail->account(), account);
        QVERIFY(texts(detail).contains(QStringLiteral("Broken blobs")));
        QVERIFY(!window.grab().isNull());

        // Nothing was rewritten: the bytes are still there for a later version to read.
        QString error;
        QVERIFY2(fixture.store->save(&error), qPrintable(error));
        const auto again = AccountStore::open(fixture.dir.filePath(QStringLiteral("accounts.store")), &error);
        QVERIFY2(again, qPrintable(error));
        QCOMPARE(again->accounts().first()->snapshotData(), std::optional<QByteArray>(snapshot));
        QCOMPARE(again->accounts().first()->snapshotHistoryData(), std::optional<QByteArray>(history));
    }

    void aFiveMegabyteLabelNeitherWidensNorStallsTheWindow() {
        CoreFixture fixture;
        const QString label(5 * 1024 * 1024, u'W');
        refreshed(fixture, label, AIProvider::openAI, 1);
        refreshed(fixture, QStringLiteral("Neighbour"), AIProvider::openAI, 2);
        saveAndReopen(fixture);
        QCOMPARE(fixture.store->accounts().first()->label().size(), label.size());

        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(window.size(), QSize(1240, 820));
        QCOMPARE(window.sidebar()->width(), 270);
        QVERIFY(!window.grab().isNull()); // the sidebar and the attention list draw it

        const QString bounded = LongText::bounded(label, LongText::kReadLimit);
        QTRY_VERIFY(drawnCard(window, bounded));
        // Every label of it shows a short start with an ellipsis; screen readers and the
        // tooltip get its first thousand characters.
        bool found = false;
        for (const ElidedLabel* shown : window.findChildren<ElidedLabel*>()) {
            if (shown->fullText() == label) {
                found = true;
                QVERIFY(shown->text().size() < 3000);
                QVERIFY(shown->text().endsWith(u'…'));
                QCOMPARE(shown->accessibleName(), bounded);
                QCOMPARE(shown->toolTip(), bounded);
            }
        }
        QVERIFY(found);
        QCOMPARE(bounded.size(), LongText::kReadLimit + 1);

        open(content, fixture.store->accounts().first());
        QVERIFY(!window.grab().isNull());
        QCOMPARE(window.size(), QSize(1240, 820));
    }

    void fiveHundredAccountsAllShow() {
        CoreFixture fixture;
        for (int i = 0; i < 500; ++i) {
            refreshed(fixture, QStringLiteral("Account %1").arg(i, 3, 10, QLatin1Char('0')),
                      AIProvider::openAI, i);
        }
        saveAndReopen(fixture);

        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QStringList rows = accountRows(window);
        QCOMPARE(rows.size(), 500);
        QCOMPARE(rows.first(), QStringLiteral("Account 000"));
        QCOMPARE(rows.last(), QStringLiteral("Account 499"));
        const auto tiles = window.overview()->findChildren<SummaryTileWidget*>();
        QVERIFY(!tiles.isEmpty());
        QCOMPARE(tiles.first()->tile().value, QStringLiteral("500"));
        QCOMPARE(window.overview()->cards().size(), 500);
        QVERIFY(!window.grab().isNull());
    }

    void aSnapshotOfTwoHundredWindowsShowsThemAll() {
        CoreFixture fixture;
        ProviderAccount* account = refreshed(fixture, QStringLiteral("Many windows"), AIProvider::openAI, 1);
        UsageSnapshot snapshot = *account->snapshot();
        snapshot.windows.clear();
        for (int i = 0; i < 200; ++i) {
            snapshot.windows.append(UsageWindow{.id = QStringLiteral("window-%1").arg(i),
                                                .title = QStringLiteral("Window %1").arg(i),
                                                .unit = UsageUnit::requests,
                                                .used = i,
                                                .limit = 200,
                                                .resetAt = Clock::now().addingSeconds(60.0 * (i + 1))});
        }
        account->setSnapshot(snapshot);
        saveAndReopen(fixture);

        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTRY_VERIFY(drawnCard(window, QStringLiteral("Many windows")));
        QVERIFY(!window.grab().isNull());

        open(content, fixture.store->accounts().first());
        AccountDetailScreen* detail = window.detail();
        QCOMPARE(detail->findChildren<MetricCardWidget*>().size(), 200);
        const QStringList shown = texts(detail);
        QVERIFY(shown.contains(QStringLiteral("Window 0")));
        QVERIFY(shown.contains(QStringLiteral("Window 199")));
        QVERIFY(!window.grab().isNull());
    }

    void aHistoryWithAbsentValuesDrawsWhatItHas() {
        CoreFixture fixture;
        ProviderAccount* account = refreshed(fixture, QStringLiteral("Gaps"), AIProvider::openAI, 1);
        const UsageSnapshot base = *account->snapshot();
        // Ninety refreshes whose windows report neither use nor limit, and no series.
        for (int round = 0; round < 90; ++round) {
            UsageSnapshot gap = base;
            gap.capturedAt = Clock::now().addingSeconds(-86400.0 * (90 - round));
            for (UsageWindow& window : gap.windows) {
                window.used = std::nullopt;
                window.limit = std::nullopt;
                window.reportedRemaining = std::nullopt;
            }
            gap.history.clear();
            gap.billingHistory.clear();
            QVERIFY(account->record(gap));
        }
        QCOMPARE(account->snapshotHistory().size(), 90);
        saveAndReopen(fixture);

        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTRY_VERIFY(drawnCard(window, QStringLiteral("Gaps")));
        SubscriptionCardWidget* card = drawnCard(window, QStringLiteral("Gaps"));
        const SubscriptionCardContent expected =
            SubscriptionCardContent::make(*fixture.store->accounts().first(), Clock::now());
        QVERIFY(texts(card).contains(expected.trendUnit));
        // Absent values read as missing, never as zero.
        QVERIFY(!texts(card).contains(QStringLiteral("0 requests")));
        open(content, fixture.store->accounts().first());
        QVERIFY(!window.detail()->findChildren<TrendChartWidget*>().isEmpty());
        QVERIFY(!window.grab().isNull());
    }
};

QTEST_MAIN(TestMainWindowBadInput)
#include "tst_mainwindowbadinput.moc"
