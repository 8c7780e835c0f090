#include "model/Clock.h"
#include "model/Timestamp.h"
#include "model/UuidText.h"

#include <QTest>

#include <QTimeZone>
#include <limits>

class TestTimestamp final : public QObject {
    Q_OBJECT

private slots:
    void referenceDateIsFirstOfJanuary2001() {
        const QDateTime reference(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
        QCOMPARE(Timestamp::fromDateTime(reference), Timestamp(0));
        QCOMPARE(Timestamp(0).toDateTime().toUTC(), reference);
        QCOMPARE(Timestamp(0).unixSeconds(), 978307200.0);
        QCOMPARE(Timestamp::fromUnixSeconds(0).secondsSinceReference(), -978307200.0);
    }

    void orderingAndArithmetic() {
        const Timestamp a(10);
        const Timestamp b = a.addingSeconds(2.5);
        QVERIFY(a < b);
        QCOMPARE(b.secondsSince(a), 2.5);
        QCOMPARE(b, Timestamp(12.5));
        QCOMPARE(qHash(b), qHash(Timestamp(12.5)));
    }

    void dateTimeKeepsMilliseconds() {
        const Timestamp t(785000000.125);
        QCOMPARE(Timestamp::fromDateTime(t.toDateTime()), t);
    }

    void datesBeyondTheRangeAreClamped() {
        QVERIFY(Timestamp(0).isWithinRange());
        QVERIFY(Timestamp(-Timestamp::kLimitSeconds).isWithinRange());
        QVERIFY(!Timestamp(1e300).isWithinRange());
        QVERIFY(!Timestamp(std::numeric_limits<double>::quiet_NaN()).isWithinRange());
        QCOMPARE(Timestamp(1e300).clamped(), Timestamp(Timestamp::kLimitSeconds));
        QCOMPARE(Timestamp(-1e300).clamped(), Timestamp(-Timestamp::kLimitSeconds));
        QCOMPARE(Timestamp(std::numeric_limits<double>::quiet_NaN()).clamped(), Timestamp(0));
        // A date far beyond any calendar still gives a valid date-time, never an overflow.
        QVERIFY(Timestamp(1e300).toDateTime().isValid());
        QCOMPARE(Timestamp(1e300).toDateTime(), Timestamp(Timestamp::kLimitSeconds).toDateTime());
    }

    void clockCanBeHeldStill() {
        Clock::setFixedNow(Timestamp(77));
        QCOMPARE(Clock::now(), Timestamp(77));
        Clock::setFixedNow(std::nullopt);
        const double systemNow = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
        QVERIFY(qAbs(Clock::now().unixSeconds() - systemNow) < 5.0);
    }

    void uuidText() {
        const QUuid uuid = QUuid::fromString(u"e621e1f8-c36c-495a-93fc-0c247a3e6e5f");
        QCOMPARE(UuidText::toText(uuid), QStringLiteral("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"));
        QCOMPARE(UuidText::fromText(u"E621E1F8-C36C-495A-93FC-0C247A3E6E5F"), std::optional<QUuid>(uuid));
        QCOMPARE(UuidText::fromText(u"{e621e1f8-c36c-495a-93fc-0c247a3e6e5f}"), std::optional<QUuid>(uuid));
        QVERIFY(!UuidText::fromText(u"not-a-uuid").has_value());
        QVERIFY(!UuidText::fromText(u"").has_value());
        QCOMPARE(UuidText::fromText(u"00000000-0000-0000-0000-000000000000"), std::optional<QUuid>(QUuid()));
    }
};

QTEST_GUILESS_MAIN(TestTimestamp)
#include "tst_timestamp.moc"
