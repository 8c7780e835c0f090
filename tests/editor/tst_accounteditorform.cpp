#include "editor/AccountEditorForm.h"

#include "core/CoreFixtures.h"
#include "model/Clock.h"
#include "providers/MockDataFactory.h"
#include "providers/ProviderFactory.h"
#include "services/KeychainStore.h"
#include "store/ProviderAccount.h"

#include "FileProtection.h"
#include "KeyringControl.h"
#include "TestSupport.h"
#include "providers/FakeOpenAIServer.h"
#include "providers/SilentServer.h"

#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <limits>

namespace {
const Timestamp kNow(800'000'000.0);

UsageWindow window(const QString& id, UsageHorizon horizon, double used, double limit,
                   std::optional<Timestamp> reset = std::nullopt, UsageUnit unit = UsageUnit::tokens) {
    return UsageWindow{.id = id,
                       .title = id,
                       .unit = unit,
                       .horizon = horizon,
                       .used = used,
                       .limit = limit,
                       .resetAt = reset};
}

// A stored account with a snapshot and a key, as a provider-fed one would be.
ProviderAccount* apiAccount(CoreFixture& fixture, const QString& key = QStringLiteral("sk-admin-stored")) {
    auto* account = new ProviderAccount(ProviderAccount::Init{.provider = AIProvider::openAI,
                                                              .label = QStringLiteral("Work API"),
                                                              .accountKind = AccountKind::api,
                                                              .connectionMode = ConnectionMode::apiKey,
                                                              .sampleDataEnabled = false});
    fixture.store->insert(account);
    const UsageSnapshot snapshot{.source = UsageSource::officialAPI,
                                 .capturedAt = kNow,
                                 .windows = {window(QStringLiteral("rpm"), UsageHorizon::shortTerm, 3, 60)}};
    account->setSnapshot(snapshot);
    account->record(snapshot);
    account->setDetectedMetadata(ProviderConnectionMetadata{.displayName = QStringLiteral("Research")});
    KeychainStore::save(key, account->secretReference());
    if (!fixture.store->save()) {
        qFatal("could not save the fixture");
    }
    return account;
}

QString shortTermText() {
    return QStringLiteral(
        "Short-term limit and used values must be finite numbers, with a limit greater than zero.");
}
} // namespace

class TestAccountEditorForm final : public QObject {
    Q_OBJECT

private slots:
    void init() { Clock::setFixedNow(kNow); }
    void cleanup() {
        Clock::setFixedNow(std::nullopt);
        ProviderFactory::setOpenAIBase(QUrl());
    }

    // ---- initial values ----

    void newAccountStartsAsTheTableSays() {
        CoreFixture fixture;
        fixture.preferences->setUseSampleDataByDefault(false);
        AccountEditorForm form(fixture.lifecycle.get(), nullptr);
        const AccountEditorFields& f = form.fields();
        QVERIFY(form.isNew());
        QCOMPARE(f.provider, AIProvider::openAI);
        QVERIFY(f.label.isEmpty());
        QCOMPARE(f.accountKind, AccountKind::consumer);
        QCOMPARE(f.agentCount, QStringLiteral("0"));
        QCOMPARE(f.connectionMode, ConnectionMode::mock);
        QCOMPARE(f.sampleDataEnabled, false); // the preference
        QCOMPARE(f.manualUnit, UsageUnit::requests);
        QCOMPARE(f.manualShortReset, kNow);
        QCOMPARE(f.manualWeeklyReset, kNow);
        QVERIFY(!f.hasRenewalDate && !f.manualShortHasReset && !f.manualWeeklyHasReset);
        QVERIFY(!f.errorMessage && !f.testMessage && !f.isTestingConnection && !f.browserAuthOpened);
        // One calendar month on.
        const QDateTime monthOn = kNow.toDateTime().toLocalTime().addMonths(1);
        QCOMPARE(f.renewalDate, Timestamp::fromDateTime(monthOn));

        CoreFixture unset;
        AccountEditorForm byDefault(unset.lifecycle.get(), nullptr);
        QCOMPARE(byDefault.fields().sampleDataEnabled, true);
    }

