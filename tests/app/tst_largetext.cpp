// Large text and narrow windows: every screen, at the scale it is run at (ctest runs it at
// 1×, 1.25× and 1.5× through QT_SCALE_FACTOR) and at the window's minimum width, shows
// every value, unit, date and title whole. Only free text a person typed (an account's
// label) may be cut, and then its tooltip and accessible name still carry all of it.
#include "ScreenScenario.h"
#include "app/MainWindow.h"
#include "core/EditorState.h"
#include "editor/widgets/AccountEditorView.h"
#include "model/Clock.h"
#include "onboarding/OnboardingFlow.h"
#include "onboarding/widgets/OnboardingView.h"
#include "ui/AppResources.h"
#include "ui/AppStyle.h"
#include "ui/ElidedLabel.h"
#include "ui/LongText.h"
#include "views/SettingsContent.h"
#include "views/widgets/OverviewScreen.h"
#include "views/widgets/SettingsView.h"

#include <QAbstractButton>
#include <QPushButton>
#include <QScrollArea>
#include <QTest>

namespace {
// Where a widget sits, for a failure message.
QString pathOf(const QWidget* widget) {
    QStringList names;
    for (const QWidget* step = widget; step; step = step->parentWidget()) {
        names.prepend(step->objectName().isEmpty() ? QString::fromLatin1(step->metaObject()->className())
                                                   : step->objectName());
    }
    return names.join(u'/');
}

// Lays out and draws `top` whole (each scroll area's page at full length, so what lies
// below the fold is drawn too) and lists every text that can't be seen whole.
QStringList cutTexts(QWidget* top) {
    // What changed is laid out first, as the event loop would before the next frame.
    QApplication::processEvents();
    QApplication::processEvents();
    top->grab();
    for (QScrollArea* area : top->findChildren<QScrollArea*>()) {
        if (area->isVisible() && area->widget()) {
            area->widget()->grab();
        }
    }
    QStringList problems;
    for (const QString& text : LongText::takeCuts()) {
        problems.append(QStringLiteral("drawn cut: “%1”").arg(text));
    }
    for (const ElidedLabel* label : top->findChildren<ElidedLabel*>()) {
        if (!label->isVisibleTo(top) || label->fullText().isEmpty()) {
            continue;
        }
        if (!label->isFreeText()) {
            if (label->isCut()) {
                problems.append(QStringLiteral("cut: “%1” (%2×%3) at %4")
                                    .arg(label->fullText())
                                    .arg(label->width())
                                    .arg(label->height())
                                    .arg(pathOf(label)));
            }
        } else if (label->isCut() &&
                   (label->toolTip() != LongText::bounded(label->fullText(), LongText::kReadLimit) ||
                    label->accessibleName() != LongText::bounded(label->fullText(), LongText::kReadLimit))) {
            problems.append(
                QStringLiteral("free text cut without its whole text: “%1”").arg(label->fullText()));
        }
    }
    for (const QAbstractButton* button : top->findChildren<QAbstractButton*>()) {
        if (button->isVisibleTo(top) && !button->text().isEmpty() &&
            button->width() < button->minimumSizeHint().width()) {
            problems.append(QStringLiteral("button too narrow: “%1” (%2 < %3)")
                                .arg(button->text())
                                .arg(button->width())
                                .arg(button->minimumSizeHint().width()));
        }
    }
    return problems;
}

// The whole list, one per line, for QVERIFY2.
QByteArray report(const QString& where, const QStringList& problems) {
    return (where + QStringLiteral(":\n  ") + problems.join(QStringLiteral("\n  "))).toUtf8();
}
} // namespace

