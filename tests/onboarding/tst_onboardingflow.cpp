#include "onboarding/OnboardingFlow.h"

#include "model/Clock.h"
#include "onboarding/OnboardingSavedDraft.h"
#include "providers/ProviderFactory.h"
#include "providers/UsageProviderError.h"

#include "DelayedHttpServer.h"
#include "providers/FakeOpenAIServer.h"
#include "providers/SilentServer.h"

#include <QElapsedTimer>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {
const Timestamp kNow(800'000'000.0);

// A flow with its saved draft in a settings file of its own, recording what it asks of
// the window.
struct Harness {
    QTemporaryDir dir;
    QSettings settings{dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat};
    QList<OnboardingDraft> created;
    bool createResult = true;
    OnboardingFlow::Hooks::Refusal createRefusal;
    QStringList calls;
    QStringList existing{QStringLiteral("Claude · Work")};
    QStringList alsoExisting;
    std::unique_ptr<OnboardingFlow> flow;

    Harness() { make(); }

    void make() {
        flow = std::make_unique<OnboardingFlow>(
            &settings, existing,
            OnboardingFlow::Hooks{
                .createAccount =
                    [this](const OnboardingDraft& draft, OnboardingFlow::Hooks::Refusal* refusal) {
                        if (!createResult && refusal) {
                            *refusal = createRefusal;
                        }
                        created.append(draft);
                        calls.append(QStringLiteral("create"));
                        return createResult;
                    },
                .exploreSample = [this] { calls.append(QStringLiteral("sample")); },
                .finish = [this] { calls.append(QStringLiteral("finish")); },
                .dismiss = [this] { calls.append(QStringLiteral("dismiss")); },
                .labelExists = [this](const QString& name) { return alsoExisting.contains(name); }});
    }

    // Walks to the connection page in key mode, the key typed.
    void toKeyMode(const QString& key) {
        toConnection();
        flow->selectConnectionMode(ConnectionMode::apiKey);
        flow->setAPIKey(key);
    }

    // Walks to the connection page with a name.
    void toConnection(AIProvider provider = AIProvider::openAI,
                      const QString& name = QStringLiteral("Work")) {
        flow->begin();
        flow->selectProvider(provider);
        flow->next();
        flow->setLabel(name);
        flow->next();
    }
};

} // namespace

class TestOnboardingFlow final : public QObject {
    Q_OBJECT

private slots:
    void init() { Clock::setFixedNow(kNow); }
    void cleanup() {
        Clock::setFixedNow(std::nullopt);
        ProviderFactory::setOpenAIBase(QUrl());
    }

    void startsAsTheTableSays() {
        Harness h;
        const OnboardingFlow& f = *h.flow;
        QCOMPARE(f.page(), OnboardingPage::welcome);
        QCOMPARE(f.provider(), AIProvider::openAI);
        QCOMPARE(f.connectionMode(), ConnectionMode::mock);
        QCOMPARE(f.manualUnit(), UsageUnit::requests);
        QCOMPARE(f.shortResetMode(), OnboardingResetMode::later);
        QCOMPARE(f.shortResetDate(), kNow);
        QCOMPARE(f.weeklyResetDate(), kNow);
        QCOMPARE(f.resumePage(), OnboardingPage::provider);
        QVERIFY(!f.hasSavedDraft() && !f.isTestingConnection() && !f.connectionVerified());
        QVERIFY(!f.validationMessage() && !f.connectionTestMessage() && !f.hasConnectionTest());
    }

    void theWalkCreatesTheAccountOnTheWayToReady() {
        Harness h;
        h.toConnection(AIProvider::anthropic, QStringLiteral("  Claude · Home "));
        QCOMPARE(h.flow->page(), OnboardingPage::connection);
        h.flow->next(); // sample mode needs nothing
        QCOMPARE(h.flow->page(), OnboardingPage::ready);
        QCOMPARE(h.created.size(), 1);
        QCOMPARE(h.created.first().provider, AIProvider::anthropic);
        QCOMPARE(h.created.first().accountKind, AccountKind::consumer);
        QCOMPARE(h.created.first().label, QStringLiteral("  Claude · Home "));
        QCOMPARE(h.created.first().connectionMode, ConnectionMode::mock);
        h.flow->openDashboard();
        QCOMPARE(h.calls, (QStringList{"create", "finish", "dismiss"}));
    }

