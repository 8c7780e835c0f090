#include "editor/widgets/AccountEditorView.h"

#include "app/MainWindow.h"
#include "core/ContentView.h"
#include "core/CoreFixtures.h"
#include "editor/AccountEditorForm.h"
#include "editor/widgets/ManualHorizonEditor.h"
#include "model/Clock.h"
#include "providers/ProviderFactory.h"
#include "services/KeychainStore.h"
#include "ui/ElidedLabel.h"
#include "ui/SelectableTile.h"
#include "ui/ToggleSwitch.h"

#include "EditorWindow.h"
#include "WidgetTree.h"
#include "providers/FakeOpenAIServer.h"

#include <QAccessible>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDesktopServices>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

namespace {

QStringList selectedTiles(const QWidget* root) {
    QStringList result;
    for (const SelectableTile* tile : root->findChildren<SelectableTile*>()) {
        if (tile->isVisibleTo(root) && tile->isSelected()) {
            result.append(tile->text());
        }
    }
    return result;
}

} // namespace

// The sheet opens the real page in the browser only through this handler.
class PageCatcher final : public QObject {
    Q_OBJECT

public:
    QList<QUrl> opened;

public slots:
    void open(const QUrl& url) { opened.append(url); }
};

class TestAccountEditorView final : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QDesktopServices::setUrlHandler(QStringLiteral("https"), &m_pages, "open"); }
    void cleanupTestCase() { QDesktopServices::unsetUrlHandler(QStringLiteral("https")); }
    void cleanup() { ProviderFactory::setOpenAIBase(QUrl()); }

    void everyAddActionOpensTheSheet() {
        Window w;
        QToolButton* add = w.window->findChild<QToolButton*>(QStringLiteral("addAccountButton"));
        QVERIFY(add);
        add->click();
        QVERIFY(w.window->editor());
        QVERIFY(w.window->editor()->isVisible());
        QCOMPARE(w.window->editor()->windowModality(), Qt::WindowModal);
        QCOMPARE(w.window->editor()->windowTitle(), QStringLiteral("Add Account"));
        // Escape cancels: nothing saved, the controller forgets the sheet.
        QTest::keyClick(w.window->editor(), Qt::Key_Escape);
        QTRY_VERIFY(!w.window->editor());
        QVERIFY(!w.content->editorState());
        QVERIFY(w.fixture.store->accounts().isEmpty());
    }

    void aNewAccountStartsWithSamplesAndNoTile() {
        Window w;
        AccountEditorView* sheet = w.openAdd();
        QVERIFY(selectedTiles(sheet) == QStringList{QStringLiteral("OpenAI")}); // the provider only
        QVERIFY(sheet->findChild<ToggleSwitch*>(QStringLiteral("sampleDataToggle"))->isVisibleTo(sheet));
        QVERIFY(!shown<QPushButton>(sheet, QStringLiteral("Refresh connection")));
        QVERIFY(!shown<QPushButton>(sheet, QStringLiteral("Log out")));
        QVERIFY(!sheet->findChild<QWidget*>(QStringLiteral("manualSection"))->isVisibleTo(sheet));
        QVERIFY(texts(sheet).contains(QStringLiteral("Subscription")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Authentication")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Advanced details")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Per-agent budgets")));
        QVERIFY(sheet->saveButton()->isDefault());
    }

    void aSampleAccountIsSavedAndReadBack() {
        Window w;
        AccountEditorView* sheet = w.openAdd();
        type(sheet->findChild<QLineEdit*>(QStringLiteral("accountLabel")), QStringLiteral("Team sandbox"));
        shown<SelectableTile>(sheet, QStringLiteral("Claude"))->click();
        QCOMPARE(sheet->form()->fields().provider, AIProvider::anthropic);
        QCOMPARE(selectedTiles(sheet), QStringList{QStringLiteral("Claude")});
        type(sheet->findChild<QLineEdit*>(QStringLiteral("agentCount")), QStringLiteral("2"));
        sheet->saveButton()->click();
        QTRY_VERIFY(!w.window->editor());
        auto store = w.reopened();
        QCOMPARE(store->accounts().size(), 1);
        const ProviderAccount* saved = store->accounts().first();
        QCOMPARE(saved->label(), QStringLiteral("Team sandbox"));
        QCOMPARE(saved->provider(), AIProvider::anthropic);
        QCOMPARE(saved->agentCount(), std::optional<qint64>(2));
        QCOMPARE(saved->syncMessage(), QStringLiteral("Sample snapshot loaded locally"));
        QVERIFY(saved->snapshot());
    }

    void aManualAccountIsTypedInAndReadBack() {
        Window w;
        AccountEditorView* sheet = w.openAdd();
        type(sheet->findChild<QLineEdit*>(QStringLiteral("accountLabel")), QStringLiteral("Grok at home"));
        shown<SelectableTile>(sheet, QStringLiteral("Grok"))->click();
        shown<SelectableTile>(sheet, QStringLiteral("Manual tracking"))->click();
        QCOMPARE(selectedTiles(sheet), (QStringList{"Grok", "Manual tracking"}));
        QVERIFY(sheet->findChild<QWidget*>(QStringLiteral("manualSection"))->isVisibleTo(sheet));
        QVERIFY(!sheet->findChild<ToggleSwitch*>(QStringLiteral("sampleDataToggle"))->isVisibleTo(sheet));
        auto* unit = sheet->findChild<QComboBox*>(QStringLiteral("manualUnit"));
        QCOMPARE(unit->accessibleName(), QStringLiteral("Unit"));
        unit->setFocus();
        unit->setCurrentIndex(unit->findText(QStringLiteral("messages")));
        Q_EMIT unit->activated(unit->currentIndex());
        auto* shortTerm = sheet->findChild<ManualHorizonEditor*>(QStringLiteral("manualShortTerm"));
        type(shortTerm->limitField(), QStringLiteral("50"));
        type(shortTerm->usedField(), QStringLiteral("12"));
        QVERIFY(texts(shortTerm).contains(QStringLiteral("Reset not provided — you can add it later.")));
        shortTerm->resetSwitch()->click();
        QVERIFY(shortTerm->resetPicker()->isVisibleTo(sheet));
        const QDateTime reset = QDateTime::currentDateTime().addDays(1);
        shortTerm->resetPicker()->setDateTime(reset);
        sheet->saveButton()->click();
        QTRY_VERIFY(!w.window->editor());
        auto store = w.reopened();
        const ProviderAccount* saved = store->accounts().first();
        QCOMPARE(saved->connectionMode(), ConnectionMode::manual);
        QCOMPARE(saved->syncStatus(), SyncStatus::partial);
        const UsageWindow window = saved->snapshot()->windows.first();
        QCOMPARE(window.title, QStringLiteral("Messages / short term"));
        QCOMPARE(window.used, std::optional<double>(12));
        QCOMPARE(window.limit, std::optional<double>(50));
        QVERIFY(window.resetAt);
        QVERIFY(std::abs(window.resetAt->secondsSince(Timestamp::fromDateTime(reset))) < 60);
    }

    void aRefusedSaveKeepsTheSheetAndWhatWasTyped() {
        Window w;
        AccountEditorView* sheet = w.openAdd();
        type(sheet->findChild<QLineEdit*>(QStringLiteral("accountLabel")), QStringLiteral("Typed"));
        shown<SelectableTile>(sheet, QStringLiteral("Manual tracking"))->click();
        auto* shortTerm = sheet->findChild<ManualHorizonEditor*>(QStringLiteral("manualShortTerm"));
        type(shortTerm->limitField(), QStringLiteral("1e309"));
        type(shortTerm->usedField(), QStringLiteral("1"));
        sheet->saveButton()->click();
        QVERIFY(w.window->editor() == sheet && sheet->isVisible());
        const QString message = QStringLiteral(
            "Short-term limit and used values must be finite numbers, with a limit greater than zero.");
        QVERIFY(texts(sheet).contains(message));
        QVERIFY(sheet->findChild<QWidget*>(QStringLiteral("editorError"))->isVisibleTo(sheet));
        QCOMPARE(sheet->findChild<QLineEdit*>(QStringLiteral("accountLabel"))->text(),
                 QStringLiteral("Typed"));
        QCOMPARE(shortTerm->limitField()->text(), QStringLiteral("1e309"));
        QVERIFY(w.fixture.store->accounts().isEmpty());
        // A pasted page of text into a number field is refused the same way.
        type(shortTerm->limitField(), QString(10000, u'7'));
        sheet->saveButton()->click();
        QVERIFY(texts(sheet).contains(message));
        type(shortTerm->limitField(), QStringLiteral("10"));
        sheet->saveButton()->click();
        QTRY_VERIFY(!w.window->editor());
        QCOMPARE(w.reopened()->accounts().size(), 1);
    }

    void anOpenAIKeyIsTestedAndSaved() {
        FakeOpenAIServer server;
        server.acceptKey();
        ProviderFactory::setOpenAIBase(server.base());
        Window w;
        AccountEditorView* sheet = w.openAdd();
        type(sheet->findChild<QLineEdit*>(QStringLiteral("accountLabel")), QStringLiteral("Org"));
        shown<SelectableTile>(sheet, QStringLiteral("Official API key"))->click();
        QLineEdit* key = sheet->keyField();
        QVERIFY(key->isVisibleTo(sheet));
        QCOMPARE(key->echoMode(), QLineEdit::Password);
        QCOMPARE(key->accessibleName(), QStringLiteral("API key (saved in Keychain)"));
        type(key, QStringLiteral("sk-admin-secret"));
        QPushButton* test = shown<QPushButton>(sheet, QStringLiteral("Test connection"));
        QVERIFY(test);
        QSignalSpy finished(sheet->form(), &AccountEditorForm::testFinished);
        test->click();
        // Waiting keeps the sheet alive: the button says so and can't be pressed twice.
        QCOMPARE(test->text(), QStringLiteral("Checking…"));
        QVERIFY(!test->isEnabled());
        QVERIFY(finished.wait(10000));
        QCOMPARE(test->text(), QStringLiteral("Test connection"));
        QVERIFY(
            texts(sheet).contains(QStringLiteral("Connected — provider metadata and rate limits detected.")));
        QVERIFY(sheet->findChild<QWidget*>(QStringLiteral("detectedPanel"))->isVisibleTo(sheet));
        QVERIFY(texts(sheet).contains(QStringLiteral("1 provider-reported quota signal")));
        sheet->saveButton()->click();
        QTRY_VERIFY(!w.window->editor());
        auto store = w.reopened();
        const ProviderAccount* saved = store->accounts().first();
        QCOMPARE(saved->connectionMode(), ConnectionMode::apiKey);
        QVERIFY(saved->detectedMetadata());
        QCOMPARE(KeychainStore::read(saved->secretReference()),
                 std::optional<QString>(QStringLiteral("sk-admin-secret")));
        QCOMPARE(saved->syncMessage(),
                 QStringLiteral("Add a manual allowance or refresh with an official API connection"));
    }

    void theKeyFieldIsWipedWhenTheSheetCloses() {
        Window w;
        AccountEditorView* sheet = w.openAdd();
        shown<SelectableTile>(sheet, QStringLiteral("Official API key"))->click();
        type(sheet->keyField(), QStringLiteral("sk-never-saved"));
        QLineEdit* key = sheet->keyField();
        QPointer<AccountEditorView> guard(sheet);
        sheet->reject();
        QVERIFY(key->text().isEmpty() || !guard);
        QTRY_VERIFY(!guard);
        QVERIFY(w.fixture.store->accounts().isEmpty());
    }

    void editingAnAccountSelectsItAfterSaving() {
        Window w;
        ProviderAccount* account = w.fixture.addAccount(QStringLiteral("Old name"), AIProvider::gemini);
        account->setAccountKind(AccountKind::consumer);
        QVERIFY(w.fixture.store->save());
        w.content->setEditorState(EditorState::edit(account->id()));
        AccountEditorView* sheet = w.window->editor();
        QVERIFY(sheet);
        QCOMPARE(sheet->windowTitle(), QStringLiteral("Edit Account"));
        QCOMPARE(sheet->findChild<QLineEdit*>(QStringLiteral("accountLabel"))->text(),
                 QStringLiteral("Old name"));
        QCOMPARE(sheet->findChild<QLineEdit*>(QStringLiteral("identityDetail"))->accessibleName(),
                 QStringLiteral("Login or workspace note"));
        type(sheet->findChild<QLineEdit*>(QStringLiteral("accountLabel")), QStringLiteral("New name"));
        sheet->saveButton()->click();
        QTRY_VERIFY(!w.window->editor());
        QCOMPARE(w.content->selection(), SidebarSelection::account(account->id()));
        QCOMPARE(w.reopened()->account(account->id())->label(), QStringLiteral("New name"));
    }

    void theProviderPageOpensAndOpensAgain() {
        m_pages.opened.clear();
        Window w;
        ProviderAccount* account = w.fixture.addAccount(QStringLiteral("Claude"), AIProvider::anthropic);
        QVERIFY(w.fixture.store->save());
        w.content->setEditorState(EditorState::edit(account->id()));
        AccountEditorView* sheet = w.window->editor();
        shown<SelectableTile>(sheet, QStringLiteral("Open Claude site"))->click();
        QCOMPARE(m_pages.opened.size(), 1);
        QVERIFY(texts(sheet).contains(QStringLiteral("Provider page opened")));
        QPushButton* again = shown<QPushButton>(sheet, QStringLiteral("Open again"));
        QVERIFY(again);
        QVERIFY(shown<QPushButton>(sheet, QStringLiteral("Refresh connection")));
        again->click();
        QCOMPARE(m_pages.opened.size(), 2);
        QCOMPARE(sheet->form()->fields().connectionMode, ConnectionMode::browser);
        // Leaving the page for manual tracking drops the page's note.
        shown<SelectableTile>(sheet, QStringLiteral("Manual tracking"))->click();
        QVERIFY(!sheet->findChild<ElidedLabel*>(QStringLiteral("testMessage"))->isVisibleTo(sheet));
        sheet->reject();
    }

    void logOutDeletesTheKeyBeforeAnySave() {
        Window w;
        ProviderAccount* account = w.fixture.addAccount(QStringLiteral("Org"));
        account->setConnectionMode(ConnectionMode::apiKey);
        KeychainStore::save(QStringLiteral("sk-stored"), account->secretReference());
        QVERIFY(w.fixture.store->save());
        w.content->setEditorState(EditorState::edit(account->id()));
        AccountEditorView* sheet = w.window->editor();
        QVERIFY(shown<QPushButton>(sheet, QStringLiteral("Refresh connection")));
        QPushButton* logout = shown<QPushButton>(sheet, QStringLiteral("Log out"));
        QVERIFY(logout);
        logout->click();
        QVERIFY(!KeychainStore::read(account->secretReference()));
        QVERIFY(texts(sheet).contains(
            QStringLiteral("Signed out. Choose Manual tracking, or reconnect the official OpenAI API key.")));
        QCOMPARE(selectedTiles(sheet), (QStringList{"OpenAI", "Manual tracking"}));
        QTest::keyClick(sheet, Qt::Key_Escape);
        QTRY_VERIFY(!w.window->editor());
        QVERIFY(!KeychainStore::read(account->secretReference()));
    }

    void everyControlIsNamedByItsLabel() {
        Window w;
        AccountEditorView* sheet = w.openAdd();
        shown<SelectableTile>(sheet, QStringLiteral("Official API key"))->click();
        QStringList names = shownAccessibleNames(sheet);
        for (const char* expected : {"Account label",
                                     "OpenAI",
                                     "Claude",
                                     "Grok",
                                     "Gemini",
                                     "Open OpenAI site",
                                     "Official API key",
                                     "Manual tracking",
                                     "API key (saved in Keychain)",
                                     "Test connection",
                                     "Login or workspace note",
                                     "Primary model scope (optional)",
                                     "Agent / API key scope (optional)",
                                     "Agent roster (optional)",
                                     "Agents using this account",
                                     "Track renewal date",
                                     "Plan / project override (optional)",
                                     "Per-agent budgets",
                                     "Cancel",
                                     "Save"}) {
            QVERIFY2(names.contains(QString::fromUtf8(expected)), expected);
        }
        shown<SelectableTile>(sheet, QStringLiteral("Manual tracking"))->click();
        names = shownAccessibleNames(sheet);
        for (const char* expected : {"Unit", "Limit", "Used", "I know the reset time"}) {
            QVERIFY2(names.contains(QString::fromUtf8(expected)), expected);
        }
        auto* renewal = sheet->findChild<ToggleSwitch*>(QStringLiteral("trackRenewal"));
        renewal->click();
        QVERIFY(shownAccessibleNames(sheet).contains(QStringLiteral("Renews")));
        sheet->reject();
    }

    void tabFollowsTheReadingOrder() {
        Window w;
        AccountEditorView* sheet = w.openAdd();
        QVERIFY(QTest::qWaitForWindowActive(sheet));
        auto* label = sheet->findChild<QLineEdit*>(QStringLiteral("accountLabel"));
        label->setFocus();
        QStringList order;
        QWidget* current = label;
        for (int i = 0; i < 9; ++i) {
            current = current->nextInFocusChain();
            while (current && (!current->isVisibleTo(sheet) || current->focusPolicy() == Qt::NoFocus ||
                               !current->isEnabled())) {
                current = current->nextInFocusChain();
            }
            order.append(current->accessibleName());
        }
        QCOMPARE(order,
                 (QStringList{"OpenAI", "Claude", "Grok", "Gemini", "Open OpenAI site", "Official API key",
                              "Manual tracking", "Use safe sample data", "Login or workspace note"}));
        sheet->reject();
    }

private:
    PageCatcher m_pages;
};

QTEST_MAIN(TestAccountEditorView)
#include "tst_accounteditorview.moc"
