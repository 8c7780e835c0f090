#include "ui/LongText.h"

#include <QFont>
#include <QFontMetrics>
#include <QTest>

class TestLongText final : public QObject {
    Q_OBJECT

private slots:
    void shortTextsStayAsTheyAre() {
        QCOMPARE(LongText::bounded(QString()), QString());
        QCOMPARE(LongText::bounded(QStringLiteral("Work API")), QStringLiteral("Work API"));
        const QString atTheLimit(LongText::kLineLimit, u'a');
        QCOMPARE(LongText::bounded(atTheLimit), atTheLimit);
    }

    void longerTextsKeepTheirStartAndAnEllipsis() {
        const QString text = QString(LongText::kLineLimit, u'a') + QStringLiteral("tail");
        const QString bounded = LongText::bounded(text);
        QCOMPARE(bounded.size(), LongText::kLineLimit + 1);
        QVERIFY(bounded.startsWith(QString(LongText::kLineLimit, u'a')));
        QVERIFY(bounded.endsWith(u'…'));
        QCOMPARE(LongText::bounded(QStringLiteral("abcdef"), 3), QStringLiteral("abc…"));
    }

    void aCharacterOutsideTheBasicPlaneIsNeverSplit() {
        // U+1F600 is two UTF-16 units; the cut would fall between them.
        const QString text = QStringLiteral("ab") + QString::fromUcs4(U"\U0001F600") + QStringLiteral("cd");
        QCOMPARE(LongText::bounded(text, 3), QStringLiteral("ab…"));
        QCOMPARE(LongText::bounded(text, 4), QStringLiteral("ab") + QString::fromUcs4(U"\U0001F600") + u'…');
    }

    void elidingFiveMegabytesGivesAShortLine() {
        const QFontMetrics metrics{QFont()};
        const QString text(5 * 1024 * 1024, u'W');
        const QString shown = LongText::elided(metrics, text, 300, LongText::Kind::free);
        QVERIFY(shown.size() < 200);
        QVERIFY(shown.endsWith(u'…'));
        QVERIFY(metrics.horizontalAdvance(shown) <= 300);
        // A short text that fits is left whole.
        QCOMPARE(LongText::elided(metrics, QStringLiteral("Team"), 300, LongText::Kind::free),
                 QStringLiteral("Team"));
        // Free text cut is no matter to report.
        QVERIFY(LongText::takeCuts().isEmpty());
    }

    // A meaningful text that had to be cut is noted once, and only when it was cut.
    void meaningfulTextsCutAreNoted() {
        const QFontMetrics metrics{QFont()};
        (void)LongText::takeCuts();
        QCOMPARE(LongText::elided(metrics, QStringLiteral("42 requests"), 1000, LongText::Kind::meaningful),
                 QStringLiteral("42 requests"));
        QVERIFY(LongText::takeCuts().isEmpty());
        const QString cut = LongText::elided(metrics, QStringLiteral("Apr 2, 2026, 10:12 AM"), 30,
                                             LongText::Kind::meaningful);
        QVERIFY(cut.endsWith(u'…'));
        QCOMPARE(LongText::takeCuts(), QStringList{QStringLiteral("Apr 2, 2026, 10:12 AM")});
        QVERIFY(LongText::takeCuts().isEmpty());
    }
};

QTEST_MAIN(TestLongText)
#include "tst_longtext.moc"
