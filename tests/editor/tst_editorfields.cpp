#include "editor/widgets/AccountEditorView.h"

#include "app/MainWindow.h"
#include "core/ContentView.h"
#include "core/CoreFixtures.h"
#include "editor/AccountEditorForm.h"
#include "editor/widgets/ManualHorizonEditor.h"
#include "providers/ProviderFactory.h"
#include "services/KeychainStore.h"
#include "ui/SelectableTile.h"

#include "EditorWindow.h"
#include "WidgetTree.h"
#include "providers/FakeOpenAIServer.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

// What the editor's fields show is what Save stores, however the text got there.
namespace {

// A new manual account, every section open.
AccountEditorView* openManual(Window& w) {
    AccountEditorView* sheet = w.openAdd();
    shown<SelectableTile>(sheet, QStringLiteral("Manual tracking"))->click();
    return sheet;
}

QLineEdit* field(QWidget* sheet, const char* name) {
    return sheet->findChild<QLineEdit*>(QString::fromLatin1(name));
}

// Every text field of a manual account's sheet, by the name a test calls it.
QList<std::pair<QString, QLineEdit*>> manualFields(AccountEditorView* sheet) {
    auto* shortTerm = sheet->findChild<ManualHorizonEditor*>(QStringLiteral("manualShortTerm"));
    auto* weekly = sheet->findChild<ManualHorizonEditor*>(QStringLiteral("manualWeekly"));
    return {{QStringLiteral("label"), field(sheet, "accountLabel")},
            {QStringLiteral("short limit"), shortTerm->limitField()},
            {QStringLiteral("short used"), shortTerm->usedField()},
            {QStringLiteral("weekly limit"), weekly->limitField()},
            {QStringLiteral("weekly used"), weekly->usedField()},
            {QStringLiteral("identity"), field(sheet, "identityDetail")},
            {QStringLiteral("model scope"), field(sheet, "modelScope")},
            {QStringLiteral("agent scope"), field(sheet, "agentScope")},
            {QStringLiteral("roster"), field(sheet, "agentRoster")},
            {QStringLiteral("agent count"), field(sheet, "agentCount")},
            {QStringLiteral("plan"), field(sheet, "planOverride")}};
}

} // namespace

