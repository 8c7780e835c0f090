#include "model/UsageHorizon.h"

#include <QTest>

class TestUsageHorizon final : public QObject {
    Q_OBJECT

private slots:
    void infer_data() {
        QTest::addColumn<QString>("id");
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("expected");
        QTest::newRow("minute") << "tokens-per-minute"
                                << "Tokens"
                                << "shortTerm";
        QTest::newRow("hour in the title") << "x"
                                           << "Messages per Hour"
                                           << "shortTerm";
        QTest::newRow("hourly counts as hour") << "hourly"
                                               << ""
                                               << "shortTerm";
        QTest::newRow("rate-window") << "requests-rate-window"
                                     << "Requests"
                                     << "shortTerm";
        QTest::newRow("weekly tokens per hour is short term") << "w"
                                                              << "weekly tokens per hour"
                                                              << "shortTerm";
        QTest::newRow("week id with hour title") << "week-limit"
                                                 << "Per hour"
                                                 << "shortTerm";
        QTest::newRow("week") << "week-limit"
                              << "Limit"
                              << "weekly";
        QTest::newRow("7-day") << "usage-7-day"
                               << "Usage"
                               << "weekly";
        QTest::newRow("7 days") << "u"
                                << "Last 7 Days"
                                << "weekly";
        QTest::newRow("weekly and spend is weekly") << "weekly-spend"
                                                    << "Budget"
                                                    << "weekly";
        QTest::newRow("billing") << "billing-cap"
                                 << "Cap"
                                 << "billing";
        QTest::newRow("spend") << "s"
                               << "Monthly Spend"
                               << "billing";
        QTest::newRow("period") << "current-period"
                                << "Usage"
                                << "billing";
        QTest::newRow("selected-range") << "selected-range-tokens"
                                        << "Tokens"
                                        << "historical";
        QTest::newRow("history") << "h"
                                 << "Token History"
                                 << "historical";
        QTest::newRow("the blank joins id and title") << "7"
                                                      << "days"
                                                      << "weekly";
        QTest::newRow("no blank inside a word") << "7-"
                                                << "day"
                                                << "unspecified";
        QTest::newRow("nothing matches") << "credits"
                                         << "Credits"
                                         << "unspecified";
        QTest::newRow("empty") << ""
                               << ""
                               << "unspecified";
    }
    void infer() {
        QFETCH(QString, id);
        QFETCH(QString, title);
        QFETCH(QString, expected);
        QCOMPARE(UsageHorizon::infer(id, title).rawValue(), expected);
    }
};

QTEST_GUILESS_MAIN(TestUsageHorizon)
#include "tst_usagehorizon.moc"