    void aFailedCreationStaysAndCanBePressedAgain() {
        Harness h;
        h.toConnection();
        h.flow->selectConnectionMode(ConnectionMode::manual);
        h.flow->setShortUsed(QStringLiteral("2"));
        h.flow->setShortLimit(QStringLiteral("10"));
        h.createResult = false;
        h.flow->next();
        QCOMPARE(h.flow->page(), OnboardingPage::connection);
        QCOMPARE(h.flow->validationMessage(),
                 std::optional<QString>(QStringLiteral(
                     "We couldn’t save this account locally. Your setup is still here; try again.")));
        QCOMPARE(h.flow->shortLimit(), QStringLiteral("10"));
        h.createResult = true;
        h.flow->next();
        QCOMPARE(h.created.size(), 2);
        QCOMPARE(h.flow->page(), OnboardingPage::ready);
        QVERIFY(!h.flow->validationMessage());
        QCOMPARE(h.created.last().manualShortLimit, std::optional<double>(10));
    }

    void namesMustBeGivenAndDistinct() {
        Harness h;
        QSignalSpy focus(h.flow.get(), &OnboardingFlow::focusRequested);
        h.flow->begin();
        h.flow->next();
        QCOMPARE(h.flow->page(), OnboardingPage::name);
        QCOMPARE(h.flow->focusedField(), std::optional<OnboardingFocusField>(OnboardingFocusField::label));
        h.flow->setLabel(QStringLiteral(" \n"));
        h.flow->next();
        QCOMPARE(h.flow->page(), OnboardingPage::name);
        QCOMPARE(h.flow->validationMessage(), std::optional<QString>(QStringLiteral(
                                                  "Give this account a short name, like Claude · Work.")));
        QVERIFY(!focus.isEmpty());
        // Case and outer blanks never make a name new; the caller's second test counts too.
        h.flow->setLabel(QStringLiteral(" claude · WORK "));
        QVERIFY(h.flow->isDuplicateName());
        h.flow->next();
        QCOMPARE(h.flow->validationMessage(),
                 std::optional<QString>(QStringLiteral("Choose a different name so you can tell these "
                                                       "subscriptions apart, or choose Use anyway.")));
        // "Use anyway" confirms the name and takes the message away with it.
        h.flow->useNameAnyway();
        QVERIFY(h.flow->duplicateNameConfirmed());
        QVERIFY(!h.flow->validationMessage());
        // Typing after "Use anyway" withdraws it.
        h.flow->setLabel(QStringLiteral(" claude · WORK  "));
        QVERIFY(!h.flow->duplicateNameConfirmed());
        h.flow->setDuplicateNameConfirmed(true);
        h.flow->next();
        QCOMPARE(h.flow->page(), OnboardingPage::connection);
        h.alsoExisting = {QStringLiteral("Elsewhere")};
        h.flow->back();
        h.flow->setLabel(QStringLiteral("Elsewhere"));
        QVERIFY(h.flow->isDuplicateName());
    }

    void backGoesBackAndTheEndsStay() {
        Harness h;
        h.flow->back();
        QCOMPARE(h.flow->page(), OnboardingPage::welcome);
        h.toConnection();
        h.flow->back();
        QCOMPARE(h.flow->page(), OnboardingPage::name);
        QCOMPARE(h.flow->label(), QStringLiteral("Work")); // nothing is cleared
    }

    void selectingTheSameProviderKeepsTheNameAnotherWipesIt() {
        Harness h;
        h.flow->begin();
        h.flow->setLabel(QStringLiteral("Mine"));
        h.flow->selectProvider(AIProvider::openAI);
        QCOMPARE(h.flow->label(), QStringLiteral("Mine"));
        h.flow->setShortUsed(QStringLiteral("3"));
        h.flow->selectConnectionMode(ConnectionMode::apiKey);
        h.flow->setAPIKey(QStringLiteral("sk-admin"));
        h.flow->selectProvider(AIProvider::gemini);
        QVERIFY(h.flow->label().isEmpty());
        QVERIFY(h.flow->shortUsed().isEmpty());
        QVERIFY(h.flow->apiKey().isEmpty());
        QCOMPARE(h.flow->manualUnit(), UsageUnit::messages);
        // Key mode has no place with Gemini.
        QCOMPARE(h.flow->connectionMode(), ConnectionMode::manual);
    }

