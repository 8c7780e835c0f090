#include "onboarding/widgets/OnboardingView.h"

#include "app/MainWindow.h"
#include "core/ContentView.h"
#include "core/CoreFixtures.h"
#include "onboarding/OnboardingFlow.h"
#include "onboarding/widgets/ManualEntryPair.h"
#include "providers/ProviderFactory.h"
#include "services/KeychainStore.h"
#include "ui/SelectableTile.h"

#include "OnboardingWindow.h"
#include "WidgetTree.h"
#include "providers/FakeOpenAIServer.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

// What onboarding's fields show is what it saves, however the text got there.
namespace {

void press(QPushButton* target) {
    QVERIFY(target);
    QVERIFY(target->isEnabled());
    QTest::mouseClick(target, Qt::LeftButton);
}

// A first launch on a store of its own.
struct FirstRun {
    CoreFixture fixture;
    Launch launch{fixture};

    OnboardingView* sheet() const { return launch.sheet(); }

    // The name page of a first account with `provider`.
    OnboardingView* namePage(const QString& provider) const {
        OnboardingView* view = sheet();
        press(shown<QPushButton>(view, QStringLiteral("Set up first account")));
        QTest::mouseClick(shown<SelectableTile>(view, provider), Qt::LeftButton);
        press(shown<QPushButton>(view, QStringLiteral("Continue")));
        return view;
    }

    std::unique_ptr<AccountStore> reopened() const {
        QString error;
        return AccountStore::open(fixture.store->path(), &error);
    }
};

QLineEdit* nameField(OnboardingView* sheet) {
    return sheet->findChild<QLineEdit*>(QStringLiteral("accountName"));
}

ManualEntryPair* pair(OnboardingView* sheet, const char* name) {
    return sheet->findChild<ManualEntryPair*>(QString::fromLatin1(name));
}

QList<QLineEdit*> manualFields(OnboardingView* sheet) {
    return {pair(sheet, "currentWindow")->usedField(), pair(sheet, "currentWindow")->limitField(),
            pair(sheet, "weeklyWindow")->usedField(), pair(sheet, "weeklyWindow")->limitField()};
}

} // namespace

