#include "app/MainWindow.h"
#include "core/ContentView.h"
#include "core/Preferences.h"
#include "editor/AccountEditorForm.h"
#include "editor/widgets/AccountEditorView.h"
#include "model/Clock.h"
#include "onboarding/OnboardingFlow.h"
#include "onboarding/widgets/OnboardingView.h"
#include "providers/MockDataFactory.h"
#include "store/AccountStore.h"
#include "ui/SelectableTile.h"
#include "views/widgets/OverviewScreen.h"
#include "views/widgets/SettingsView.h"
#include "views/widgets/SidebarView.h"

#include "AccessibilityAudit.h"
#include "ScreenScenario.h"
#include "WidgetTree.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>

// Every screen as a screen reader meets it, with sample data, with nothing and with fifty
// accounts.
namespace {
const Timestamp kNow = Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 2), QTime(9, 30), Qt::UTC));

void settle() {
    for (int i = 0; i < 3; ++i) {
        QApplication::processEvents();
    }
}
} // namespace

class TestAccessibilityAudit final : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { Clock::setFixedNow(kNow); }
    void cleanupTestCase() {
        Clock::setFixedNow(std::nullopt);
        qInfo("audit: %d objects checked, %lld problems", m_audit.objects,
              static_cast<long long>(m_audit.problems.size()));
        QVERIFY2(m_audit.problems.isEmpty(), qPrintable(m_audit.problems.join(u'\n')));
    }

    void everyOnboardingPage() {
        Scenario scenario(false);
        MainWindow window(scenario.content.get());
        window.resize(1240, 820);
        window.show();
        QTRY_VERIFY(window.onboarding() && window.onboarding()->isVisible());
        OnboardingView* sheet = window.onboarding();
        sheet->setReduceMotion(true);
        OnboardingFlow* flow = sheet->flow();
        const auto audit = [&](const char* page) {
            settle();
            m_audit.check(QStringLiteral("onboarding ") + QLatin1StringView(page), sheet);
        };
        audit("welcome");
        flow->begin();
        audit("provider");
        flow->selectProvider(AIProvider::anthropic);
        flow->next();
        flow->setLabel(QStringLiteral("Claude · Work"));
        audit("name");
        flow->next();
        audit("connection");
        flow->selectConnectionMode(ConnectionMode::manual);
        flow->setShortUsed(QStringLiteral("48"));
        flow->setShortLimit(QStringLiteral("45"));
        audit("manual limits");
        flow->selectProvider(AIProvider::openAI);
        flow->setLabel(QStringLiteral("OpenAI · Team"));
        flow->selectConnectionMode(ConnectionMode::apiKey);
        flow->setAPIKey(QStringLiteral("sk-admin-0123"));
        audit("key");
        flow->selectConnectionMode(ConnectionMode::mock);
        flow->next();
        audit("ready");
    }

    void theAuditFindsWhatItLooksFor() {
        QWidget window;
        auto* layout = new QVBoxLayout(&window);
        auto* unnamed = new QPushButton(&window); // an icon and nothing to say
        unnamed->setIcon(QIcon(QPixmap(16, 16)));
        layout->addWidget(unnamed);
        for (int i = 0; i < 2; ++i) {
            auto* limit = new QLineEdit(&window);
            limit->setAccessibleName(QStringLiteral("Limit"));
            layout->addWidget(limit);
        }
        auto* label = new QLabel(QStringLiteral("Resets in 3 days"), &window);
        label->setAccessibleName(QStringLiteral("Something else"));
        layout->addWidget(label);
        window.show();
        AccessibilityAudit audit;
        audit.check(QStringLiteral("made wrong"), &window);
        QCOMPARE(audit.problems.size(), 3);
        const QString found = audit.problems.join(u'\n');
        QVERIFY(found.contains(QStringLiteral("an unnamed control (QPushButton")));
        QVERIFY(found.contains(QStringLiteral("both say \u201CLimit\u201D")));
        QVERIFY(found.contains(QStringLiteral("the text \u201CResets in 3 days\u201D")));
        // Told apart by their sections, the two fields pass.
        window.findChildren<QLineEdit*>().at(0)->setAccessibleDescription(QStringLiteral("Short term"));
        window.findChildren<QLineEdit*>().at(1)->setAccessibleDescription(QStringLiteral("Weekly"));
        AccessibilityAudit again;
        again.check(QStringLiteral("told apart"), &window);
        QCOMPARE(again.problems.size(), 2);
    }

    void overviewAndAccountsWithSampleData() {
        Scenario scenario;
        MainWindow window(scenario.content.get());
        window.resize(1240, 820);
        window.show(); // the legacy migration runs now, before the accounts exist
        settle();
        AccountStore& store = *scenario.store;
        refreshedAccount(store, QStringLiteral("OpenAI · Work API"), AIProvider::openAI, ConnectionMode::mock,
                         UsageSource::mock, 1, kNow);
        refreshedAccount(store, QStringLiteral("Claude · Personal"), AIProvider::anthropic,
                         ConnectionMode::mock, UsageSource::mock, 2, kNow);
        ProviderAccount* key = refreshedAccount(store, QStringLiteral("Production org"), AIProvider::openAI,
                                                ConnectionMode::apiKey, UsageSource::officialAPI, 3, kNow);
        ProviderAccount* manual = refreshedAccount(store, QStringLiteral("Claude Max"), AIProvider::anthropic,
                                                   ConnectionMode::manual, UsageSource::manual, 4, kNow);
        // Signed in through the provider's page: nothing fetched yet.
        auto* browser = new ProviderAccount(ProviderAccount::Init{.provider = AIProvider::gemini,
                                                                  .label = QStringLiteral("Gemini Advanced"),
                                                                  .accountKind = AccountKind::consumer,
                                                                  .connectionMode = ConnectionMode::browser,
                                                                  .createdAt = Timestamp(5),
                                                                  .sampleDataEnabled = false});
        store.insert(browser);
        settle();
        m_audit.check(QStringLiteral("overview cards"), &window);
        window.overview()->setViewMode(MonitoringViewMode::matrix);
        settle();
        m_audit.check(QStringLiteral("overview matrix"), &window);
        window.overview()->setViewMode(MonitoringViewMode::cards);
        for (const ProviderAccount* account : scenario.store->accounts()) {
            scenario.content->setSelection(SidebarSelection::account(account->id()));
            settle();
            m_audit.check(QStringLiteral("detail ") + account->connectionMode().rawValue(), &window);
        }
        scenario.content->setSelection(SidebarSelection::overview());
        window.sidebar()->searchField()->setText(QStringLiteral("claude"));
        settle();
        m_audit.check(QStringLiteral("sidebar searching"), &window);
        window.sidebar()->searchField()->clear();

        SettingsView* settings = window.settingsWindow();
        settings->show();
        settle();
        m_audit.check(QStringLiteral("settings"), settings);
        settings->close();

        const auto editor = [&](const QString& name) {
            settle();
            m_audit.check(QStringLiteral("editor ") + name, window.editor());
            window.editor()->reject();
            settle();
        };
        scenario.content->setEditorState(EditorState::newAccount());
        editor(QStringLiteral("new"));
        scenario.content->setEditorState(EditorState::newAccount());
        window.editor()->form()->chooseOfficialAPIKey();
        editor(QStringLiteral("official key"));
        scenario.content->setEditorState(EditorState::edit(key->id()));
        editor(QStringLiteral("key account"));
        scenario.content->setEditorState(EditorState::edit(manual->id()));
        editor(QStringLiteral("manual"));
        scenario.content->setEditorState(EditorState::edit(browser->id()));
        editor(QStringLiteral("browser"));
    }

    void anEmptyOverview() {
        Scenario scenario;
        MainWindow window(scenario.content.get());
        window.resize(1240, 820);
        window.show();
        settle();
        m_audit.check(QStringLiteral("overview empty"), &window);
    }

    void fiftyAccounts() {
        Scenario scenario;
        addFiftyAccounts(*scenario.store, kNow);
        MainWindow window(scenario.content.get());
        window.resize(1240, 820);
        window.show();
        settle();
        m_audit.check(QStringLiteral("overview 50 cards"), &window);
        window.overview()->setViewMode(MonitoringViewMode::matrix);
        settle();
        m_audit.check(QStringLiteral("overview 50 matrix"), &window);
    }

private:
    AccessibilityAudit m_audit;
};

QTEST_MAIN(TestAccessibilityAudit)
#include "tst_accessibilityaudit.moc"