    void leavingKeyModeForgetsTheKey() {
        Harness h;
        h.toKeyMode(QStringLiteral("sk-admin"));
        h.flow->selectConnectionMode(ConnectionMode::manual);
        QVERIFY(h.flow->apiKey().isEmpty());
        h.flow->setManualOverageConfirmed(true);
        h.flow->setShortUsed(QStringLiteral("5"));
        h.flow->selectConnectionMode(ConnectionMode::mock);
        QVERIFY(!h.flow->manualOverageConfirmed());
        QCOMPARE(h.flow->shortUsed(), QStringLiteral("5")); // the number texts stay
    }

    void connectionPageChecksByMode() {
        Harness h;
        h.toConnection();
        h.flow->selectConnectionMode(ConnectionMode::apiKey);
        h.flow->next();
        QCOMPARE(h.flow->validationMessage(),
                 std::optional<QString>(
                     QStringLiteral("Paste the organization admin key, or choose manual setup.")));
        QCOMPARE(h.flow->focusedField(), std::optional<OnboardingFocusField>(OnboardingFocusField::apiKey));
        h.flow->setAPIKey(QStringLiteral("sk-admin-1"));
        h.flow->next();
        QCOMPARE(h.flow->validationMessage(),
                 std::optional<QString>(
                     QStringLiteral("Test the connection before continuing, or choose manual setup.")));
        h.flow->selectConnectionMode(ConnectionMode::browser);
        h.flow->next();
        QCOMPARE(h.flow->validationMessage(),
                 std::optional<QString>(
                     QStringLiteral("This provider has no live connector here; choose manual setup.")));
        h.flow->selectConnectionMode(ConnectionMode::manual);
        h.flow->next();
        QCOMPARE(h.flow->validationMessage(),
                 std::optional<QString>(
                     QStringLiteral("Add at least one limit, or choose the safe sample instead.")));
        QCOMPARE(h.flow->focusedField(),
                 std::optional<OnboardingFocusField>(OnboardingFocusField::shortUsed));
        h.flow->setShortUsed(QStringLiteral("12"));
        h.flow->setShortLimit(QStringLiteral("10"));
        QVERIFY(h.flow->manualHasOverage());
        h.flow->next();
        QCOMPARE(h.flow->validationMessage(),
                 std::optional<QString>(
                     QStringLiteral("Used is above the limit. Confirm this is an overage to continue.")));
        QCOMPARE(h.flow->focusedField(),
                 std::optional<OnboardingFocusField>(OnboardingFocusField::weeklyUsed));
        h.flow->setManualOverageConfirmed(true);
        h.flow->setShortResetMode(OnboardingResetMode::setTime);
        h.flow->setShortResetDate(kNow);
        QVERIFY(h.flow->manualHasPastReset());
        QVERIFY(h.flow->validationMessageForCurrentPage());
        h.flow->setOverdueResetConfirmed(true);
        h.flow->next();
        QCOMPARE(h.flow->page(), OnboardingPage::ready);
        QCOMPARE(h.created.last().manualShortResetMode, OnboardingResetMode::setTime);
        QCOMPARE(h.created.last().manualShortReset, std::optional<Timestamp>(kNow));
        QCOMPARE(h.created.last().manualShortUsed, std::optional<double>(12));
    }

    void badManualInputIsRefusedAndKept_data() {
        QTest::addColumn<QString>("used");
        QTest::addColumn<QString>("limit");
        QTest::addColumn<QString>("message");
        const QString numbers = QStringLiteral("Use numbers of 0 or more, with a limit greater than 0.");
        QTest::newRow("letters") << "abc"
                                 << "10" << numbers;
        QTest::newRow("huge") << "1"
                              << "1e400" << numbers;
        QTest::newRow("negative") << "-1"
                                  << "10" << numbers;
        QTest::newRow("zero limit") << "0"
                                    << "0" << numbers;
        QTest::newRow("a page of digits") << QString(10000, u'9') << "10" << numbers;
        QTest::newRow("used only") << "3"
                                   << ""
                                   << "Add both Used and Limit for the current window, or leave both blank.";
    }

    void badManualInputIsRefusedAndKept() {
        QFETCH(QString, used);
        QFETCH(QString, limit);
        QFETCH(QString, message);
        Harness h;
        h.toConnection();
        h.flow->selectConnectionMode(ConnectionMode::manual);
        h.flow->setShortUsed(used);
        h.flow->setShortLimit(limit);
        h.flow->next();
        QCOMPARE(h.flow->page(), OnboardingPage::connection);
        QCOMPARE(h.flow->validationMessage(), std::optional<QString>(message));
        QCOMPARE(h.flow->shortUsed(), used);
        QCOMPARE(h.flow->shortLimit(), limit);
        QVERIFY(h.created.isEmpty());
    }

