#include "app/MainWindow.h"
#include "core/ContentView.h"
#include "core/CoreFixtures.h"
#include "model/Clock.h"
#include "providers/MockDataFactory.h"
#include "ui/ElidedLabel.h"
#include "ui/MetricCardWidget.h"
#include "views/widgets/AccountDetailScreen.h"

#include "WidgetTree.h"

#include <QPointer>
#include <QPushButton>
#include <QTest>

// A minute passing on an account's page changes its texts where they stand: the page, its
// buttons and whatever a person is doing with them stay.
namespace {
const Timestamp kStart = Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 2), QTime(9, 30), Qt::UTC));

ElidedLabel* labelSaying(QWidget* root, const QString& prefix) {
    for (ElidedLabel* label : root->findChildren<ElidedLabel*>()) {
        if (label->isVisibleTo(root) && label->fullText().startsWith(prefix)) {
            return label;
        }
    }
    return nullptr;
}

QList<MetricCardWidget*> cardsWithACountdown(QWidget* root) {
    QList<MetricCardWidget*> cards;
    for (MetricCardWidget* card : root->findChildren<MetricCardWidget*>()) {
        if (card->content().countdown.startsWith(QStringLiteral("in "))) {
            cards.append(card);
        }
    }
    return cards;
}
} // namespace

class TestDetailHeartbeat final : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { Clock::setFixedNow(std::nullopt); }

    void aMinuteChangesTextsInPlace() {
        Clock::setFixedNow(kStart);
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Org"));
        account->setSnapshot(MockDataFactory::snapshot(*account, kStart));
        account->setLastRefreshAt(kStart.addingSeconds(-120));
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        content.setSelection(SidebarSelection::account(account->id()));
        AccountDetailScreen* detail = window.detail();
        QPointer<QWidget> page = detail->widget();
        QPointer<QPushButton> refresh = detail->findChild<QPushButton*>(QStringLiteral("smartRefreshButton"));
        ElidedLabel* updated = labelSaying(detail, QStringLiteral("Updated "));
        QVERIFY(updated);
        const QString before = updated->fullText();
        const QList<MetricCardWidget*> cards = cardsWithACountdown(detail);
        QVERIFY(!cards.isEmpty());
        const QString countdown = cards.first()->content().countdown;
        // A person is pressing the refresh button with the keyboard focus on it.
        refresh->setFocus();
        QTest::mousePress(refresh, Qt::LeftButton);
        QVERIFY(refresh->isDown());

        Clock::setFixedNow(kStart.addingSeconds(60));
        Q_EMIT content.heartbeatTicked(Clock::now());
        QApplication::processEvents();

        QVERIFY(page && detail->widget() == page);
        QVERIFY(refresh);
        QVERIFY(refresh->isDown());
        QVERIFY(refresh->hasFocus());
        QCOMPARE(labelSaying(detail, QStringLiteral("Updated ")), updated);
        QVERIFY(updated->fullText() != before);
        QCOMPARE(QAccessible::queryAccessibleInterface(updated)->text(QAccessible::Name),
                 updated->fullText());
        // The same cards, their countdowns a minute shorter.
        QVERIFY(!cardsWithACountdown(detail).isEmpty());
        QCOMPARE(cardsWithACountdown(detail).first(), cards.first());
        QVERIFY(cards.first()->content().countdown != countdown);
        QVERIFY(texts(cards.first()).contains(cards.first()->content().countdown));
        QTest::mouseRelease(refresh, Qt::LeftButton);
    }

    void aNewSnapshotReplacesOnlyWhatItChanged() {
        Clock::setFixedNow(kStart);
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Org"));
        account->setSnapshot(MockDataFactory::snapshot(*account, kStart));
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        content.setSelection(SidebarSelection::account(account->id()));
        AccountDetailScreen* detail = window.detail();
        QPointer<QPushButton> refresh = detail->findChild<QPushButton*>(QStringLiteral("smartRefreshButton"));
        QPointer<QWidget> provenance = detail->findChild<QWidget*>(QStringLiteral("provenance"));
        QVERIFY(provenance);
        // A label change redraws the header, and nothing else.
        account->setLabel(QStringLiteral("Org renamed"));
        QTRY_VERIFY(texts(detail).contains(QStringLiteral("Org renamed")));
        QVERIFY(refresh);
        QVERIFY(provenance);
        // Signing out changes the connection panel: that part is new, in the same place.
        account->setConnectionMode(ConnectionMode::manual);
        QTRY_VERIFY(!refresh);
        QVERIFY(detail->findChild<QPushButton*>(QStringLiteral("smartRefreshButton"))->isVisible());
        QVERIFY(texts(detail).contains(QStringLiteral("Manual tracking")));
    }
};

QTEST_MAIN(TestDetailHeartbeat)
#include "tst_detailheartbeat.moc"