    void existingAccountPrefillsFromItsSnapshot() {
        CoreFixture fixture;
        ProviderAccount* account = apiAccount(fixture);
        account->setAgentCount(4);
        account->setIdentityDetail(QStringLiteral("proj_1"));
        account->setRenewalDate(Timestamp(kNow.addingSeconds(86400)));
        account->setAgentBudgets({AgentBudget{.id = QStringLiteral("a"),
                                              .name = QStringLiteral("Atlas"),
                                              .unit = UsageUnit::tokens,
                                              .shortUsed = 1.5,
                                              .shortLimit = 10,
                                              .weeklyLimit = 1e20}});
        const Timestamp weeklyReset = kNow.addingSeconds(3600);
        account->setSnapshot(
            UsageSnapshot{.source = UsageSource::officialAPI,
                          .capturedAt = kNow,
                          .windows = {window(QStringLiteral("w"), UsageHorizon::weekly, 40, 100, weeklyReset),
                                      window(QStringLiteral("s"), UsageHorizon::shortTerm, 0.1, 0.3,
                                             std::nullopt, UsageUnit::credits)}});
        AccountEditorForm form(fixture.lifecycle.get(), account);
        const AccountEditorFields& f = form.fields();
        QVERIFY(!form.isNew());
        QCOMPARE(f.label, QStringLiteral("Work API"));
        QCOMPARE(f.accountKind, AccountKind::api);
        QCOMPARE(f.connectionMode, ConnectionMode::apiKey);
        QCOMPARE(f.identityDetail, QStringLiteral("proj_1"));
        QCOMPARE(f.agentCount, QStringLiteral("4"));
        QVERIFY(f.hasRenewalDate);
        QCOMPARE(f.detectedMetadata->displayName, std::optional<QString>(QStringLiteral("Research")));
        QVERIFY(f.secretInput.isEmpty()); // never read back
        // The short-term window, not the first of all, gives the unit and the short pair.
        QCOMPARE(f.manualUnit, UsageUnit::credits);
        QCOMPARE(f.manualShortUsed, QStringLiteral("0.1"));
        QCOMPARE(f.manualShortLimit, QStringLiteral("0.3"));
        QVERIFY(!f.manualShortHasReset);
        QCOMPARE(f.manualWeeklyUsed, QStringLiteral("40"));
        QCOMPARE(f.manualWeeklyLimit, QStringLiteral("100"));
        QVERIFY(f.manualWeeklyHasReset);
        QCOMPARE(f.manualWeeklyReset, weeklyReset);
        QCOMPARE(f.agentBudgetText, QStringLiteral("Atlas|tokens|1.5|10||1e+20"));
    }

    void accountWithoutSnapshotTakesTheUnitFromItsKind() {
        CoreFixture fixture;
        ProviderAccount* consumer = fixture.addAccount(QStringLiteral("Home"), AIProvider::anthropic);
        consumer->setAccountKind(AccountKind::consumer);
        AccountEditorForm form(fixture.lifecycle.get(), consumer);
        QCOMPARE(form.fields().manualUnit, UsageUnit::messages);
        ProviderAccount* api = fixture.addAccount(QStringLiteral("Org"));
        AccountEditorForm apiForm(fixture.lifecycle.get(), api);
        QCOMPARE(apiForm.fields().manualUnit, UsageUnit::requests);
    }