    void aPastResetNeedsItsConfirmation() {
        Harness h;
        h.toConnection();
        h.flow->selectConnectionMode(ConnectionMode::manual);
        h.flow->setWeeklyUsed(QStringLiteral("1"));
        h.flow->setWeeklyLimit(QStringLiteral("5"));
        h.flow->setWeeklyResetMode(OnboardingResetMode::setTime);
        h.flow->setWeeklyResetDate(kNow.addingSeconds(-3600));
        h.flow->next();
        QCOMPARE(h.flow->validationMessage(),
                 std::optional<QString>(
                     QStringLiteral("A reset time has passed. Confirm that this window is already "
                                    "overdue, or choose a future time.")));
        h.flow->setOverdueResetConfirmed(true);
        h.flow->next();
        QCOMPARE(h.flow->page(), OnboardingPage::ready);
    }

    void aPastedKeyWithBlanksIsTestedTrimmed() {
        Clock::setFixedNow(std::nullopt);
        FakeOpenAIServer server;
        server.acceptKey();
        ProviderFactory::setOpenAIBase(server.base());
        Harness h;
        h.toKeyMode(QStringLiteral("  sk-admin-pasted\n"));
        QSignalSpy finished(h.flow.get(), &OnboardingFlow::testFinished);
        h.flow->testConnection();
        QVERIFY(h.flow->isTestingConnection());
        QCOMPARE(h.flow->connectionTestMessage(),
                 std::optional<QString>(QStringLiteral("Checking the official endpoint…")));
        QVERIFY(finished.wait(10000));
        QCOMPARE(server.requests().first().headers.value(QStringLiteral("authorization")),
                 QByteArray("Bearer sk-admin-pasted"));
        QVERIFY(h.flow->connectionVerified());
        QVERIFY(h.flow->connectionMetadata());
        QCOMPARE(h.flow->connectionTestMessage(),
                 std::optional<QString>(
                     QStringLiteral("Connected — provider metadata and rate limits detected.")));
        // One letter more and the key must be tested again.
        h.flow->setAPIKey(h.flow->apiKey() + QStringLiteral("x"));
        QVERIFY(!h.flow->connectionVerified());
        QVERIFY(!h.flow->connectionMetadata());
        h.flow->next();
        QCOMPARE(h.flow->validationMessage(),
                 std::optional<QString>(
                     QStringLiteral("Test the connection before continuing, or choose manual setup.")));
        h.flow->testConnection();
        QVERIFY(finished.wait(10000));
        h.flow->next();
        QCOMPARE(h.flow->page(), OnboardingPage::ready);
        QCOMPARE(h.created.last().apiKey, QStringLiteral("  sk-admin-pasted\nx"));
        QVERIFY(h.created.last().connectionMetadata);
    }

    void anEmptyKeyIsNotSent() {
        Harness h;
        h.toKeyMode(QStringLiteral("   "));
        QSignalSpy focus(h.flow.get(), &OnboardingFlow::focusRequested);
        h.flow->testConnection();
        QCOMPARE(h.flow->connectionTestMessage(),
                 std::optional<QString>(QStringLiteral("Paste a key first.")));
        QVERIFY(!h.flow->isTestingConnection());
        QCOMPARE(focus.last().first().value<OnboardingFocusField>(), OnboardingFocusField::apiKey);
    }

    void aRejectedKeyStaysTyped() {
        Clock::setFixedNow(std::nullopt);
        FakeOpenAIServer server;
        server.refuseKey();
        ProviderFactory::setOpenAIBase(server.base());
        Harness h;
        h.toKeyMode(QStringLiteral("sk-wrong"));
        QSignalSpy finished(h.flow.get(), &OnboardingFlow::testFinished);
        h.flow->testConnection();
        QVERIFY(finished.wait(10000));
        QCOMPARE(h.flow->connectionTestMessage(),
                 std::optional<QString>(
                     QStringLiteral("This key was rejected. OpenAI usage needs an organization admin key.")));
        QCOMPARE(h.flow->apiKey(), QStringLiteral("sk-wrong"));
        QVERIFY(!h.flow->connectionVerified() && !h.flow->isTestingConnection());
    }

