#include "onboarding/OnboardingDraft.h"
#include "onboarding/OnboardingPage.h"
#include "onboarding/OnboardingSavedDraft.h"
#include "onboarding/OnboardingValidation.h"

#include "TestSupport.h"

#include <QLocale>
#include <QTemporaryDir>
#include <QTest>

namespace {
const Timestamp kNow(800'000'000);

std::optional<QString> message(const QString& shortUsed, const QString& shortLimit, const QString& weeklyUsed,
                               const QString& weeklyLimit, bool overage = false, bool overdue = false,
                               OnboardingResetMode shortMode = OnboardingResetMode::later,
                               std::optional<Timestamp> shortDate = std::nullopt,
                               OnboardingResetMode weeklyMode = OnboardingResetMode::later,
                               std::optional<Timestamp> weeklyDate = std::nullopt) {
    return OnboardingValidation::manualMessage(shortUsed, shortLimit, weeklyUsed, weeklyLimit, shortMode,
                                               shortDate, weeklyMode, weeklyDate, overage, overdue, kNow);
}

const QString kAddOne = QStringLiteral("Add at least one limit, or choose the safe sample instead.");
const QString kNumbers = QStringLiteral("Use numbers of 0 or more, with a limit greater than 0.");
const QString kOverage = QStringLiteral("Used is above the limit. Confirm this is an overage to continue.");
const QString kOverdue = QStringLiteral(
    "A reset time has passed. Confirm that this window is already overdue, or choose a future time.");
} // namespace