    void budgetsSurviveOpeningAndSaving() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Team"));
        account->setConnectionMode(ConnectionMode::mock);
        const QList<AgentBudget> budgets{AgentBudget{.id = QStringLiteral("1"),
                                                     .name = QStringLiteral("Nova"),
                                                     .unit = UsageUnit::dollars,
                                                     .shortUsed = 0.25,
                                                     .shortLimit = 3,
                                                     .weeklyUsed = 12.5,
                                                     .weeklyLimit = 40},
                                         AgentBudget{.id = QStringLiteral("2"),
                                                     .name = QStringLiteral("Relay"),
                                                     .unit = UsageUnit::requests}};
        account->setAgentBudgets(budgets);
        AccountEditorForm form(fixture.lifecycle.get(), account);
        QVERIFY(form.save());
        const QList<AgentBudget> saved = account->agentBudgets();
        QCOMPARE(saved.size(), 2);
        for (qsizetype i = 0; i < saved.size(); ++i) {
            AgentBudget expected = budgets.at(i);
            expected.id = saved.at(i).id; // a new id per line
            QCOMPARE(saved.at(i), expected);
        }
    }

    // ---- the numbers ----

    void validManualNumber_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("minimum");
        QTest::addColumn<OptionalDouble>("expected");
        const double limit = AccountEditorForm::kMinimumLimit;
        QTest::newRow("zero limit") << "0" << limit << OptionalDouble();
        QTest::newRow("smallest limit") << "0.000001" << limit << OptionalDouble(0.000001);
        QTest::newRow("used zero") << "0" << 0.0 << OptionalDouble(0.0);
        QTest::newRow("used -1") << "-1" << 0.0 << OptionalDouble();
        QTest::newRow("-5") << "-5" << 0.0 << OptionalDouble();
        QTest::newRow("leading blank") << " 5" << limit << OptionalDouble();
        QTest::newRow("trailing blank") << "5 " << limit << OptionalDouble();
        QTest::newRow("empty") << "" << 0.0 << OptionalDouble();
        QTest::newRow("blank") << "   " << 0.0 << OptionalDouble();
        QTest::newRow("abc") << "abc" << 0.0 << OptionalDouble();
        QTest::newRow("1e309 is infinite") << "1e309" << 0.0 << OptionalDouble();
        QTest::newRow("inf") << "inf" << 0.0 << OptionalDouble();
        QTest::newRow("NaN") << "NaN" << 0.0 << OptionalDouble();
        QTest::newRow("comma in en_US") << "1,5" << 0.0 << OptionalDouble();
        QTest::newRow("decimal point") << "1.5" << 0.0 << OptionalDouble(1.5);
        QTest::newRow("plus sign") << "+7" << 0.0 << OptionalDouble(7.0);
        QTest::newRow("exponent") << "2.5e3" << 0.0 << OptionalDouble(2500.0);
        QTest::newRow("hexadecimal") << "0x1p3" << 0.0 << OptionalDouble(8.0);
        QTest::newRow("tiny underflows to zero") << "1e-400" << 0.0 << OptionalDouble(0.0);
        QTest::newRow("two signs") << "+-1" << 0.0 << OptionalDouble();
        QTest::newRow("full-width digit") << QString::fromUtf8("１") << 0.0 << OptionalDouble();
        QTest::newRow("10,000 characters") << QString(10000, u'9') << 0.0 << OptionalDouble();
        QTest::newRow("10,000 digits after a point")
            << QStringLiteral("0.") + QString(9998, u'1') << 0.0 << OptionalDouble(0.1111111111111111);
    }

    void validManualNumber() {
        QFETCH(QString, text);
        QFETCH(double, minimum);
        QFETCH(OptionalDouble, expected);
        const std::optional<double> value = AccountEditorForm::validManualNumber(text, minimum);
        QCOMPARE(value.has_value(), expected.has_value());
        if (expected) {
            QVERIFY(std::isfinite(*value));
            QCOMPARE(*value, *expected);
        }
    }

    void budgetLines_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("count"); // -1: refused
        QTest::newRow("empty") << "" << 0;
        QTest::newRow("one") << "Atlas|tokens|1|10|5|50" << 1;
        QTest::newRow("blank line between") << "Atlas|tokens|1|10|5|50\n\n   \nNova|requests||||" << 2;
        QTest::newRow("carriage returns") << "Atlas|tokens|1|10|5|50\r\nNova|requests||||\r\n" << 2;
        QTest::newRow("five pieces") << "Atlas|tokens|1|10|5" << -1;
        QTest::newRow("seven pieces") << "Atlas|tokens|1|10|5|6|7" << -1;
        QTest::newRow("empty name") << " |tokens|1|10|5|50" << -1;
        QTest::newRow("unknown unit") << "Atlas|Tokens|1|10|5|50" << -1;
        QTest::newRow("negative") << "Atlas|tokens|-1|10|5|50" << -1;
        QTest::newRow("infinite") << "Atlas|tokens|1e999|10|5|50" << -1;
        QTest::newRow("letters are absent") << "Atlas|tokens|many|10|5|50" << 1;
        QTest::newRow("duplicate names") << "Atlas|tokens|1|10|5|50\nAtlas|tokens|2|10|5|50" << 2;
    }

    void budgetLines() {
        QFETCH(QString, text);
        QFETCH(int, count);
        const auto budgets = AccountEditorForm::parseAgentBudgets(text);
        if (count < 0) {
            QVERIFY(!budgets);
            return;
        }
        QVERIFY(budgets);
        QCOMPARE(budgets->size(), count);
    }

    void budgetPiecesAreStrippedAndLettersReadAsAbsent() {
        const auto budgets =
            AccountEditorForm::parseAgentBudgets(QStringLiteral("  Atlas | dollars | abc |  2.5 | | 9 "));
        QVERIFY(budgets);
        const AgentBudget& budget = budgets->first();
        QCOMPARE(budget.name, QStringLiteral("Atlas"));
        QCOMPARE(budget.unit, UsageUnit::dollars);
        QVERIFY(!budget.shortUsed);
        QCOMPARE(budget.shortLimit, std::optional<double>(2.5));
        QVERIFY(!budget.weeklyUsed);
        QCOMPARE(budget.weeklyLimit, std::optional<double>(9));
        QVERIFY(!budget.id.isEmpty());
    }

    void tenThousandBudgetLines() {
        QStringList lines;
        for (int i = 0; i < 10000; ++i) {
            lines.append(QStringLiteral("Agent %1|tokens|%1|20000||").arg(i));
        }
        const auto budgets = AccountEditorForm::parseAgentBudgets(lines.join(u'\n'));
        QVERIFY(budgets);
        QCOMPARE(budgets->size(), 10000);
        QCOMPARE(budgets->last().shortUsed, std::optional<double>(9999));
        lines.append(QStringLiteral("broken|tokens"));
        QVERIFY(!AccountEditorForm::parseAgentBudgets(lines.join(u'\n')));
    }

    // ---- save ----

    void emptyLabelIsNamedAfterTheProvider() {
        CoreFixture fixture;
        AccountEditorForm form(fixture.lifecycle.get(), nullptr);
        form.setProvider(AIProvider::anthropic);
        form.edit().label = QStringLiteral(" \n ");
        QVERIFY(form.save());
        QCOMPARE(fixture.store->accounts().size(), 1);
        QCOMPARE(fixture.store->accounts().first()->label(), QStringLiteral("Claude · Personal"));
    }

    void newSampleAccountIsSavedWithASampleSnapshot() {
        CoreFixture fixture;
        int saves = 0;
        AccountEditorForm form(fixture.lifecycle.get(), nullptr, [&] { ++saves; });
        form.edit().label = QStringLiteral("  Demo ");
        form.edit().agentCount = QStringLiteral("3");
        QVERIFY(form.save());
        QCOMPARE(saves, 1);
        ProviderAccount* account = fixture.store->accounts().first();
        QCOMPARE(account->label(), QStringLiteral("Demo"));
        QCOMPARE(account->agentCount(), std::optional<qint64>(3));
        QCOMPARE(account->syncStatus(), SyncStatus::current);
        QCOMPARE(account->syncMessage(), QStringLiteral("Sample snapshot loaded locally"));
        QCOMPARE(account->snapshot(),
                 std::optional<UsageSnapshot>(MockDataFactory::snapshot(*account, kNow)));
        QCOMPARE(account->snapshotHistory().size(), 1);
        QCOMPARE(account->lastRefreshAt(), std::optional<Timestamp>(kNow));
        QVERIFY(!fixture.store->hasChanges());
    }

    void manualHorizons_data() {
        QTest::addColumn<QString>("shortLimit");
        QTest::addColumn<QString>("shortUsed");
        QTest::addColumn<QString>("weeklyLimit");
        QTest::addColumn<QString>("weeklyUsed");
        QTest::addColumn<QString>("error");
        QTest::addColumn<int>("windows");
        const QString weeklyText = QStringLiteral(
            "Weekly limit and used values must be finite numbers, with a limit greater than zero.");
        QTest::newRow("limit 0") << "0"
                                 << "1"
                                 << ""
                                 << "" << shortTermText() << 0;
        QTest::newRow("limit 0.000001") << "0.000001"
                                        << "0"
                                        << ""
                                        << ""
                                        << "" << 1;
        QTest::newRow("used -1") << "10"
                                 << "-1"
                                 << ""
                                 << "" << shortTermText() << 0;
        QTest::newRow("leading blank before the 5") << " 5"
                                                    << "1"
                                                    << ""
                                                    << "" << shortTermText() << 0;
        QTest::newRow("infinite limit") << "1e309"
                                        << "1"
                                        << ""
                                        << "" << shortTermText() << 0;
        QTest::newRow("NaN limit") << "NaN"
                                   << "1"
                                   << ""
                                   << "" << shortTermText() << 0;
        QTest::newRow("limit without used") << "10"
                                            << ""
                                            << ""
                                            << "" << shortTermText() << 0;
        QTest::newRow("both empty") << ""
                                    << ""
                                    << "100"
                                    << "20"
                                    << "" << 1;
        QTest::newRow("blanks mean no window") << "  "
                                               << " \t"
                                               << ""
                                               << ""
                                               << "" << 0;
        QTest::newRow("bad weekly") << "10"
                                    << "1"
                                    << "abc"
                                    << "2" << weeklyText << 0;
        QTest::newRow("two windows") << "10"
                                     << "1"
                                     << "100"
                                     << "20"
                                     << "" << 2;
        QTest::newRow("1,5 in en_US") << "1,5"
                                      << "1"
                                      << ""
                                      << "" << shortTermText() << 0;
    }

    void manualHorizons() {
        QFETCH(QString, shortLimit);
        QFETCH(QString, shortUsed);
        QFETCH(QString, weeklyLimit);
        QFETCH(QString, weeklyUsed);
        QFETCH(QString, error);
        QFETCH(int, windows);
        CoreFixture fixture;
        AccountEditorForm form(fixture.lifecycle.get(), nullptr);
        form.chooseManualTracking();
        form.edit().manualShortLimit = shortLimit;
        form.edit().manualShortUsed = shortUsed;
        form.edit().manualWeeklyLimit = weeklyLimit;
        form.edit().manualWeeklyUsed = weeklyUsed;
        const bool saved = form.save();
        if (!error.isEmpty()) {
            QVERIFY(!saved);
            QCOMPARE(form.fields().errorMessage, std::optional<QString>(error));
            // Refused before anything changed: no record was added.
            QVERIFY(fixture.store->accounts().isEmpty());
            return;
        }
        QVERIFY(saved);
        const ProviderAccount* account = fixture.store->accounts().first();
        QCOMPARE(account->connectionMode(), ConnectionMode::manual);
        QCOMPARE(account->sampleDataEnabled(), false);
        if (windows == 0) {
            QVERIFY(!account->snapshot());
            QCOMPARE(account->syncStatus(), SyncStatus::needsAttention);
            QCOMPARE(account->syncMessage(),
                     QStringLiteral("Add at least one manual short-term or weekly allowance"));
            return;
        }
        const UsageSnapshot snapshot = *account->snapshot();
        QCOMPARE(snapshot.source, UsageSource::manual);
        QCOMPARE(snapshot.windows.size(), windows);
        QCOMPARE(snapshot.capturedAt, kNow);
        QCOMPARE(snapshot.history.size(), 1);
        QCOMPARE(snapshot.history.first().value, *snapshot.windows.first().used);
        if (windows == 1) {
            QCOMPARE(account->syncStatus(), SyncStatus::partial);
            QCOMPARE(account->syncMessage(), QStringLiteral("Manual short-term or weekly allowance updated"));
            QCOMPARE(snapshot.warnings,
                     QStringList{QStringLiteral("Only one manual horizon is configured.")});
        } else {
            QCOMPARE(account->syncStatus(), SyncStatus::current);
            QCOMPARE(account->syncMessage(), QStringLiteral("Manual allowances updated"));
            QVERIFY(snapshot.warnings.isEmpty());
        }
    }

    void manualWindowsAreWrittenAsTheTableSays() {
        CoreFixture fixture;
        AccountEditorForm form(fixture.lifecycle.get(), nullptr);
        form.chooseManualTracking();
        form.edit().manualUnit = UsageUnit::dollars;
        form.edit().manualShortLimit = QStringLiteral("20");
        form.edit().manualShortUsed = QStringLiteral("2.5");
        form.edit().manualShortHasReset = true;
        form.edit().manualShortReset = kNow.addingSeconds(3600);
        form.edit().manualWeeklyLimit = QStringLiteral("100");
        form.edit().manualWeeklyUsed = QStringLiteral("40");
        QVERIFY(form.save());
        const QList<UsageWindow> windows = fixture.store->accounts().first()->snapshot()->windows;
        QCOMPARE(windows.at(0), (UsageWindow{.id = QStringLiteral("manual-short"),
                                             .title = QStringLiteral("USD / short term"),
                                             .unit = UsageUnit::dollars,
                                             .horizon = UsageHorizon::shortTerm,
                                             .used = 2.5,
                                             .limit = 20,
                                             .resetAt = kNow.addingSeconds(3600),
                                             .note = QStringLiteral("Manual value")}));
        QCOMPARE(windows.at(1), (UsageWindow{.id = QStringLiteral("manual-weekly"),
                                             .title = QStringLiteral("USD / weekly"),
                                             .unit = UsageUnit::dollars,
                                             .horizon = UsageHorizon::weekly,
                                             .used = 40,
                                             .limit = 100,
                                             .note = QStringLiteral("Manual value · reset not provided")}));
    }

    void aPastResetFailsEvenWithoutNumbers() {
        CoreFixture fixture;
        AccountEditorForm form(fixture.lifecycle.get(), nullptr);
        form.chooseManualTracking();
        form.edit().manualShortHasReset = true;
        form.edit().manualShortReset = kNow; // at now is past
        QVERIFY(!form.save());
        QCOMPARE(form.fields().errorMessage,
                 std::optional<QString>(QStringLiteral(
                     "Short-term reset time has passed. Choose a future time or turn off the reset.")));
        form.edit().manualShortHasReset = false;
        form.edit().manualWeeklyHasReset = true;
        form.edit().manualWeeklyReset = kNow.addingSeconds(-1);
        QVERIFY(!form.save());
        QCOMPARE(form.fields().errorMessage,
                 std::optional<QString>(QStringLiteral(
                     "Weekly reset time has passed. Choose a future time or turn off the reset.")));
        form.edit().manualWeeklyReset = kNow.addingSeconds(60);
        QVERIFY(form.save());
        QCOMPARE(fixture.store->accounts().size(), 1);
    }

    void budgetErrorComesFirstAndChangesNothing() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Before"));
        account->setConnectionMode(ConnectionMode::manual);
        account->setSampleDataEnabled(false);
        QVERIFY(fixture.store->save());
        AccountEditorForm form(fixture.lifecycle.get(), account);
        form.edit().label = QStringLiteral("After");
        form.edit().agentBudgetText = QStringLiteral("Atlas|tokens|1|10|5");
        form.edit().manualShortLimit = QStringLiteral("abc");
        QVERIFY(!form.save());
        QCOMPARE(
            form.fields().errorMessage,
            std::optional<QString>(QStringLiteral(
                "Agent budget lines must use Name|unit|short used|short limit|weekly used|weekly limit.")));
        QCOMPARE(account->label(), QStringLiteral("Before"));
        QVERIFY(!fixture.store->hasChanges());
        // The message stays until a later failure replaces it.
        form.edit().agentBudgetText.clear();
        QVERIFY(!form.save());
        QCOMPARE(form.fields().errorMessage, std::optional<QString>(shortTermText()));
    }

    void agentCount_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<qint64>("stored");
        QTest::newRow("letters") << "many" << qint64(0);
        QTest::newRow("leading blank") << " 3" << qint64(0);
        QTest::newRow("negative") << "-2" << qint64(0);
        QTest::newRow("plain") << "12" << qint64(12);
        QTest::newRow("plus") << "+5" << qint64(5);
        QTest::newRow("beyond 64 bits") << "99999999999999999999" << qint64(0);
    }

    void agentCount() {
        QFETCH(QString, typed);
        QFETCH(qint64, stored);
        CoreFixture fixture;
        AccountEditorForm form(fixture.lifecycle.get(), nullptr);
        form.edit().agentCount = typed;
        QVERIFY(form.save());
        QCOMPARE(fixture.store->accounts().first()->agentCount(), std::optional<qint64>(stored));
    }

    void changingTheProviderOfAnAPIKeyAccountStartsOver() {
        CoreFixture fixture;
        ProviderAccount* account = apiAccount(fixture);
        AccountEditorForm form(fixture.lifecycle.get(), account);
        form.setProvider(AIProvider::anthropic);
        QVERIFY(!form.fields().detectedMetadata);
        QVERIFY(form.save());
        QVERIFY(!account->snapshot());
        QVERIFY(account->snapshotHistory().isEmpty());
        QVERIFY(!account->detectedMetadata());
        QVERIFY(!account->lastRefreshAt());
        QCOMPARE(account->provider(), AIProvider::anthropic);
        QVERIFY(!KeychainStore::read(account->secretReference()));
        // An API-key account is told to wait for its next refresh.
        QCOMPARE(account->syncStatus(), SyncStatus::needsAttention);
        QCOMPARE(account->syncMessage(),
                 QStringLiteral("Add a manual allowance or refresh with an official API connection"));
    }

    void leavingTheKeyModeDeletesTheKeyButComingToItDoesNot() {
        CoreFixture fixture;
        ProviderAccount* account = apiAccount(fixture);
        {
            AccountEditorForm form(fixture.lifecycle.get(), account);
            form.chooseManualTracking();
            QVERIFY(form.save());
            QVERIFY(!KeychainStore::read(account->secretReference()));
            QCOMPARE(account->connectionMode(), ConnectionMode::manual);
        }
        KeychainStore::save(QStringLiteral("sk-kept"), account->secretReference());
        AccountEditorForm form(fixture.lifecycle.get(), account);
        form.chooseOfficialAPIKey();
        QVERIFY(form.save());
        QCOMPARE(KeychainStore::read(account->secretReference()),
                 std::optional<QString>(QStringLiteral("sk-kept")));
        QCOMPARE(account->syncMessage(),
                 QStringLiteral("Add a manual allowance or refresh with an official API connection"));
    }

    void aTypedKeyIsStoredAsTyped() {
        CoreFixture fixture;
        AccountEditorForm form(fixture.lifecycle.get(), nullptr);
        form.chooseOfficialAPIKey();
        form.edit().secretInput = QStringLiteral(" sk-admin with blanks ");
        QVERIFY(form.save());
        const ProviderAccount* account = fixture.store->accounts().first();
        QCOMPARE(KeychainStore::read(account->secretReference()),
                 std::optional<QString>(QStringLiteral(" sk-admin with blanks ")));
        QCOMPARE(account->sampleDataEnabled(), false);
        // A changed provider with a new key: the new key stays.
        AccountEditorForm again(fixture.lifecycle.get(), fixture.store->accounts().first());
        again.setProvider(AIProvider::xAI);
        again.edit().secretInput = QStringLiteral("xai-key");
        QVERIFY(again.save());
        QCOMPARE(KeychainStore::read(account->secretReference()),
                 std::optional<QString>(QStringLiteral("xai-key")));
    }

    void manualAccountWithTheSampleToggleGetsASampleSnapshot() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Hand"), AIProvider::xAI);
        account->setConnectionMode(ConnectionMode::manual);
        account->setSampleDataEnabled(false);
        AccountEditorForm form(fixture.lifecycle.get(), account);
        form.edit().sampleDataEnabled = true;
        QVERIFY(form.save());
        QCOMPARE(account->connectionMode(), ConnectionMode::manual);
        QCOMPARE(account->sampleDataEnabled(), true);
        QCOMPARE(account->snapshot()->source, UsageSource::mock);
        QCOMPARE(account->syncMessage(), QStringLiteral("Sample snapshot loaded locally"));
    }

    void leavingSampleModeForManualWithoutNumbers() {
        CoreFixture fixture;
        AccountEditorForm first(fixture.lifecycle.get(), nullptr);
        QVERIFY(first.save());
        ProviderAccount* account = fixture.store->accounts().first();
        QVERIFY(account->snapshot());
        AccountEditorForm form(fixture.lifecycle.get(), account);
        form.chooseManualTracking();
        form.edit().manualShortLimit.clear();
        form.edit().manualShortUsed.clear();
        form.edit().manualWeeklyLimit.clear();
        form.edit().manualWeeklyUsed.clear();
        QVERIFY(form.save());
        QVERIFY(!account->snapshot());
        QVERIFY(account->snapshotHistory().isEmpty());
        QCOMPARE(account->sampleDataEnabled(), false);
        QCOMPARE(account->syncStatus(), SyncStatus::needsAttention);
        QCOMPARE(account->syncMessage(),
                 QStringLiteral("Add at least one manual short-term or weekly allowance"));
    }

    void browserModeWaitsForManualTracking() {
        CoreFixture fixture;
        AccountEditorForm form(fixture.lifecycle.get(), nullptr);
        form.setProvider(AIProvider::gemini);
        const std::optional<QUrl> page = form.openProviderAuth();
        QVERIFY(page && page->isValid());
        QVERIFY(form.save());
        const ProviderAccount* account = fixture.store->accounts().first();
        QCOMPARE(account->connectionMode(), ConnectionMode::browser);
        QCOMPARE(
            account->syncMessage(),
            QStringLiteral("Provider page opened for reference — choose Manual tracking to monitor limits"));
    }

    void aFailedStoreSaveKeepsTheSheetAndAddsNoSecondRecord() {
        CoreFixture fixture;
        // Changes go to the write-ahead log first: both files refuse.
        const QString path = fixture.dir.filePath(QStringLiteral("accounts.store"));
        QVERIFY(fixture.store->save());
        const auto refuse = [&](bool readOnly) { return makeStoreReadOnly(path, readOnly); };
        {
            AccountEditorForm form(fixture.lifecycle.get(), nullptr);
            form.edit().label = QStringLiteral("Typed");
            QVERIFY(refuse(true));
            QVERIFY(!form.save());
            QVERIFY(refuse(false));
            QVERIFY(form.fields().errorMessage->startsWith(
                QStringLiteral("The account could not be saved locally. Reason: ")));
            // Nothing in memory either: no half-saved record waits for a later save.
            QVERIFY(fixture.store->accounts().isEmpty());
            QVERIFY(!fixture.store->hasChanges());
            QCOMPARE(form.fields().label, QStringLiteral("Typed")); // nothing typed is lost
            QVERIFY(form.save());
            QCOMPARE(fixture.store->accounts().size(), 1);
        }
        // A refused save of a new account with a key leaves no record and no key, and so
        // does the sheet cancelled after it.
        const QStringList keysBefore = keychainAccounts();
        {
            AccountEditorForm form(fixture.lifecycle.get(), nullptr);
            form.edit().label = QStringLiteral("Cancelled");
            form.chooseOfficialAPIKey();
            form.edit().secretInput = QStringLiteral("sk-orphan");
            QVERIFY(refuse(true));
            QVERIFY(!form.save());
            QVERIFY(refuse(false));
            QCOMPARE(fixture.store->accounts().size(), 1);
            QCOMPARE(keychainAccounts(), keysBefore);
        }
        QCOMPARE(keychainAccounts(), keysBefore);
        QCOMPARE(fixture.store->accounts().size(), 1);
        QCOMPARE(fixture.store->accounts().first()->label(), QStringLiteral("Typed"));
    }

    // ---- connections ----

    void modeChangesClearWhatBelongedToTheOldMode() {
        CoreFixture fixture;
        AccountEditorForm form(fixture.lifecycle.get(), nullptr);
        QVERIFY(form.fields().sampleDataEnabled);
        form.openProviderAuth();
        QCOMPARE(form.fields().connectionMode, ConnectionMode::browser);
        QVERIFY(form.fields().browserAuthOpened);
        QVERIFY(!form.fields().sampleDataEnabled);
        // A change to the page keeps the text the page has just set.
        QCOMPARE(
            form.fields().testMessage,
            std::optional<QString>(QStringLiteral(
                "Opened the official OpenAI page for reference. No browser credentials were imported.")));
        // Opening it again keeps the mode.
        form.openProviderAuth();
        QCOMPARE(form.fields().connectionMode, ConnectionMode::browser);
        form.chooseManualTracking();
        QVERIFY(!form.fields().testMessage);
        QVERIFY(!form.fields().browserAuthOpened);
        form.setConnectionMode(ConnectionMode::mock);
        QVERIFY(form.fields().sampleDataEnabled);
        form.setConnectionMode(ConnectionMode::manual);
        QVERIFY(!form.fields().sampleDataEnabled);
    }

    void testMessagesByMode() {
        CoreFixture fixture;
        AccountEditorForm form(fixture.lifecycle.get(), nullptr);
        form.testConnection();
        QCOMPARE(form.fields().testMessage, std::optional<QString>(QStringLiteral(
                                                "Sample mode is ready; no provider request was made.")));
        form.chooseManualTracking();
        form.testConnection();
        QCOMPARE(form.fields().testMessage,
                 std::optional<QString>(QStringLiteral("Manual mode is ready; add a limit and reset time.")));
        form.openProviderAuth();
        form.testConnection();
        QCOMPARE(form.fields().testMessage,
                 std::optional<QString>(QStringLiteral("This provider page is reference-only. Choose Manual "
                                                       "tracking to monitor operator-entered limits.")));
        form.refreshConnection();
        QCOMPARE(form.fields().testMessage, std::optional<QString>(QStringLiteral(
                                                "This provider has no supported live connector in this "
                                                "build. Choose Manual tracking for usage monitoring.")));
        form.chooseOfficialAPIKey();
        form.testConnection();
        QCOMPARE(form.fields().testMessage,
                 std::optional<QString>(QStringLiteral("Enter an API key before testing.")));
    }

    void aKeyForAProviderWithoutAConnector() {
        CoreFixture fixture;
        AccountEditorForm form(fixture.lifecycle.get(), nullptr);
        form.chooseOfficialAPIKey();
        form.setProvider(AIProvider::xAI);
        QCOMPARE(form.fields().connectionMode, ConnectionMode::apiKey);
        form.edit().secretInput = QStringLiteral("xai-123");
        form.testConnection();
        QCOMPARE(form.fields().testMessage,
                 std::optional<QString>(
                     QStringLiteral("No documented live usage adapter is enabled for this provider.")));
        QVERIFY(!form.fields().isTestingConnection);
    }

    void testingWithAnEmptyFieldUsesTheStoredKey() {
        CoreFixture fixture;
        FakeOpenAIServer server;
        server.acceptKey();
        ProviderFactory::setOpenAIBase(server.base());
        ProviderAccount* account = apiAccount(fixture, QStringLiteral("sk-admin-from-keychain"));
        AccountEditorForm form(fixture.lifecycle.get(), account);
        QSignalSpy finished(&form, &AccountEditorForm::testFinished);
        form.testConnection();
        QVERIFY(form.fields().isTestingConnection);
        QCOMPARE(form.fields().testMessage,
                 std::optional<QString>(QStringLiteral("Checking the official usage endpoint…")));
        QVERIFY(!form.fields().detectedMetadata);
        QVERIFY(finished.wait(10000));
        QVERIFY(!form.fields().isTestingConnection);
        QVERIFY(!server.requests().isEmpty());
        QCOMPARE(server.requests().first().headers.value(QStringLiteral("authorization")),
                 QByteArray("Bearer sk-admin-from-keychain"));
        QVERIFY(form.fields().detectedMetadata);
        QCOMPARE(form.fields().testMessage, std::optional<QString>(QStringLiteral(
                                                "Connected — provider metadata and rate limits detected.")));
        // Nothing reaches the record before a save.
        QCOMPARE(account->detectedMetadata()->displayName,
                 std::optional<QString>(QStringLiteral("Research")));
        // A new provider drops what the test detected.
        form.setProvider(AIProvider::gemini);
        QVERIFY(!form.fields().detectedMetadata);
    }

    void aTypedKeyIsTestedAndRefusedKeysSayWhy() {
        CoreFixture fixture;
        FakeOpenAIServer server;
        server.refuseKey();
        ProviderFactory::setOpenAIBase(server.base());
        AccountEditorForm form(fixture.lifecycle.get(), nullptr);
        form.chooseOfficialAPIKey();
        form.edit().secretInput = QStringLiteral("sk-typed");
        QSignalSpy finished(&form, &AccountEditorForm::testFinished);
        form.testConnection();
        QVERIFY(finished.wait(10000));
        QCOMPARE(server.requests().first().headers.value(QStringLiteral("authorization")),
                 QByteArray("Bearer sk-typed"));
        QCOMPARE(form.fields().testMessage,
                 std::optional<QString>(QStringLiteral("The provider rejected this credential.")));
        QVERIFY(!form.fields().detectedMetadata);
        QVERIFY(!form.fields().isTestingConnection);
        // The key is stored only by a save.
        QVERIFY(fixture.store->accounts().isEmpty());
    }

    void garbageAndSilenceAreAnsweredInTime() {
        CoreFixture fixture;
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("usage"), {200, "<html>not json</html>", {}});
        ProviderFactory::setOpenAIBase(server.base());
        AccountEditorForm form(fixture.lifecycle.get(), nullptr);
        form.chooseOfficialAPIKey();
        form.edit().secretInput = QStringLiteral("sk-typed");
        QSignalSpy finished(&form, &AccountEditorForm::testFinished);
        form.testConnection();
        QVERIFY(finished.wait(10000));
        QCOMPARE(form.fields().testMessage,
                 std::optional<QString>(
                     QStringLiteral("The data couldn’t be read because it isn’t in the correct format.")));

        SilentServer silent;
        ProviderFactory::setOpenAIBase(silent.base(), std::chrono::milliseconds(400));
        QElapsedTimer clock;
        clock.start();
        form.testConnection();
        QVERIFY(finished.wait(10000));
        QVERIFY(clock.elapsed() < 5000);
        QCOMPARE(form.fields().testMessage,
                 std::optional<QString>(QStringLiteral("The request timed out after 0.4 s.")));
    }

    void aTestThatHangsEndsAfterTwelveSeconds() {
        CoreFixture fixture;
        SilentServer silent;
        // The request itself would wait a minute: the test's own limit decides.
        ProviderFactory::setOpenAIBase(silent.base(), std::chrono::milliseconds(60'000));
        AccountEditorForm form(fixture.lifecycle.get(), nullptr);
        form.chooseOfficialAPIKey();
        form.edit().secretInput = QStringLiteral("sk-admin-typed");
        QSignalSpy finished(&form, &AccountEditorForm::testFinished);
        QElapsedTimer clock;
        clock.start();
        form.testConnection();
        QVERIFY(form.fields().isTestingConnection);
        QVERIFY(finished.wait(20'000));
        QVERIFY2(clock.elapsed() >= 11'900 && clock.elapsed() < 15'000,
                 qPrintable(QString::number(clock.elapsed())));
        QVERIFY(!form.fields().isTestingConnection);
        QVERIFY(!form.fields().detectedMetadata);
        QCOMPARE(form.fields().testMessage,
                 std::optional<QString>(QStringLiteral(
                     "We couldn’t reach OpenAI in 12 seconds. Try again or choose Manual tracking.")));
        QVERIFY(fixture.store->accounts().isEmpty());
    }

    void aClosedSheetDropsTheResult() {
        CoreFixture fixture;
        SilentServer silent;
        ProviderFactory::setOpenAIBase(silent.base(), std::chrono::milliseconds(300));
        auto* form = new AccountEditorForm(fixture.lifecycle.get(), nullptr);
        form->chooseOfficialAPIKey();
        form->edit().secretInput = QStringLiteral("sk-typed");
        form->testConnection();
        QVERIFY(form->fields().isTestingConnection);
        delete form;
        // The request ends in its own time; nothing lands anywhere and nothing crashes.
        QTest::qWait(600);
        QVERIFY(fixture.store->accounts().isEmpty());
    }

    void logOutDeletesTheKeyAtOnce() {
        CoreFixture fixture;
        ProviderAccount* account = apiAccount(fixture);
        {
            AccountEditorForm form(fixture.lifecycle.get(), account);
            form.edit().secretInput = QStringLiteral("half typed");
            form.logoutConnection();
            QVERIFY(!KeychainStore::read(account->secretReference()));
            QVERIFY(!account->detectedMetadata());
            QCOMPARE(account->syncStatus(), SyncStatus::needsAttention);
            QCOMPARE(account->syncMessage(),
                     QStringLiteral("Signed out — enter manual limits or reconnect an official API key"));
            QCOMPARE(account->connectionMode(), ConnectionMode::apiKey); // until the form is saved
            QVERIFY(!fixture.store->hasChanges());
            QCOMPARE(form.fields().connectionMode, ConnectionMode::manual);
            QVERIFY(form.fields().secretInput.isEmpty());
            QVERIFY(!form.fields().detectedMetadata);
            QCOMPARE(form.fields().testMessage,
                     std::optional<QString>(QStringLiteral(
                         "Signed out. Choose Manual tracking, or reconnect the official OpenAI API key.")));
        } // cancelled
        QVERIFY(!KeychainStore::read(account->secretReference()));
    }
};

QTEST_GUILESS_MAIN(TestAccountEditorForm)
#include "tst_accounteditorform.moc"