    void errorTexts() {
        QCOMPARE(
            OnboardingFlow::connectionErrorMessage(UsageProviderError::unsupported(QStringLiteral("Nope."))),
            QStringLiteral("Nope."));
        QCOMPARE(
            OnboardingFlow::connectionErrorMessage(UsageProviderError::server(QStringLiteral("HTTP 500"))),
            QStringLiteral("OpenAI is unavailable right now. Try again later or choose manual setup."));
        QCOMPARE(OnboardingFlow::connectionErrorMessage(UsageProviderError::missingCredential()),
                 QStringLiteral("Paste the organization admin key, or choose manual setup."));
        QCOMPARE(OnboardingFlow::connectionErrorMessage(UsageProviderError::rateLimited()),
                 QStringLiteral("OpenAI asked us to wait. Try again later or choose manual setup."));
        QCOMPARE(OnboardingFlow::connectionErrorMessage(UsageProviderError::malformedResponse()),
                 QStringLiteral("OpenAI returned an unexpected response. Try again or choose manual setup."));
    }

    void aConnectorThatHangsLosesAtTwelveSeconds() {
        Clock::setFixedNow(std::nullopt);
        SilentServer silent;
        // The client's own idle time-out is longer here, so only the race can end it.
        ProviderFactory::setOpenAIBase(silent.base(), std::chrono::milliseconds(60'000));
        Harness h;
        h.toKeyMode(QStringLiteral("sk-admin"));
        QSignalSpy finished(h.flow.get(), &OnboardingFlow::testFinished);
        QElapsedTimer clock;
        clock.start();
        h.flow->testConnection();
        QTRY_VERIFY_WITH_TIMEOUT(silent.connectionCount() == 1, 5000);
        QVERIFY(finished.wait(15000));
        const qint64 elapsed = clock.elapsed();
        QVERIFY2(elapsed >= 12000 && elapsed < 13000, qPrintable(QString::number(elapsed)));
        QCOMPARE(h.flow->connectionTestMessage(),
                 std::optional<QString>(QStringLiteral(
                     "We couldn’t reach OpenAI in 12 seconds. Try again or choose manual setup.")));
        QVERIFY(!h.flow->isTestingConnection());
        QVERIFY(!h.flow->connectionVerified());
        // The request itself was ended: the server sees its connection close.
        QTcpSocket* held = silent.findChild<QTcpSocket*>();
        QVERIFY(held);
        QTRY_COMPARE_WITH_TIMEOUT(held->state(), QAbstractSocket::UnconnectedState, 2000);
        QCOMPARE(finished.size(), 1);
    }

    void aConnectorThatAnswersJustInTimeWins() {
        Clock::setFixedNow(std::nullopt);
        // A second before the limit: close, with room for a loaded machine's scheduling.
        DelayedHttpServer slow(11'000, 401, FakeOpenAIServer::invalidKeyBody());
        ProviderFactory::setOpenAIBase(slow.base(), std::chrono::milliseconds(60'000));
        Harness h;
        h.toKeyMode(QStringLiteral("sk-admin"));
        QSignalSpy finished(h.flow.get(), &OnboardingFlow::testFinished);
        h.flow->testConnection();
        QVERIFY(finished.wait(15000));
        // The connector's answer, not the time limit; and the timer reports nothing later.
        QCOMPARE(h.flow->connectionTestMessage(),
                 std::optional<QString>(
                     QStringLiteral("This key was rejected. OpenAI usage needs an organization admin key.")));
        QTest::qWait(500);
        QCOMPARE(finished.size(), 1);
        QCOMPARE(h.flow->connectionTestMessage(),
                 std::optional<QString>(
                     QStringLiteral("This key was rejected. OpenAI usage needs an organization admin key.")));
    }

    void cancellingLetsTheTestUnwindWithItsOwnText() {
        Clock::setFixedNow(std::nullopt);
        SilentServer silent;
        ProviderFactory::setOpenAIBase(silent.base(), std::chrono::milliseconds(60'000));
        Harness h;
        h.toKeyMode(QStringLiteral("sk-admin"));
        h.flow->cancelConnectionTest(); // nothing to cancel
        QVERIFY(!h.flow->connectionTestMessage());
        QSignalSpy changed(h.flow.get(), &OnboardingFlow::changed);
        QSignalSpy finished(h.flow.get(), &OnboardingFlow::testFinished);
        h.flow->testConnection();
        QTRY_VERIFY_WITH_TIMEOUT(silent.connectionCount() == 1, 5000);
        QStringList texts;
        connect(h.flow.get(), &OnboardingFlow::changed, this,
                [&] { texts.append(h.flow->connectionTestMessage().value_or(QString())); });
        h.flow->cancelConnectionTest();
        QVERIFY(!h.flow->hasConnectionTest());
        QVERIFY(!h.flow->isTestingConnection());
        QTRY_VERIFY_WITH_TIMEOUT(finished.size() == 1, 3000);
        QCOMPARE(texts.first(),
                 QStringLiteral("Connection check cancelled. You can try again or choose manual setup."));
        QCOMPARE(h.flow->connectionTestMessage(),
                 std::optional<QString>(QStringLiteral(
                     "We couldn’t reach OpenAI in 12 seconds. Try again or choose manual setup.")));
    }

    void aClosedFlowCancelsItsTest() {
        Clock::setFixedNow(std::nullopt);
        SilentServer silent;
        ProviderFactory::setOpenAIBase(silent.base(), std::chrono::milliseconds(60'000));
        Harness h;
        h.toKeyMode(QStringLiteral("sk-admin"));
        h.flow->testConnection();
        QTRY_VERIFY_WITH_TIMEOUT(silent.connectionCount() == 1, 5000);
        h.flow.reset();
        QTcpSocket* held = silent.findChild<QTcpSocket*>();
        QTRY_COMPARE_WITH_TIMEOUT(held->state(), QAbstractSocket::UnconnectedState, 2000);
    }

    // ---- the saved draft ----

    void savingForLaterKeepsEverythingButTheKey() {
        Harness h;
        h.toConnection(AIProvider::openAI, QStringLiteral("Org"));
        h.flow->selectConnectionMode(ConnectionMode::apiKey);
        h.flow->setAPIKey(QStringLiteral("sk-admin-secret"));
        h.flow->saveDraftAndDismiss();
        QCOMPARE(h.calls, QStringList{QStringLiteral("dismiss")});
        for (const QString& key : OnboardingSavedDraft::keys()) {
            QVERIFY2(!h.settings.value(key).toString().contains(QStringLiteral("sk-admin")), qPrintable(key));
        }
        h.make(); // the next launch
        h.flow->appear();
        QVERIFY(h.flow->hasSavedDraft());
        QCOMPARE(h.flow->page(), OnboardingPage::welcome);
        QCOMPARE(h.flow->label(), QStringLiteral("Org"));
        QCOMPARE(h.flow->resumePage(), OnboardingPage::connection);
        h.flow->begin();
        QCOMPARE(h.flow->page(), OnboardingPage::connection);
        QCOMPARE(h.flow->connectionMode(), ConnectionMode::apiKey);
        QVERIFY(h.flow->apiKey().isEmpty()); // asked for again
        h.flow->next();
        QCOMPARE(h.flow->validationMessage(),
                 std::optional<QString>(
                     QStringLiteral("Paste the organization admin key, or choose manual setup.")));
    }

    void restoreRules_data() {
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("provider");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<int>("page");
        QTest::addColumn<bool>("saved");
        QTest::addColumn<int>("resume");
        QTest::addColumn<QString>("restoredMode");
        QTest::newRow("page 4 resumes on connection") << "A"
                                                      << "openai"
                                                      << "manual" << 4 << true << 3 << "manual";
        QTest::newRow("page 0 on provider") << "A"
                                            << "openai"
                                            << "manual" << 0 << true << 1 << "manual";
        QTest::newRow("page -3 on provider") << "A"
                                             << "openai"
                                             << "manual" << -3 << true << 1 << "manual";
        QTest::newRow("empty label, a provider") << ""
                                                 << "xai"
                                                 << "" << 2 << true << 2 << "mock";
        QTest::newRow("key mode for Gemini stays default") << "G"
                                                           << "gemini"
                                                           << "apiKey" << 3 << true << 3 << "mock";
        QTest::newRow("nothing saved") << ""
                                       << ""
                                       << "manual" << 3 << false << 1 << "mock";
    }

    void restoreRules() {
        QFETCH(QString, label);
        QFETCH(QString, provider);
        QFETCH(QString, mode);
        QFETCH(int, page);
        QFETCH(bool, saved);
        QFETCH(int, resume);
        QFETCH(QString, restoredMode);
        Harness h;
        OnboardingSavedDraft{.label = label, .provider = provider, .mode = mode, .page = page}.save(
            h.settings);
        h.make();
        h.flow->restoreDraftIfNeeded();
        QCOMPARE(h.flow->hasSavedDraft(), saved);
        QCOMPARE(h.flow->resumePage().rawValue(), resume);
        QCOMPARE(h.flow->connectionMode().rawValue(), restoredMode);
        QCOMPARE(h.flow->page(), OnboardingPage::welcome);
    }

    void restoreTakesUnitsModesAndDates() {
        Harness h;
        OnboardingSavedDraft{.label = QStringLiteral("Hand"),
                             .provider = QStringLiteral("anthropic"),
                             .mode = QStringLiteral("manual"),
                             .shortUsed = QStringLiteral("3"),
                             .shortLimit = QStringLiteral("abc"),
                             .manualUnit = QStringLiteral("tokens"),
                             .shortResetMode = QStringLiteral("setTime"),
                             .weeklyResetMode = QStringLiteral("bogus"),
                             .shortResetTime = 1'900'000'000.0,
                             .weeklyResetTime = -5}
            .save(h.settings);
        h.make();
        h.flow->restoreDraftIfNeeded();
        QCOMPARE(h.flow->provider(), AIProvider::anthropic);
        QCOMPARE(h.flow->manualUnit(), UsageUnit::tokens);
        QCOMPARE(h.flow->shortUsed(), QStringLiteral("3"));
        QCOMPARE(h.flow->shortLimit(), QStringLiteral("abc")); // restored as typed
        QCOMPARE(h.flow->shortResetMode(), OnboardingResetMode::setTime);
        QCOMPARE(h.flow->weeklyResetMode(), OnboardingResetMode::later);
        QCOMPARE(h.flow->shortResetDate(), Timestamp::fromUnixSeconds(1'900'000'000.0));
        QCOMPARE(h.flow->weeklyResetDate(), kNow);
        // Only on the welcome page.
        Harness moved;
        OnboardingSavedDraft{.label = QStringLiteral("X"), .provider = QStringLiteral("xai")}.save(
            moved.settings);
        moved.make();
        moved.flow->begin();
        moved.flow->restoreDraftIfNeeded();
        QVERIFY(!moved.flow->hasSavedDraft());
    }

    void welcomeActions() {
        Harness h;
        OnboardingSavedDraft{.label = QStringLiteral("Kept"), .provider = QStringLiteral("xai"), .page = 2}
            .save(h.settings);
        h.make();
        h.flow->appear();
        h.flow->startOver();
        QCOMPARE(h.flow->page(), OnboardingPage::provider);
        QCOMPARE(h.flow->label(), QStringLiteral("Kept")); // restored fields stay
        QVERIFY(!OnboardingSavedDraft::load(h.settings).exists());

        Harness later;
        OnboardingSavedDraft{.label = QStringLiteral("Kept"), .provider = QStringLiteral("xai")}.save(
            later.settings);
        later.make();
        later.flow->appear();
        later.flow->doThisLater();
        QCOMPARE(later.calls, QStringList{QStringLiteral("dismiss")});
        QVERIFY(OnboardingSavedDraft::load(later.settings).exists());
        later.flow->trySampleWorkspace();
        QCOMPARE(later.calls, (QStringList{"dismiss", "sample", "finish", "dismiss"}));
        QVERIFY(!OnboardingSavedDraft::load(later.settings).exists());
    }

    void addingAnotherStartsClean() {
        Harness h;
        h.toConnection(AIProvider::xAI, QStringLiteral("Grok"));
        h.flow->selectConnectionMode(ConnectionMode::manual);
        h.flow->setShortUsed(QStringLiteral("1"));
        h.flow->setShortLimit(QStringLiteral("2"));
        h.flow->next();
        QCOMPARE(h.flow->page(), OnboardingPage::ready);
        h.flow->resetForAnother();
        QCOMPARE(h.flow->page(), OnboardingPage::provider);
        QCOMPARE(h.flow->provider(), AIProvider::openAI);
        QVERIFY(h.flow->label().isEmpty() && h.flow->shortUsed().isEmpty());
        QCOMPARE(h.flow->connectionMode(), ConnectionMode::mock);
        QCOMPARE(h.flow->manualUnit(), UsageUnit::requests);
    }
};

QTEST_GUILESS_MAIN(TestOnboardingFlow)
#include "tst_onboardingflow.moc"