class TestEditorFields final : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { ProviderFactory::setOpenAIBase(QUrl()); }

    void everyFieldSetByAssistiveTechnologyIsSaved() {
        Window w;
        AccountEditorView* sheet = openManual(w);
        const QList<std::pair<QString, QString>> values{
            {QStringLiteral("label"), QStringLiteral("Dictated · Work")},
            {QStringLiteral("short limit"), QStringLiteral("50")},
            {QStringLiteral("short used"), QStringLiteral("12.5")},
            {QStringLiteral("weekly limit"), QStringLiteral("400")},
            {QStringLiteral("weekly used"), QStringLiteral("120")},
            {QStringLiteral("identity"), QStringLiteral("me@example.com")},
            {QStringLiteral("model scope"), QStringLiteral("gpt-4.1")},
            {QStringLiteral("agent scope"), QStringLiteral("build agents")},
            {QStringLiteral("roster"), QStringLiteral("Ada, Lin")},
            {QStringLiteral("agent count"), QStringLiteral("3")},
            {QStringLiteral("plan"), QStringLiteral("Team plan")}};
        const auto fields = manualFields(sheet);
        for (const auto& [name, text] : values) {
            QLineEdit* edit = nullptr;
            for (const auto& [fieldName, candidate] : fields) {
                if (fieldName == name) {
                    edit = candidate;
                }
            }
            setByAssistiveTechnology(edit, text);
            QCOMPARE(edit->text(), text);
            QCOMPARE(accessibleText(edit), text);
        }
        auto* budgets = sheet->findChild<QPlainTextEdit*>(QStringLiteral("agentBudgets"));
        setByAssistiveTechnology(budgets, QStringLiteral("Ada | messages | 1 | 10 | 5 | 50"));
        sheet->saveButton()->click();
        QTRY_VERIFY(!w.window->editor());

        auto store = w.reopened();
        QCOMPARE(store->accounts().size(), 1);
        const ProviderAccount* saved = store->accounts().first();
        QCOMPARE(saved->label(), QStringLiteral("Dictated · Work"));
        QCOMPARE(saved->identityDetail(), std::optional<QString>(QStringLiteral("me@example.com")));
        QCOMPARE(saved->modelScope(), std::optional<QString>(QStringLiteral("gpt-4.1")));
        QCOMPARE(saved->agentScope(), std::optional<QString>(QStringLiteral("build agents")));
        QCOMPARE(saved->agentRosterText(), std::optional<QString>(QStringLiteral("Ada, Lin")));
        QCOMPARE(saved->agentCount(), std::optional<qint64>(3));
        QCOMPARE(saved->planName(), QStringLiteral("Team plan"));
        QCOMPARE(saved->agentBudgets().size(), 1);
        QCOMPARE(saved->agentBudgets().first().name, QStringLiteral("Ada"));
        QCOMPARE(saved->agentBudgets().first().weeklyLimit, std::optional<double>(50));
        const QList<UsageWindow> windows = saved->snapshot()->windows;
        QCOMPARE(windows.size(), 2);
        QCOMPARE(windows.at(0).limit, std::optional<double>(50));
        QCOMPARE(windows.at(0).used, std::optional<double>(12.5));
        QCOMPARE(windows.at(1).limit, std::optional<double>(400));
        QCOMPARE(windows.at(1).used, std::optional<double>(120));
    }

    void aKeySetByAssistiveTechnologyIsTestedAndKept() {
        FakeOpenAIServer server;
        server.acceptKey();
        ProviderFactory::setOpenAIBase(server.base());
        Window w;
        w.content->setEditorState(EditorState::newAccount());
        AccountEditorView* sheet = w.window->editor();
        setByAssistiveTechnology(field(sheet, "accountLabel"), QStringLiteral("Org by voice"));
        shown<SelectableTile>(sheet, QStringLiteral("Official API key"))->click();
        setByAssistiveTechnology(sheet->keyField(), QStringLiteral("sk-admin-spoken"));
        QSignalSpy finished(sheet->form(), &AccountEditorForm::testFinished);
        shown<QPushButton>(sheet, QStringLiteral("Test connection"))->click();
        QVERIFY(finished.wait(10000));
        sheet->saveButton()->click();
        QTRY_VERIFY(!w.window->editor());
        auto store = w.reopened();
        const ProviderAccount* saved = store->accounts().first();
        QCOMPARE(saved->label(), QStringLiteral("Org by voice"));
        QCOMPARE(KeychainStore::read(saved->secretReference()),
                 std::optional<QString>(QStringLiteral("sk-admin-spoken")));
    }

    void tenThousandCharactersReachTheForm() {
        Window w;
        AccountEditorView* sheet = openManual(w);
        const QString page(10000, u'8');
        for (const auto& [name, edit] : manualFields(sheet)) {
            setByAssistiveTechnology(edit, page);
            QVERIFY2(edit->text() == page, qPrintable(name));
        }
        const AccountEditorFields& form = sheet->form()->fields();
        for (const QString* value :
             {&form.label, &form.manualShortLimit, &form.manualShortUsed, &form.manualWeeklyLimit,
              &form.manualWeeklyUsed, &form.identityDetail, &form.modelScope, &form.agentScope,
              &form.agentRosterText, &form.agentCount, &form.planName}) {
            QCOMPARE(value->size(), page.size());
        }
        // A 10,000-digit number is a finite double for no one: refused, with everything kept.
        sheet->saveButton()->click();
        QVERIFY(w.window->editor() == sheet);
        QVERIFY(sheet->findChild<QWidget*>(QStringLiteral("editorError"))->isVisibleTo(sheet));
        QCOMPARE(field(sheet, "accountLabel")->text(), page);
        QVERIFY(w.fixture.store->accounts().isEmpty());
        sheet->reject();
    }

    void undoAndRedoThroughAWholeEdit() {
        Window w;
        AccountEditorView* sheet = openManual(w);
        QLineEdit* label = field(sheet, "accountLabel");
        type(label, QStringLiteral("Grok home"));
        QCOMPARE(sheet->form()->fields().label, QStringLiteral("Grok home"));
        while (label->isUndoAvailable()) {
            label->undo();
        }
        QCOMPARE(label->text(), QString());
        QCOMPARE(sheet->form()->fields().label, QString());
        while (label->isRedoAvailable()) {
            label->redo();
        }
        QCOMPARE(label->text(), QStringLiteral("Grok home"));
        QCOMPARE(sheet->form()->fields().label, QStringLiteral("Grok home"));
        // By the keyboard too, then saved: the store has what the field shows.
        auto* shortTerm = sheet->findChild<ManualHorizonEditor*>(QStringLiteral("manualShortTerm"));
        QLineEdit* limit = shortTerm->limitField();
        type(limit, QStringLiteral("7"));
        type(limit, QStringLiteral("70"));
        QTest::keyClick(limit, Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(limit->text() != QStringLiteral("70"));
        QCOMPARE(sheet->form()->fields().manualShortLimit, limit->text());
        while (limit->isUndoAvailable() && limit->text() != QStringLiteral("7")) {
            QTest::keyClick(limit, Qt::Key_Z, Qt::ControlModifier);
        }
        QCOMPARE(limit->text(), QStringLiteral("7"));
        QCOMPARE(sheet->form()->fields().manualShortLimit, QStringLiteral("7"));
        type(shortTerm->usedField(), QStringLiteral("1"));
        sheet->saveButton()->click();
        QTRY_VERIFY(!w.window->editor());
        auto store = w.reopened();
        QCOMPARE(store->accounts().first()->label(), QStringLiteral("Grok home"));
        QCOMPARE(store->accounts().first()->snapshot()->windows.first().limit, std::optional<double>(7));
    }

    void aPasteWithATrailingNewlineIsReadAsShown() {
        Window w;
        AccountEditorView* sheet = openManual(w);
        const QString pasted = QStringLiteral("42\n");
        QGuiApplication::clipboard()->setText(pasted);
        for (const auto& [name, edit] : manualFields(sheet)) {
            edit->setFocus();
            edit->selectAll();
            edit->paste();
            // The field keeps the line break, and the form holds exactly what the field shows.
            QVERIFY2(edit->text() == pasted, qPrintable(name));
        }
        const AccountEditorFields& form = sheet->form()->fields();
        for (const QString* value :
             {&form.label, &form.manualShortLimit, &form.manualShortUsed, &form.manualWeeklyLimit,
              &form.manualWeeklyUsed, &form.identityDetail, &form.modelScope, &form.agentScope,
              &form.agentRosterText, &form.agentCount, &form.planName}) {
            QCOMPARE(*value, pasted);
        }
        // A number followed by a line break is no number to the strict parser: refused, nothing lost.
        sheet->saveButton()->click();
        QVERIFY(w.window->editor() == sheet);
        QVERIFY(texts(sheet).contains(QStringLiteral(
            "Short-term limit and used values must be finite numbers, with a limit greater than zero.")));
        QVERIFY(w.fixture.store->accounts().isEmpty());
        auto* shortTerm = sheet->findChild<ManualHorizonEditor*>(QStringLiteral("manualShortTerm"));
        auto* weekly = sheet->findChild<ManualHorizonEditor*>(QStringLiteral("manualWeekly"));
        for (QLineEdit* number :
             {shortTerm->limitField(), shortTerm->usedField(), weekly->limitField(), weekly->usedField()}) {
            type(number, QStringLiteral("42"));
        }
        sheet->saveButton()->click();
        QTRY_VERIFY(!w.window->editor());
        auto store = w.reopened();
        const ProviderAccount* saved = store->accounts().first();
        // Saving strips the texts of their outer white space, as it strips anything typed.
        QCOMPARE(saved->label(), QStringLiteral("42"));
        QCOMPARE(saved->planName(), QStringLiteral("42"));
        QCOMPARE(saved->identityDetail(), std::optional<QString>(QStringLiteral("42")));
        QCOMPARE(saved->agentRosterText(), std::optional<QString>(QStringLiteral("42")));
        QCOMPARE(saved->agentCount(), std::optional<qint64>(0)); // "42\n" is no whole number
        QCOMPARE(saved->snapshot()->windows.first().limit, std::optional<double>(42));
    }

    void anEditedAccountShowsItsValuesAndEchoesNothingBack() {
        Window w;
        AccountEditorView* sheet = openManual(w);
        setByAssistiveTechnology(field(sheet, "accountLabel"), QStringLiteral("First"));
        auto* shortTerm = sheet->findChild<ManualHorizonEditor*>(QStringLiteral("manualShortTerm"));
        setByAssistiveTechnology(shortTerm->limitField(), QStringLiteral("10"));
        setByAssistiveTechnology(shortTerm->usedField(), QStringLiteral("2"));
        sheet->saveButton()->click();
        QTRY_VERIFY(!w.window->editor());
        const ProviderAccount* account = w.fixture.store->accounts().first();
        w.content->setEditorState(EditorState::edit(account->id()));
        sheet = w.window->editor();
        QCOMPARE(field(sheet, "accountLabel")->text(), QStringLiteral("First"));
        QCOMPARE(accessibleText(field(sheet, "accountLabel")), QStringLiteral("First"));
        setByAssistiveTechnology(field(sheet, "accountLabel"), QStringLiteral("Second"));
        sheet->saveButton()->click();
        QTRY_VERIFY(!w.window->editor());
        QCOMPARE(w.reopened()->accounts().first()->label(), QStringLiteral("Second"));
    }
};

QTEST_MAIN(TestEditorFields)
#include "tst_editorfields.moc"
