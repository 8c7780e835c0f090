#include "onboarding/widgets/OnboardingView.h"

#include "app/MainWindow.h"
#include "core/ContentView.h"
#include "core/CoreFixtures.h"
#include "onboarding/OnboardingFlow.h"
#include "onboarding/widgets/ManualEntryPair.h"
#include "onboarding/widgets/OnboardingOrbit.h"
#include "providers/ProviderFactory.h"
#include "services/KeychainStore.h"
#include "ui/ElidedLabel.h"
#include "ui/SelectableTile.h"

#include "OnboardingWindow.h"
#include "WidgetTree.h"
#include "providers/FakeOpenAIServer.h"
#include "providers/SilentServer.h"

#include <QAccessible>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

namespace {

void press(QPushButton* target) {
    QVERIFY(target);
    QVERIFY(target->isEnabled());
    QTest::mouseClick(target, Qt::LeftButton);
}

} // namespace

class TestOnboardingView final : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { ProviderFactory::setOpenAIBase(QUrl()); }

    void aFirstRunCannotSlipPast() {
        CoreFixture fixture;
        Launch launch(fixture);
        OnboardingView* sheet = launch.sheet();
        QCOMPARE(sheet->windowModality(), Qt::WindowModal);
        QVERIFY(texts(sheet).contains(QStringLiteral("Let’s get your first account on the board.")));
        QTest::keyClick(sheet, Qt::Key_Escape);
        QTest::qWait(50);
        QVERIFY(launch.window->onboarding() && sheet->isVisible());
        // "I’ll do this later" closes it all the same, and the next launch asks again.
        press(shown<QPushButton>(sheet, QStringLiteral("I’ll do this later")));
        QTRY_VERIFY(!launch.window->onboarding());
        QVERIFY(!fixture.preferences->onboardingCompleted());
    }

    void theSampleWorkspace() {
        CoreFixture fixture;
        Launch launch(fixture);
        press(shown<QPushButton>(launch.sheet(), QStringLiteral("Try sample workspace")));
        QTRY_VERIFY(!launch.window->onboarding());
        QCOMPARE(fixture.store->accounts().size(), 3);
        QVERIFY(fixture.preferences->onboardingCompleted());
    }

    void aManualAccountFromStartToDashboard() {
        CoreFixture fixture;
        Launch launch(fixture);
        OnboardingView* sheet = launch.sheet();
        press(shown<QPushButton>(sheet, QStringLiteral("Set up first account")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Step 2 of 5 · Choose provider")));
        QTest::mouseClick(shown<SelectableTile>(sheet, QStringLiteral("Grok")), Qt::LeftButton);
        QVERIFY(shown<SelectableTile>(sheet, QStringLiteral("Grok"))->isSelected());
        press(shown<QPushButton>(sheet, QStringLiteral("Continue")));
        auto* name = sheet->findChild<QLineEdit*>(QStringLiteral("accountName"));
        QCOMPARE(name->placeholderText(), QStringLiteral("For example, Grok · Work"));
        // A blank name is refused where it stands, with the reason.
        press(shown<QPushButton>(sheet, QStringLiteral("Continue")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Give this account a short name, like Claude · Work.")));
        QTRY_VERIFY(name->hasFocus());
        type(name, QStringLiteral("Grok · Home"));
        QTest::keyClick(name, Qt::Key_Return);
        QVERIFY(texts(sheet).contains(QStringLiteral("Step 4 of 5 · Choose updates")));
        QTest::mouseClick(shown<SelectableTile>(sheet, QStringLiteral("I’ll enter limits myself")),
                          Qt::LeftButton);
        auto* current = sheet->findChild<ManualEntryPair*>(QStringLiteral("currentWindow"));
        type(current->usedField(), QStringLiteral("abc"));
        type(current->limitField(), QStringLiteral("50"));
        press(shown<QPushButton>(sheet, QStringLiteral("Add subscription")));
        QVERIFY(
            texts(sheet).contains(QStringLiteral("Use numbers of 0 or more, with a limit greater than 0.")));
        QCOMPARE(current->usedField()->text(), QStringLiteral("abc")); // kept as typed
        type(current->usedField(), QStringLiteral("12"));
        QVERIFY(texts(sheet).contains(QStringLiteral("Current window: 38 messages left")));
        press(shown<QPushButton>(sheet, QStringLiteral("Add subscription")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Nice — your account is ready.")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Operator-entered limits")));
        press(shown<QPushButton>(sheet, QStringLiteral("Open dashboard")));
        QTRY_VERIFY(!launch.window->onboarding());
        QVERIFY(fixture.preferences->onboardingCompleted());

        QString error;
        auto reopened = AccountStore::open(fixture.store->path(), &error);
        QCOMPARE(reopened->accounts().size(), 1);
        const ProviderAccount* saved = reopened->accounts().first();
        QCOMPARE(saved->label(), QStringLiteral("Grok · Home"));
        QCOMPARE(saved->connectionMode(), ConnectionMode::manual);
        QCOMPARE(saved->snapshot()->windows.first().used, std::optional<double>(12));
        QCOMPARE(launch.content->selection(), SidebarSelection::account(saved->id()));
    }

    void anOpenAIKeyProvenThenStored() {
        FakeOpenAIServer server;
        server.acceptKey();
        ProviderFactory::setOpenAIBase(server.base());
        CoreFixture fixture;
        Launch launch(fixture);
        OnboardingView* sheet = launch.sheet();
        press(shown<QPushButton>(sheet, QStringLiteral("Set up first account")));
        press(shown<QPushButton>(sheet, QStringLiteral("Continue")));
        type(sheet->findChild<QLineEdit*>(QStringLiteral("accountName")), QStringLiteral("OpenAI · Org"));
        press(shown<QPushButton>(sheet, QStringLiteral("Continue")));
        QTest::mouseClick(shown<SelectableTile>(sheet, QStringLiteral("Connect OpenAI automatically")),
                          Qt::LeftButton);
        auto* key = sheet->findChild<QLineEdit*>(QStringLiteral("apiKeyField"));
        QCOMPARE(key->echoMode(), QLineEdit::Password);
        QCOMPARE(key->accessibleName(), QStringLiteral("Paste your organization admin key"));
        type(key, QStringLiteral("sk-admin-onboard"));
        press(shown<QPushButton>(sheet, QStringLiteral("Add subscription")));
        QVERIFY(texts(sheet).contains(
            QStringLiteral("Test the connection before continuing, or choose manual setup.")));
        QSignalSpy finished(sheet->flow(), &OnboardingFlow::testFinished);
        press(shown<QPushButton>(sheet, QStringLiteral("Test connection")));
        QVERIFY(finished.wait(10000));
        QVERIFY(
            texts(sheet).contains(QStringLiteral("Connected — provider metadata and rate limits detected.")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Automatically detected")));
        press(shown<QPushButton>(sheet, QStringLiteral("Add subscription")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Connected — your key is verified.")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Verified")));
        const ProviderAccount* created = fixture.store->accounts().first();
        QCOMPARE(KeychainStore::read(created->secretReference()),
                 std::optional<QString>(QStringLiteral("sk-admin-onboard")));
        // Another one starts clean on the provider page.
        press(shown<QPushButton>(sheet, QStringLiteral("Add another subscription")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Step 2 of 5 · Choose provider")));
        QVERIFY(sheet->findChild<QLineEdit*>(QStringLiteral("apiKeyField"))->text().isEmpty());
    }

    void duringATestOnlyBackStaysOpen() {
        SilentServer silent;
        ProviderFactory::setOpenAIBase(silent.base(), std::chrono::milliseconds(60'000));
        CoreFixture fixture;
        Launch launch(fixture);
        OnboardingView* sheet = launch.sheet();
        press(shown<QPushButton>(sheet, QStringLiteral("Set up first account")));
        press(shown<QPushButton>(sheet, QStringLiteral("Continue")));
        type(sheet->findChild<QLineEdit*>(QStringLiteral("accountName")), QStringLiteral("Org"));
        press(shown<QPushButton>(sheet, QStringLiteral("Continue")));
        QTest::mouseClick(shown<SelectableTile>(sheet, QStringLiteral("Connect OpenAI automatically")),
                          Qt::LeftButton);
        type(sheet->findChild<QLineEdit*>(QStringLiteral("apiKeyField")), QStringLiteral("sk-admin"));
        press(shown<QPushButton>(sheet, QStringLiteral("Test connection")));
        QVERIFY(shown<QPushButton>(sheet, QStringLiteral("Checking…")));
        QVERIFY(!shown<QPushButton>(sheet, QStringLiteral("Checking…"))->isEnabled());
        QVERIFY(!shown<QPushButton>(sheet, QStringLiteral("Add subscription"))->isEnabled());
        QVERIFY(!shown<QPushButton>(sheet, QStringLiteral("Save for later"))->isEnabled());
        QVERIFY(shown<QPushButton>(sheet, QStringLiteral("Back"))->isEnabled());
        press(shown<QPushButton>(sheet, QStringLiteral("Cancel")));
        QTRY_VERIFY(!sheet->flow()->isTestingConnection());
        QVERIFY(shown<QPushButton>(sheet, QStringLiteral("Test connection"))->isEnabled());
    }

    void saveForLaterThenResumeAfterARestart() {
        CoreFixture fixture;
        {
            Launch launch(fixture);
            OnboardingView* sheet = launch.sheet();
            press(shown<QPushButton>(sheet, QStringLiteral("Set up first account")));
            QTest::mouseClick(shown<SelectableTile>(sheet, QStringLiteral("Claude")), Qt::LeftButton);
            press(shown<QPushButton>(sheet, QStringLiteral("Continue")));
            type(sheet->findChild<QLineEdit*>(QStringLiteral("accountName")),
                 QStringLiteral("Claude · Later"));
            press(shown<QPushButton>(sheet, QStringLiteral("Save for later")));
            QTRY_VERIFY(!launch.window->onboarding());
            QVERIFY(fixture.store->accounts().isEmpty());
        }
        Launch again(fixture);
        OnboardingView* sheet = again.sheet();
        QVERIFY(texts(sheet).contains(QStringLiteral("Welcome back — your setup is waiting.")));
        QVERIFY(shown<QPushButton>(sheet, QStringLiteral("Start over")));
        press(shown<QPushButton>(sheet, QStringLiteral("Resume setup")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Step 3 of 5 · Name account")));
        QCOMPARE(sheet->findChild<QLineEdit*>(QStringLiteral("accountName"))->text(),
                 QStringLiteral("Claude · Later"));
        QCOMPARE(sheet->flow()->provider(), AIProvider::anthropic);
    }

    void everyControlIsNamed() {
        CoreFixture fixture;
        Launch launch(fixture);
        OnboardingView* sheet = launch.sheet();
        QStringList names = shownAccessibleNames(sheet);
        for (const char* expected : {"Tallyfen", "Setup step 1 of 5", "Set up first account",
                                     "Try sample workspace", "I’ll do this later"}) {
            QVERIFY2(names.contains(QString::fromUtf8(expected)), expected);
        }
        press(shown<QPushButton>(sheet, QStringLiteral("Set up first account")));
        names = shownAccessibleNames(sheet);
        for (const char* expected : {"Setup step 2 of 5", "OpenAI, see usage automatically with a secure key",
                                     "Claude, enter the limits shown in your plan", "Back", "Save for later",
                                     "Continue", "I’m not sure"}) {
            QVERIFY2(names.contains(QString::fromUtf8(expected)), expected);
        }
        press(shown<QPushButton>(sheet, QStringLiteral("Continue")));
        QVERIFY(shownAccessibleNames(sheet).contains(QStringLiteral("Account name")));
    }

    void theRingTurnsUnlessMotionIsReduced() {
        CoreFixture fixture;
        Launch launch(fixture);
        OnboardingView* sheet = launch.sheet(); // reduced by the harness
        auto* orbit = sheet->findChild<OnboardingOrbit*>();
        QVERIFY(!orbit->isTurning());
        QCOMPARE(orbit->rotation(), 0.0);
        sheet->setReduceMotion(false);
        QVERIFY(orbit->isTurning());
        QTRY_VERIFY(orbit->rotation() > 0.0);
    }
};

QTEST_MAIN(TestOnboardingView)
#include "tst_onboardingview.moc"