class LargeTextTest final : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        AppResources::load();
        QFont text(AppResources::fontFamily());
        text.setPixelSize(Theme::kBody);
        QApplication::setFont(text);
        AppStyle::apply(Theme::Appearance::light);
        m_now = Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 2), QTime(9, 30)));
        Clock::setFixedNow(m_now);
    }

    // The check itself: a value squeezed into too little room, a cut drawn text and a
    // button narrower than its title are each found; free text cut with its tooltip is not.
    void theCheckFindsWhatIsCut() {
        QWidget top;
        top.resize(400, 200);
        auto* value = new ElidedLabel(QStringLiteral("1,101.96 USD"), &top);
        value->setFixedSize(40, 16);
        auto* name =
            new ElidedLabel(QStringLiteral("The research group's shared evaluation workspace"), &top);
        name->setFreeText(true);
        name->setGeometry(0, 20, 60, 16);
        auto* button = new QPushButton(QStringLiteral("Open dashboard"), &top);
        button->setGeometry(0, 40, 30, 28);
        top.show();
        QVERIFY(QTest::qWaitForWindowExposed(&top));
        QStringList problems = cutTexts(&top);
        QCOMPARE(problems.size(), 2);
        QVERIFY(problems.at(0).startsWith(QStringLiteral("cut: “1,101.96 USD”")));
        QVERIFY(problems.at(1).startsWith(QStringLiteral("button too narrow: “Open dashboard”")));
        QVERIFY(name->isCut());
        value->setFixedSize(value->sizeHint());
        button->resize(button->sizeHint());
        (void)LongText::elided(QFontMetrics(top.font()), QStringLiteral("in 42m"), 5,
                               LongText::Kind::meaningful);
        problems = cutTexts(&top);
        QCOMPARE(problems, QStringList{QStringLiteral("drawn cut: “in 42m”")});
    }

    void screens_data() {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::newRow("minimum width") << MainWindow::kMinimumWidth << MainWindow::kMinimumHeight;
        QTest::newRow("usual width") << 1240 << 820;
    }

    // The overview (cards and matrix, a few accounts and fifty) and every kind of account page.
    void screens() {
        QFETCH(int, width);
        QFETCH(int, height);
        Scenario scenario;
        AccountStore& store = *scenario.store;
        const SampleWorkspace sample = addSampleWorkspace(store, m_now);
        ProviderAccount* key = addOfficialKeyAccount(store, 4, m_now);
        ProviderAccount* manual = refreshedAccount(store, QStringLiteral("Claude Max"), AIProvider::anthropic,
                                                   ConnectionMode::manual, UsageSource::manual, 5, m_now);
        // A label far longer than any line: it may be cut, never anything beside it.
        ProviderAccount* longLabel = refreshedAccount(
            store, QStringLiteral("Gemini for the research group's shared evaluation workspace"),
            AIProvider::gemini, ConnectionMode::mock, UsageSource::mock, 6, m_now);
        MainWindow window(scenario.content.get());
        window.resize(width, height);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QCOMPARE(window.width(), width);

        QStringList problems = cutTexts(&window);
        QVERIFY2(problems.isEmpty(), report(QStringLiteral("overview, cards"), problems).constData());
        window.overview()->setViewMode(MonitoringViewMode::matrix);
        problems = cutTexts(&window);
        QVERIFY2(problems.isEmpty(), report(QStringLiteral("overview, matrix"), problems).constData());
        window.overview()->setViewMode(MonitoringViewMode::cards);
        for (ProviderAccount* account : {sample.openAI, sample.grok, key, manual, longLabel}) {
            scenario.content->setSelection(SidebarSelection::account(account->id()));
            problems = cutTexts(&window);
            QVERIFY2(problems.isEmpty(), report(account->displayName(), problems).constData());
        }
        scenario.content->setSelection(SidebarSelection::provider(AIProvider::anthropic));
        problems = cutTexts(&window);
        QVERIFY2(problems.isEmpty(), report(QStringLiteral("Claude's accounts"), problems).constData());
    }

    void fiftyAccounts() {
        Scenario scenario;
        addFiftyAccounts(*scenario.store, m_now);
        MainWindow window(scenario.content.get());
        window.resize(MainWindow::kMinimumWidth, MainWindow::kMinimumHeight);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QStringList problems = cutTexts(&window);
        QVERIFY2(problems.isEmpty(), report(QStringLiteral("fifty, cards"), problems).constData());
        window.overview()->setViewMode(MonitoringViewMode::matrix);
        problems = cutTexts(&window);
        QVERIFY2(problems.isEmpty(), report(QStringLiteral("fifty, matrix"), problems).constData());
    }

    // The editor at the smallest it goes, for each kind of account.
    void editor() {
        Scenario scenario;
        ProviderAccount* manual =
            refreshedAccount(*scenario.store, QStringLiteral("Claude Max"), AIProvider::anthropic,
                             ConnectionMode::manual, UsageSource::manual, 1, m_now);
        ProviderAccount* key =
            refreshedAccount(*scenario.store, QStringLiteral("Production org"), AIProvider::openAI,
                             ConnectionMode::apiKey, UsageSource::officialAPI, 2, m_now);
        MainWindow window(scenario.content.get());
        window.resize(MainWindow::kMinimumWidth, MainWindow::kMinimumHeight);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        for (const EditorState& state :
             {EditorState::newAccount(), EditorState::edit(manual->id()), EditorState::edit(key->id())}) {
            scenario.content->setEditorState(state);
            QTRY_VERIFY(window.editor());
            AccountEditorView* sheet = window.editor();
            sheet->resize(sheet->minimumSize());
            const QStringList problems = cutTexts(sheet);
            QVERIFY2(problems.isEmpty(),
                     report(QStringLiteral("editor ") + state.id(), problems).constData());
            sheet->reject();
            QTRY_VERIFY(!window.editor());
        }
    }

    // Each page of the guided first run, at the sheet's smallest.
    void onboarding() {
        Scenario scenario(false);
        MainWindow window(scenario.content.get());
        window.resize(MainWindow::kMinimumWidth, MainWindow::kMinimumHeight);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTRY_VERIFY(window.onboarding());
        OnboardingView* sheet = window.onboarding();
        sheet->resize(sheet->minimumSize());
        OnboardingFlow* flow = sheet->flow();
        const auto check = [&](const QString& page) {
            const QStringList problems = cutTexts(sheet);
            QVERIFY2(problems.isEmpty(), report(page, problems).constData());
        };
        check(QStringLiteral("welcome"));
        flow->begin();
        check(QStringLiteral("provider"));
        flow->selectProvider(AIProvider::anthropic);
        flow->next();
        flow->setLabel(QStringLiteral("Claude · Work"));
        check(QStringLiteral("name"));
        flow->next();
        check(QStringLiteral("connection"));
        flow->selectConnectionMode(ConnectionMode::manual);
        flow->setShortUsed(QStringLiteral("48"));
        flow->setShortLimit(QStringLiteral("45"));
        flow->setWeeklyUsed(QStringLiteral("120"));
        flow->setWeeklyLimit(QStringLiteral("900"));
        check(QStringLiteral("manual limits"));
        flow->selectProvider(AIProvider::openAI);
        flow->selectConnectionMode(ConnectionMode::apiKey);
        check(QStringLiteral("key"));
        flow->selectConnectionMode(ConnectionMode::mock);
        flow->next();
        check(QStringLiteral("ready"));
    }

    void settings() {
        Scenario scenario;
        MainWindow window(scenario.content.get());
        SettingsView* settings = window.settingsWindow();
        settings->resize(SettingsContent::kWidth, SettingsContent::kHeight);
        settings->show();
        QVERIFY(QTest::qWaitForWindowExposed(settings));
        const QStringList problems = cutTexts(settings);
        QVERIFY2(problems.isEmpty(), report(QStringLiteral("settings"), problems).constData());
    }

private:
    Timestamp m_now;
};

QTEST_MAIN(LargeTextTest)
#include "tst_largetext.moc"