class TestOnboardingFields final : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { ProviderFactory::setOpenAIBase(QUrl()); }

    void aManualAccountDictatedFromNameToStore() {
        FirstRun launch;
        OnboardingView* sheet = launch.namePage(QStringLiteral("Grok"));
        setByAssistiveTechnology(nameField(sheet), QStringLiteral("Grok · Spoken"));
        QCOMPARE(sheet->flow()->label(), QStringLiteral("Grok · Spoken"));
        QVERIFY(texts(sheet).contains(QStringLiteral("xAI / Grok · Grok · Spoken"))); // the preview follows
        press(shown<QPushButton>(sheet, QStringLiteral("Continue")));
        QTest::mouseClick(shown<SelectableTile>(sheet, QStringLiteral("I’ll enter limits myself")),
                          Qt::LeftButton);
        const QStringList values{QStringLiteral("12"), QStringLiteral("50"), QStringLiteral("100"),
                                 QStringLiteral("400")};
        const QList<QLineEdit*> fields = manualFields(sheet);
        for (qsizetype i = 0; i < fields.size(); ++i) {
            setByAssistiveTechnology(fields.at(i), values.at(i));
            QCOMPARE(accessibleText(fields.at(i)), values.at(i));
        }
        QCOMPARE(sheet->flow()->shortUsed(), QStringLiteral("12"));
        QCOMPARE(sheet->flow()->weeklyLimit(), QStringLiteral("400"));
        press(shown<QPushButton>(sheet, QStringLiteral("Add subscription")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Nice — your account is ready.")));
        auto store = launch.reopened();
        QCOMPARE(store->accounts().size(), 1);
        const ProviderAccount* saved = store->accounts().first();
        QCOMPARE(saved->label(), QStringLiteral("Grok · Spoken"));
        const QList<UsageWindow> windows = saved->snapshot()->windows;
        QCOMPARE(windows.size(), 2);
        QCOMPARE(windows.at(0).used, std::optional<double>(12));
        QCOMPARE(windows.at(0).limit, std::optional<double>(50));
        QCOMPARE(windows.at(1).used, std::optional<double>(100));
        QCOMPARE(windows.at(1).limit, std::optional<double>(400));
    }

    void aDictatedKeyIsTestedAndKept() {
        FakeOpenAIServer server;
        server.acceptKey();
        ProviderFactory::setOpenAIBase(server.base());
        FirstRun launch;
        OnboardingView* sheet = launch.namePage(QStringLiteral("OpenAI"));
        setByAssistiveTechnology(nameField(sheet), QStringLiteral("OpenAI · Voice"));
        press(shown<QPushButton>(sheet, QStringLiteral("Continue")));
        QTest::mouseClick(shown<SelectableTile>(sheet, QStringLiteral("Connect OpenAI automatically")),
                          Qt::LeftButton);
        auto* key = sheet->findChild<QLineEdit*>(QStringLiteral("apiKeyField"));
        setByAssistiveTechnology(key, QStringLiteral("sk-admin-voice"));
        QCOMPARE(sheet->flow()->apiKey(), QStringLiteral("sk-admin-voice"));
        QSignalSpy finished(sheet->flow(), &OnboardingFlow::testFinished);
        press(shown<QPushButton>(sheet, QStringLiteral("Test connection")));
        QVERIFY(finished.wait(10000));
        press(shown<QPushButton>(sheet, QStringLiteral("Add subscription")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Connected — your key is verified.")));
        auto store = launch.reopened();
        const ProviderAccount* created = store->accounts().first();
        QCOMPARE(created->label(), QStringLiteral("OpenAI · Voice"));
        QCOMPARE(KeychainStore::read(created->secretReference()),
                 std::optional<QString>(QStringLiteral("sk-admin-voice")));
    }

    void tenThousandCharactersReachTheFlow() {
        FirstRun launch;
        OnboardingView* sheet = launch.namePage(QStringLiteral("Claude"));
        const QString page(10000, u'9');
        setByAssistiveTechnology(nameField(sheet), page);
        QCOMPARE(sheet->flow()->label(), page);
        press(shown<QPushButton>(sheet, QStringLiteral("Continue")));
        QTest::mouseClick(shown<SelectableTile>(sheet, QStringLiteral("I’ll enter limits myself")),
                          Qt::LeftButton);
        for (QLineEdit* field : manualFields(sheet)) {
            setByAssistiveTechnology(field, page);
            QCOMPARE(field->text(), page);
        }
        QCOMPARE(sheet->flow()->shortUsed(), page);
        QCOMPARE(sheet->flow()->shortLimit(), page);
        QCOMPARE(sheet->flow()->weeklyUsed(), page);
        QCOMPARE(sheet->flow()->weeklyLimit(), page);
    }

    void undoAndRedoReachTheFlow() {
        FirstRun launch;
        OnboardingView* sheet = launch.namePage(QStringLiteral("Claude"));
        QLineEdit* name = nameField(sheet);
        type(name, QStringLiteral("Claude · Home"));
        QTest::keyClick(name, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(sheet->flow()->label(), name->text());
        while (name->isUndoAvailable()) {
            name->undo();
        }
        QCOMPARE(sheet->flow()->label(), QString());
        while (name->isRedoAvailable()) {
            name->redo();
        }
        QCOMPARE(name->text(), QStringLiteral("Claude · Home"));
        QCOMPARE(sheet->flow()->label(), QStringLiteral("Claude · Home"));
    }

    void aPasteWithATrailingNewline() {
        FirstRun launch;
        OnboardingView* sheet = launch.namePage(QStringLiteral("Claude"));
        QGuiApplication::clipboard()->setText(QStringLiteral("Claude · Pasted\n"));
        nameField(sheet)->setFocus();
        nameField(sheet)->paste();
        QCOMPARE(sheet->flow()->label(), QStringLiteral("Claude · Pasted\n"));
        press(shown<QPushButton>(sheet, QStringLiteral("Continue")));
        QTest::mouseClick(shown<SelectableTile>(sheet, QStringLiteral("I’ll enter limits myself")),
                          Qt::LeftButton);
        QGuiApplication::clipboard()->setText(QStringLiteral("42\n"));
        for (QLineEdit* field : manualFields(sheet)) {
            field->setFocus();
            field->paste();
            QCOMPARE(field->text(), QStringLiteral("42\n"));
        }
        QCOMPARE(sheet->flow()->shortLimit(), QStringLiteral("42\n"));
        // Onboarding reads a number without its outer white space, so a line break after it is fine.
        QVERIFY(texts(sheet).contains(QStringLiteral("Current window: 0 messages left")));
        press(shown<QPushButton>(sheet, QStringLiteral("Add subscription")));
        QVERIFY(texts(sheet).contains(QStringLiteral("Nice — your account is ready.")));
        auto store = launch.reopened();
        const ProviderAccount* saved = store->accounts().first();
        // The name is kept without its outer white space, as any name is.
        QCOMPARE(saved->label(), QStringLiteral("Claude · Pasted"));
        QCOMPARE(saved->snapshot()->windows.first().limit, std::optional<double>(42));
        QCOMPARE(saved->snapshot()->windows.first().used, std::optional<double>(42));
    }

    void theFlowsOwnChangesAreNotEchoedBack() {
        FirstRun launch;
        OnboardingView* sheet = launch.namePage(QStringLiteral("Claude"));
        setByAssistiveTechnology(nameField(sheet), QStringLiteral("Claude · First"));
        press(shown<QPushButton>(sheet, QStringLiteral("Back")));
        // Another provider empties the name while it is out of sight; the field follows.
        QTest::mouseClick(shown<SelectableTile>(sheet, QStringLiteral("Grok")), Qt::LeftButton);
        press(shown<QPushButton>(sheet, QStringLiteral("Continue")));
        QCOMPARE(nameField(sheet)->text(), sheet->flow()->label());
        QCOMPARE(accessibleText(nameField(sheet)), sheet->flow()->label());
    }
};

QTEST_MAIN(TestOnboardingFields)
#include "tst_onboardingfields.moc"
