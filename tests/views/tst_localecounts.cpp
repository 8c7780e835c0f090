// Counts are written in the reader's digits and grouping, like every other number.
#include "core/CoreFixtures.h"
#include "views/AccountDetailView.h"
#include "views/MatrixRowContent.h"
#include "views/OverviewView.h"
#include "views/SubscriptionCardContent.h"

#include <QTest>

class TestLocaleCounts final : public QObject {
    Q_OBJECT

    const QLocale m_german{QLocale::German, QLocale::Germany};
    const QLocale m_arabic{QLocale::Arabic, QLocale::Egypt};

private slots:
    void agentsAreGrouped() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Team"));
        account->setAgentCount(12345);
        const QString expected = QStringLiteral("12.345 agents");
        const auto card = SubscriptionCardContent::make(*account, Timestamp(0), m_german, QTimeZone::utc());
        QVERIFY(std::any_of(card.chips.cbegin(), card.chips.cend(),
                            [&](const auto& chip) { return chip.text == expected; }));
        const auto header = AccountDetailView::header(*account, Timestamp(0), m_german, QTimeZone::utc());
        QVERIFY(std::any_of(header.chips.cbegin(), header.chips.cend(),
                            [&](const auto& chip) { return chip.text == expected; }));
    }

    void moreWindowsInTheReadersDigits() {
        QList<UsageWindow> windows;
        for (int i = 0; i < 5; ++i) {
            windows.append(UsageWindow{.id = QString::number(i),
                                       .title = QStringLiteral("W"),
                                       .unit = UsageUnit::tokens,
                                       .horizon = UsageHorizon::shortTerm,
                                       .used = 1,
                                       .limit = 2});
        }
        QCOMPARE(MatrixRowContent::cell(windows, m_arabic).more,
                 QStringLiteral("+%1 more").arg(m_arabic.toString(2)));
        QVERIFY(m_arabic.toString(2) != QStringLiteral("2")); // the test means something
    }

    void subscriptionCountsInTheReadersDigits() {
        CoreFixture fixture;
        for (int i = 0; i < 3; ++i) {
            fixture.addAccount(QStringLiteral("A%1").arg(i));
        }
        const auto section = OverviewView::monitoringSection(
            fixture.store->accounts(), MonitoringSort::attention, MonitoringViewMode::cards, m_arabic);
        QCOMPARE(section.groups.first().count, m_arabic.toString(3) + QStringLiteral(" subscriptions"));
    }
};

QTEST_GUILESS_MAIN(TestLocaleCounts)
#include "tst_localecounts.moc"