class TestOnboardingValidation final : public QObject {
    Q_OBJECT

private slots:
    void number_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<OptionalDouble>("expected");
        QTest::newRow("empty") << "" << OptionalDouble();
        QTest::newRow("spaces") << "   " << OptionalDouble();
        QTest::newRow("padded") << " 12.5 \n" << OptionalDouble(12.5);
        QTest::newRow("exponent") << "1e3" << OptionalDouble(1000);
        QTest::newRow("decimal comma") << "12,5" << OptionalDouble();
        QTest::newRow("group separator") << "1,000" << OptionalDouble();
        QTest::newRow("infinity") << "1e999" << OptionalDouble();
        QTest::newRow("inf word") << "inf" << OptionalDouble();
        QTest::newRow("nan") << "nan" << OptionalDouble();
        QTest::newRow("letters") << "abc" << OptionalDouble();
        QTest::newRow("trailing letters") << "12abc" << OptionalDouble();
        QTest::newRow("negative") << "-3" << OptionalDouble(-3);
        QTest::newRow("zero") << "0" << OptionalDouble(0);
    }
    void number() {
        QFETCH(QString, text);
        QFETCH(OptionalDouble, expected);
        QCOMPARE(OnboardingValidation::number(text), expected);
    }

    void numberIgnoresTheUsersLocale() {
        const QLocale previous;
        QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
        QCOMPARE(OnboardingValidation::number(QStringLiteral("12.5")), OptionalDouble(12.5));
        QCOMPARE(OnboardingValidation::number(QStringLiteral("12,5")), OptionalDouble());
        QLocale::setDefault(previous);
    }

    void duplicateLabel() {
        const QStringList existing{QStringLiteral("Work API"), QStringLiteral("  "),
                                   QStringLiteral("Team  Max")};
        QVERIFY(OnboardingValidation::duplicateLabel(QStringLiteral("  work api\n"), existing));
        QVERIFY(!OnboardingValidation::duplicateLabel(QStringLiteral("   "),
                                                      existing)); // blank duplicates nothing
        QVERIFY(!OnboardingValidation::duplicateLabel(QString(), {QString()}));
        QVERIFY(!OnboardingValidation::duplicateLabel(QStringLiteral("Team Max"),
                                                      existing)); // inner blanks count
        QVERIFY(OnboardingValidation::duplicateLabel(QStringLiteral("TEAM  MAX"), existing));
        QVERIFY(!OnboardingValidation::duplicateLabel(QStringLiteral("Work-API"), existing));
    }

    void canSubmitAPI() {
        QVERIFY(!OnboardingValidation::canSubmitAPI(QStringLiteral(" \n "), true));
        QVERIFY(!OnboardingValidation::canSubmitAPI(QStringLiteral("sk-admin-1"), false));
        QVERIFY(OnboardingValidation::canSubmitAPI(QStringLiteral("sk-admin-1"), true));
    }

    void manualMessageOrder() {
        QCOMPARE(message("", "", "", ""), std::optional<QString>(kAddOne));
        QCOMPARE(message("", "", "1", "10"), std::nullopt);
        QCOMPARE(message("3", "", "", ""),
                 std::optional<QString>(
                     QStringLiteral("Add both Used and Limit for the current window, or leave both blank.")));
        QCOMPARE(message("", "", "", "10"),
                 std::optional<QString>(
                     QStringLiteral("Add both Used and Limit for the weekly window, or leave both blank.")));
        QCOMPARE(message("5", "5", "", ""), std::nullopt); // only strictly above asks for an overage
        QCOMPARE(message("0", "5", "", ""), std::nullopt);
        QCOMPARE(message("1", "0", "", ""), std::optional<QString>(kNumbers));
        QCOMPARE(message("-1", "5", "", ""), std::optional<QString>(kNumbers));
        QCOMPARE(message(" ", "5", "", ""),
                 std::optional<QString>(kNumbers)); // blanks are filled, and no number
        QCOMPARE(message("1,5", "5", "", ""), std::optional<QString>(kNumbers));
        // The first pair runs to its end first: its overage before the weekly pair's gap.
        QCOMPARE(message("6", "5", "", "10"), std::optional<QString>(kOverage));
        QCOMPARE(message("6", "5", "", "10", true),
                 std::optional<QString>(
                     QStringLiteral("Add both Used and Limit for the weekly window, or leave both blank.")));
        QCOMPARE(message("1", "5", "11", "10"), std::optional<QString>(kOverage));
    }

    void manualMessageResets() {
        // A date exactly now under setTime has passed; so does one in the past, even with blank numbers.
        QCOMPARE(message("1", "5", "", "", false, false, OnboardingResetMode::setTime, kNow),
                 std::optional<QString>(kOverdue));
        QCOMPARE(
            message("", "", "1", "5", false, false, OnboardingResetMode::setTime, kNow.addingSeconds(-60)),
            std::optional<QString>(kOverdue));
        QCOMPARE(
            message("1", "5", "", "", false, false, OnboardingResetMode::setTime, kNow.addingSeconds(60)),
            std::nullopt);
        QCOMPARE(message("1", "5", "", "", false, false, OnboardingResetMode::later, kNow.addingSeconds(-60)),
                 std::nullopt);
        QCOMPARE(message("1", "5", "", "", false, false, OnboardingResetMode::later, std::nullopt,
                         OnboardingResetMode::setTime, kNow.addingSeconds(-1)),
                 std::optional<QString>(kOverdue));
        // Both confirmations: passes though used exceeds the limit and the date has passed.
        QCOMPARE(message("9", "5", "", "", true, true, OnboardingResetMode::setTime, kNow.addingSeconds(-60)),
                 std::nullopt);
    }

    void draftDerivedValues() {
        OnboardingDraft draft;
        draft.provider = AIProvider::anthropic;
        draft.label = QStringLiteral(" \n ");
        QCOMPARE(draft.normalizedLabel(), QStringLiteral("Claude · Personal"));
        draft.label = QStringLiteral("  Max plan ");
        QCOMPARE(draft.normalizedLabel(), QStringLiteral("Max plan"));

        QVERIFY(!draft.hasManualAllowance());
        draft.manualShortUsed = 4;
        QVERIFY(!draft.hasManualAllowance()); // a used value alone does not count
        draft.manualWeeklyLimit = 50;
        QVERIFY(draft.hasManualAllowance());

        draft.manualShortReset = kNow;
        QVERIFY(!draft.shortResetAt()); // mode later: the stored date is ignored
        draft.manualShortResetMode = OnboardingResetMode::setTime;
        QCOMPARE(draft.shortResetAt(), std::optional<Timestamp>(kNow));
        draft.manualWeeklyReset = kNow;
        draft.manualWeeklyResetMode = OnboardingResetMode::notProvided;
        QVERIFY(!draft.weeklyResetAt());

        OnboardingDraft same = draft;
        QCOMPARE(same, draft);
        same.apiKey = QStringLiteral("x");
        QVERIFY(same != draft);
    }

    void resetModes() {
        QCOMPARE(OnboardingResetMode::allCases().size(), 3);
        QCOMPARE(OnboardingResetMode(OnboardingResetMode::later).title(), QStringLiteral("Add later"));
        QCOMPARE(OnboardingResetMode(OnboardingResetMode::notProvided).title(),
                 QStringLiteral("No reset provided"));
        QCOMPARE(OnboardingResetMode(OnboardingResetMode::setTime).title(),
                 QStringLiteral("I know the reset time"));
        QCOMPARE(OnboardingResetMode(OnboardingResetMode::notProvided).id(), QStringLiteral("notProvided"));
        QCOMPARE(OnboardingDraft().manualShortResetMode, OnboardingResetMode(OnboardingResetMode::later));
    }

    void pages() {
        const QStringList labels{"Welcome", "Choose provider", "Name account", "Choose updates", "Ready"};
        const QList<OnboardingPage> all = OnboardingPage::allCases();
        QCOMPARE(all.size(), 5);
        for (int i = 0; i < all.size(); ++i) {
            QCOMPARE(all[i].rawValue(), i);
            QCOMPARE(all[i].number(), i);
            QCOMPARE(all[i].id(), i);
            QCOMPARE(all[i].label(), labels[i]);
            QCOMPARE(OnboardingPage::fromRawValue(i), std::optional<OnboardingPage>(all[i]));
        }
        QVERIFY(!OnboardingPage::fromRawValue(5));
        QVERIFY(!OnboardingPage::fromRawValue(-1));
    }

    void savedDraftKeepsThirteenKeysAndNeverTheKey() {
        QTemporaryDir dir;
        QSettings settings(dir.filePath(QStringLiteral("p.ini")), QSettings::IniFormat);
        QCOMPARE(OnboardingSavedDraft::keys().size(), 13);
        QVERIFY(!OnboardingSavedDraft::load(settings).exists());
        QCOMPARE(OnboardingSavedDraft::load(settings), OnboardingSavedDraft());

        const OnboardingSavedDraft draft{.label = QStringLiteral("Team"),
                                         .provider = QStringLiteral("anthropic"),
                                         .mode = QStringLiteral("manual"),
                                         .shortUsed = QStringLiteral(" 3"),
                                         .shortLimit = QStringLiteral("10"),
                                         .manualUnit = QStringLiteral("messages"),
                                         .shortResetMode = QStringLiteral("setTime"),
                                         .shortResetTime = 1'790'000'000.5,
                                         .page = 3};
        draft.save(settings);
        QCOMPARE(OnboardingSavedDraft::load(settings), draft);
        QVERIFY(OnboardingSavedDraft::load(settings).exists());
        QStringList written = settings.allKeys();
        written.sort();
        QStringList expected = OnboardingSavedDraft::keys();
        expected.sort();
        QCOMPARE(written, expected);

        OnboardingSavedDraft::clear(settings);
        QVERIFY(!OnboardingSavedDraft::load(settings).exists());
        QCOMPARE(OnboardingSavedDraft::load(settings), OnboardingSavedDraft());

        OnboardingSavedDraft providerOnly;
        providerOnly.provider = QStringLiteral("xai");
        QVERIFY(providerOnly.exists());
    }
};

QTEST_GUILESS_MAIN(TestOnboardingValidation)
#include "tst_onboardingvalidation.moc"
