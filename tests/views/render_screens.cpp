// Renders the application's screens offscreen into PNG files, for people to look at.
// Usage: render_screens <output folder>
#include "FileProtection.h"
#include "ScreenScenario.h"
#include "app/MainWindow.h"
#include "core/ContentView.h"
#include "core/Preferences.h"
#include "editor/AccountEditorForm.h"
#include "editor/widgets/AccountEditorView.h"
#include "model/Clock.h"
#include "onboarding/OnboardingFlow.h"
#include "onboarding/widgets/OnboardingView.h"
#include "providers/MockDataFactory.h"
#include "ui/AppResources.h"
#include "ui/AppStyle.h"
#include "ui/BadgeWidget.h"
#include "ui/MetricCardWidget.h"
#include "ui/StatusCardWidget.h"
#include "ui/SubscriptionCardWidget.h"
#include "ui/SubscriptionMatrixWidget.h"
#include "ui/Theme.h"
#include "ui/TrendChartWidget.h"
#include "views/Badge.h"
#include "views/MatrixRowContent.h"
#include "views/MetricCardContent.h"
#include "views/SettingsContent.h"
#include "views/SubscriptionCardContent.h"
#include "views/TrendChartContent.h"
#include "views/widgets/OverviewScreen.h"
#include "views/widgets/SettingsView.h"
#include "views/widgets/SidebarView.h"

#include <QScrollArea>

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QMessageBox>
#include <QScrollBar>
#include <QTemporaryDir>

#include <cmath>
#include <cstdio>
#include <memory>

namespace {

UsageWindow sampleWindow(const QString& title, std::optional<double> used, std::optional<double> limit,
                         UsageUnit unit, std::optional<double> resetIn, const QString& note, Timestamp now) {
    return UsageWindow{.id = title,
                       .title = title,
                       .unit = unit,
                       .used = used,
                       .limit = limit,
                       .resetAt =
                           resetIn ? std::optional<Timestamp>(now.addingSeconds(*resetIn)) : std::nullopt,
                       .note = note.isEmpty() ? std::nullopt : std::optional<QString>(note)};
}

// A page in the window colour of an appearance, with a padded column.
QWidget* galleryPage(Theme::Appearance look) {
    auto* page = new QWidget;
    page->setPalette(Theme::palette(look));
    page->setAutoFillBackground(true);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(Theme::kSpaceXL, Theme::kSpaceXL, Theme::kSpaceXL, Theme::kSpaceXL);
    layout->setSpacing(Theme::kSpaceL);
    return page;
}

// Every block in its main states, on one page.
QWidget* blockGallery(Theme::Appearance look) {
    const Timestamp now = Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 2), QTime(9, 30)));
    auto* page = galleryPage(look);
    auto* layout = static_cast<QVBoxLayout*>(page->layout());

    auto* badges = new QHBoxLayout;
    badges->setSpacing(Theme::kSpaceS);
    for (const SyncStatus status : SyncStatus::allCases()) {
        badges->addWidget(new BadgeWidget(Badge::status(status)));
    }
    badges->addStretch(1);
    layout->addLayout(badges);
    auto* pulses = new QHBoxLayout;
    pulses->setSpacing(Theme::kSpaceS);
    for (const UsageHealth health : UsageHealth::allCases()) {
        pulses->addWidget(new BadgeWidget(Badge::pulse(health)));
    }
    for (const UsageSource source : UsageSource::allCases()) {
        pulses->addWidget(new BadgeWidget(Badge::source(source)));
    }
    for (const UsageHealth health : UsageHealth::allCases()) {
        pulses->addWidget(new BadgeWidget(Badge::dot(health)));
    }
    pulses->addStretch(1);
    layout->addLayout(pulses);

    const QList<UsageWindow> windows{
        sampleWindow(QStringLiteral("Messages / 5 hours"), 18, 50, UsageUnit::messages, 10800,
                     QStringLiteral("Consumer limit; sample only"), now),
        sampleWindow(QStringLiteral("Requests / minute"), 42, 60, UsageUnit::requests, 2520,
                     QStringLiteral("Rate-limit header when available"), now),
        sampleWindow(QStringLiteral("Tokens / minute"), 162000, 150000, UsageUnit::tokens, 40, QString(),
                     now),
        sampleWindow(QStringLiteral("API spend / 30 days"), 84.32, std::nullopt, UsageUnit::dollars,
                     std::nullopt, QStringLiteral("No spend ceiling reported"), now),
        sampleWindow(QStringLiteral("Credits / billing period"), std::nullopt, std::nullopt,
                     UsageUnit::credits, std::nullopt, QString(), now),
        sampleWindow(
            QString(300, u'W'), 3, 10, UsageUnit::items, 90000,
            QStringLiteral("A label of three hundred characters is cut, never widens the card, and a "
                           "long note wraps to two lines at the most before it is cut as well."),
            now)};
    auto* grid = new QGridLayout;
    grid->setSpacing(Theme::kSpaceL);
    for (qsizetype i = 0; i < windows.size(); ++i) {
        auto* card = new MetricCardWidget(MetricCardContent::make(windows[i], now));
        card->setMinimumWidth(280);
        grid->addWidget(card, static_cast<int>(i / 3), static_cast<int>(i % 3));
    }
    layout->addLayout(grid);

    QList<UsagePoint> history;
    for (int day = 0; day < 14; ++day) {
        history.append(UsagePoint{.date = now.addingSeconds((day - 13) * 86400.0),
                                  .value = 40 + 25 * std::sin(day / 2.0) + day * 3,
                                  .unit = UsageUnit::requests});
    }
    auto* charts = new QHBoxLayout;
    charts->setSpacing(Theme::kSpaceL);
    charts->addWidget(new TrendChartWidget(TrendChartContent::trend(history)), 2);
    charts->addWidget(new TrendChartWidget(TrendChartContent::trend({})), 1);
    auto* sparks = new QVBoxLayout;
    sparks->addWidget(new TrendChartWidget(TrendChartContent::sparkline(history)));
    sparks->addWidget(new TrendChartWidget(TrendChartContent::sparkline({})));
    charts->addLayout(sparks);
    layout->addLayout(charts);

    auto* cards = new QHBoxLayout;
    cards->setSpacing(Theme::kSpaceL);
    cards->addWidget(
        new StatusCardWidget(StatusCardsContent::emptyState(
                                 QStringLiteral("No accounts yet"),
                                 QStringLiteral("Add a subscription to start tracking its allowance."),
                                 QStringLiteral("Add Account"), true),
                             [] {}),
        2);
    cards->addWidget(new StatusCardWidget(StatusCardsContent::unavailable(
                         QStringLiteral("Not available from provider"),
                         QStringLiteral("This horizon is not exposed for this subscription."))),
                     1);
    cards->addWidget(new StatusCardWidget(StatusCardsContent::metricCell(windows[1], now)), 1);
    layout->addLayout(cards);
    return page;
}

// Sample subscriptions in their main states: healthy, watch, urgent, billing-only, no
// snapshot, four windows in one horizon and a 300-character label.
QList<ProviderAccount*> sampleAccounts(QObject* owner, Timestamp now) {
    QList<ProviderAccount*> accounts;
    const auto make = [&](const QString& label, AIProvider provider, const char* id) {
        auto* account =
            new ProviderAccount(ProviderAccount::Init{.id = QUuid::fromString(QLatin1StringView(id)),
                                                      .provider = provider,
                                                      .label = label,
                                                      .accountKind = AccountKind::consumer,
                                                      .connectionMode = ConnectionMode::mock},
                                owner);
        account->setSnapshot(MockDataFactory::snapshot(*account, now));
        account->setLastRefreshAt(now.addingSeconds(-1800));
        account->setSyncStatus(SyncStatus::current);
        accounts.append(account);
        return account;
    };
    make(QStringLiteral("OpenAI · Work API"), AIProvider::openAI, "1a2b3c4d-0000-4000-8000-000000000001")
        ->setModelScope(QStringLiteral("gpt-4o, o3-mini"));
    ProviderAccount* claude = make(QStringLiteral("Claude · Personal"), AIProvider::anthropic,
                                   "2b3c4d5e-0000-4000-8000-000000000002");
    claude->setAgentCount(1);
    claude->setAgentBudgets({AgentBudget{.id = QStringLiteral("s"),
                                         .name = QStringLiteral("Scout"),
                                         .unit = UsageUnit::messages,
                                         .shortUsed = 9,
                                         .shortLimit = 10,
                                         .weeklyUsed = 40,
                                         .weeklyLimit = 100}});
    make(QStringLiteral("Grok · Labs"), AIProvider::xAI, "3c4d5e6f-0000-4000-8000-000000000003");
    ProviderAccount* urgent =
        make(QStringLiteral("Gemini Advanced"), AIProvider::gemini, "4d5e6f70-0000-4000-8000-000000000004");
    UsageSnapshot over = *urgent->snapshot();
    over.windows[0].used = 52;
    over.windows[0].reportedRemaining = std::nullopt;
    for (int i = 0; i < 3; ++i) {
        over.windows.append(UsageWindow{.id = QStringLiteral("extra-%1").arg(i),
                                        .title = QStringLiteral("Images / 5 hours %1").arg(i + 1),
                                        .unit = UsageUnit::items,
                                        .horizon = UsageHorizon::shortTerm,
                                        .used = 2.0 + i,
                                        .limit = 10});
    }
    urgent->setSnapshot(over);
    auto* fresh = new ProviderAccount(
        ProviderAccount::Init{
            .id = QUuid::fromString(QLatin1StringView("5e6f7081-0000-4000-8000-000000000005")),
            .provider = AIProvider::openAI,
            .label = QString(300, u'L'),
            .accountKind = AccountKind::api,
            .connectionMode = ConnectionMode::apiKey,
            .syncMessage = QStringLiteral("Key verified — press Refresh for the first usage signal")},
        owner);
    accounts.append(fresh);
    return accounts;
}

QWidget* subscriptionGallery(Theme::Appearance look, bool matrix) {
    const Timestamp now = Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 2), QTime(9, 30)));
    Clock::setFixedNow(now); // ages and staleness as of that moment
    auto* page = galleryPage(look);
    auto* layout = static_cast<QVBoxLayout*>(page->layout());
    const QList<ProviderAccount*> accounts = sampleAccounts(page, now);
    if (matrix) {
        QList<MatrixRowContent> rows;
        for (const ProviderAccount* account : accounts) {
            rows.append(MatrixRowContent::make(*account, now));
        }
        layout->addWidget(new SubscriptionMatrixWidget(rows));
    } else {
        auto* grid = new QGridLayout;
        grid->setSpacing(Theme::kSpaceL);
        for (qsizetype i = 0; i < accounts.size(); ++i) {
            grid->addWidget(new SubscriptionCardWidget(SubscriptionCardContent::make(*accounts[i], now),
                                                       accounts[i]->snapshot()
                                                           ? accounts[i]->snapshot()->history
                                                           : QList<UsagePoint>()),
                            static_cast<int>(i / 2), static_cast<int>(i % 2), Qt::AlignTop);
        }
        layout->addLayout(grid);
    }
    layout->addStretch(1);
    return page;
}

// Lays a gallery out at `size` and writes it at the given scale.
bool saveGallery(std::unique_ptr<QWidget> gallery, QSize size, qreal scale, const QString& path) {
    gallery->resize(size);
    gallery->show();
    QApplication::processEvents();
    QPixmap picture(gallery->size() * scale);
    picture.setDevicePixelRatio(scale);
    gallery->render(&picture);
    const bool written = picture.save(path);
    std::printf("%s %s\n", written ? "wrote" : "could not write", qPrintable(path));
    return written;
}

bool save(QWidget& widget, const QString& path) {
    widget.show();
    QApplication::processEvents();
    const bool ok = widget.grab().save(path);
    std::printf("%s %s\n", ok ? "wrote" : "could not write", qPrintable(path));
    return ok;
}

bool shoot(MainWindow& window, const QString& path) {
    window.show();
    QApplication::processEvents();
    QApplication::processEvents();
    return save(window, path);
}
} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    AppResources::load();
    QFont text(AppResources::fontFamily());
    text.setPixelSize(Theme::kBody);
    QApplication::setFont(text);
    // render_screens [DIR] [--minimum-width] [--high-contrast]: the window at its usual size
    // or at its minimum width, in the standard or the high-contrast palettes. The scale
    // comes from QT_SCALE_FACTOR.
    const QStringList arguments = QCoreApplication::arguments();
    const QString output = arguments.size() > 1 && !arguments.at(1).startsWith(u'-')
                               ? arguments.at(1)
                               : QStringLiteral("screenshots");
    const bool narrow = arguments.contains(QStringLiteral("--minimum-width"));
    const Theme::Contrast contrast = arguments.contains(QStringLiteral("--high-contrast"))
                                         ? Theme::Contrast::high
                                         : Theme::Contrast::standard;
    QDir().mkpath(output);
    const Timestamp now = Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 2), QTime(9, 30)));
    Clock::setFixedNow(now);
    const QSize windowSize =
        narrow ? QSize(MainWindow::kMinimumWidth, MainWindow::kMinimumHeight) : QSize(1240, 820);

    bool ok = true;
    for (const auto& [look, name] :
         {std::pair{Theme::Appearance::light, "light"}, std::pair{Theme::Appearance::dark, "dark"}}) {
        AppStyle::apply(look, contrast);
        const QLatin1StringView appearance(name);
        const auto file = [&](const char* screen) {
            return QDir(output).filePath(
                QStringLiteral("%1-%2.png").arg(QLatin1StringView(screen), appearance));
        };
        {
            // First launch: the guided flow over the window, page by page.
            Scenario scenario(false);
            MainWindow window(scenario.content.get());
            window.resize(windowSize);
            window.show();
            QApplication::processEvents();
            if (OnboardingView* sheet = window.onboarding()) {
                sheet->setReduceMotion(true);
                OnboardingFlow* flow = sheet->flow();
                ok &= save(*sheet, file("onboarding-welcome"));
                flow->begin();
                ok &= save(*sheet, file("onboarding-provider"));
                flow->selectProvider(AIProvider::anthropic);
                flow->next();
                flow->setLabel(QStringLiteral("Claude · Work"));
                ok &= save(*sheet, file("onboarding-name"));
                flow->next();
                ok &= save(*sheet, file("onboarding-connection"));
                flow->selectConnectionMode(ConnectionMode::manual);
                flow->setShortUsed(QStringLiteral("48"));
                flow->setShortLimit(QStringLiteral("45"));
                flow->setWeeklyUsed(QStringLiteral("120"));
                flow->setWeeklyLimit(QStringLiteral("900"));
                flow->setWeeklyResetMode(OnboardingResetMode::setTime);
                flow->setWeeklyResetDate(now.addingSeconds(3 * 86400));
                ok &= save(*sheet, file("onboarding-manual"));
                flow->selectProvider(AIProvider::openAI);
                flow->setLabel(QStringLiteral("OpenAI · Team API"));
                flow->selectConnectionMode(ConnectionMode::apiKey);
                flow->setAPIKey(QStringLiteral("sk-admin-0123456789"));
                ok &= save(*sheet, file("onboarding-key"));
                flow->selectConnectionMode(ConnectionMode::mock);
                flow->next();
                ok &= save(*sheet, file("onboarding-ready"));
                flow->openDashboard();
                QApplication::processEvents();
            }
        }
        {
            // An empty store after onboarding: the overview's empty state.
            Scenario scenario;
            MainWindow window(scenario.content.get());
            window.resize(windowSize);
            ok &= shoot(window, file("overview-empty"));
        }
        {
            // The sample workspace, refreshed, as cards and as a matrix; then one account.
            Scenario scenario;
            AccountStore& store = *scenario.store;
            addSampleWorkspace(store, now);
            MainWindow window(scenario.content.get());
            window.resize(windowSize);
            ok &= shoot(window, file("overview-cards"));
            window.overview()->setViewMode(MonitoringViewMode::matrix);
            ok &= shoot(window, file("overview-matrix"));
            window.overview()->setViewMode(MonitoringViewMode::cards);
            scenario.content->setSelection(SidebarSelection::account(store.accounts().at(0)->id()));
            ok &= shoot(window, file("detail-mock"));
            scenario.content->setSelection(SidebarSelection::overview());
            window.sidebar()->searchField()->setText(QStringLiteral("claude"));
            ok &= shoot(window, file("sidebar-search"));
            // The confirmation a delete asks for.
            scenario.content->requestDelete(store.accounts().at(0)->id());
            QApplication::processEvents();
            if (QMessageBox* dialog = window.deleteDialog()) {
                ok &= save(*dialog, file("delete-dialog"));
                dialog->reject();
            }
            // A delete the local database refused: the notice above the overview.
            (void)store.save();
            const QString path = store.path();
            if (makeStoreReadOnly(path, true)) {
                scenario.content->requestDelete(store.accounts().at(0)->id());
                QApplication::processEvents();
                if (QMessageBox* dialog = window.deleteDialog()) {
                    dialog->reject();
                }
                scenario.content->deleteSelectedAccount();
                makeStoreReadOnly(path, false);
                ok &= shoot(window, file("overview-notice"));
                scenario.content->dismissNotice();
            }
        }
        {
            // One account for each other connection mode.
            Scenario scenario;
            AccountStore& store = *scenario.store;
            MainWindow window(scenario.content.get());
            window.resize(windowSize);
            window.show(); // the legacy migration runs now, before the reference account exists
            ProviderAccount* key = addOfficialKeyAccount(store, 11, now);
            ProviderAccount* manual =
                refreshedAccount(store, QStringLiteral("Claude Max"), AIProvider::anthropic,
                                 ConnectionMode::manual, UsageSource::manual, 12, now);
            auto* browser =
                new ProviderAccount(ProviderAccount::Init{.provider = AIProvider::gemini,
                                                          .label = QStringLiteral("Gemini Advanced"),
                                                          .accountKind = AccountKind::consumer,
                                                          .connectionMode = ConnectionMode::browser,
                                                          .createdAt = Timestamp(13),
                                                          .sampleDataEnabled = false});
            store.insert(browser);
            const std::pair<ProviderAccount*, const char*> modes[] = {
                {key, "detail-apikey"}, {manual, "detail-manual"}, {browser, "detail-browser"}};
            for (const auto& [account, screen] : modes) {
                scenario.content->setSelection(SidebarSelection::account(account->id()));
                ok &= shoot(window, file(screen));
            }
            scenario.content->setSelection(SidebarSelection::account(QUuid::createUuid()));
            ok &= shoot(window, file("detail-unavailable"));
            window.settingsWindow()->resize(SettingsContent::kWidth, SettingsContent::kHeight);
            ok &= save(*window.settingsWindow(), file("settings"));
            window.settingsWindow()->close();

            // The account editor: a new account, an OpenAI key after a successful test, and
            // a manual account; each also as its whole page, to read every section.
            const auto sheet = [&](const char* screen) {
                AccountEditorView* editor = window.editor();
                if (!editor) {
                    return false;
                }
                bool written = save(*editor, file(screen));
                QWidget* page = editor->findChild<QWidget*>(QStringLiteral("editorPage"));
                page->resize(page->width(), page->hasHeightForWidth() ? page->heightForWidth(page->width())
                                                                      : page->sizeHint().height());
                QApplication::processEvents();
                const QByteArray whole = QByteArray(screen) + QByteArrayLiteral("-page");
                written &= page->grab().save(file(whole.constData()));
                editor->reject();
                QApplication::processEvents();
                return written;
            };
            scenario.content->setEditorState(EditorState::newAccount());
            ok &= sheet("editor-new");
            scenario.content->setEditorState(EditorState::newAccount());
            if (AccountEditorView* editor = window.editor()) {
                editor->findChild<QLineEdit*>(QStringLiteral("accountLabel"))
                    ->setText(QStringLiteral("Research org"));
                editor->form()->edit().label = QStringLiteral("Research org");
                editor->form()->chooseOfficialAPIKey();
                editor->keyField()->setText(QStringLiteral("sk-admin-0123456789"));
                editor->form()->edit().secretInput = editor->keyField()->text();
                editor->form()->edit().detectedMetadata = ProviderConnectionMetadata{
                    .displayName = QStringLiteral("Research"),
                    .windows = {UsageWindow{.id = QStringLiteral("rpm"),
                                            .title = QStringLiteral("Requests / minute"),
                                            .unit = UsageUnit::requests,
                                            .horizon = UsageHorizon::shortTerm,
                                            .limit = 500},
                                UsageWindow{.id = QStringLiteral("tpm"),
                                            .title = QStringLiteral("Tokens / minute"),
                                            .unit = UsageUnit::tokens,
                                            .horizon = UsageHorizon::shortTerm,
                                            .limit = 30000}}};
                editor->form()->edit().testMessage =
                    QStringLiteral("Connected — provider metadata and rate limits detected.");
                Q_EMIT editor->form()->changed();
            }
            ok &= sheet("editor-apikey");
            scenario.content->setEditorState(EditorState::edit(manual->id()));
            ok &= sheet("editor-manual");
        }
        {
            // Fifty accounts across the providers.
            Scenario scenario;
            addFiftyAccounts(*scenario.store, now);
            MainWindow window(scenario.content.get());
            window.resize(windowSize);
            ok &= shoot(window, file("overview-50"));
            window.overview()->setViewMode(MonitoringViewMode::matrix);
            window.show();
            QApplication::processEvents();
            // Scrolled down to the matrix itself.
            if (auto* section = window.overview()->findChild<QWidget*>(QStringLiteral("monitoringSection"))) {
                window.overview()->verticalScrollBar()->setValue(
                    section->mapTo(window.overview()->widget(), QPoint()).y() - 24);
            }
            ok &= shoot(window, file("overview-50-matrix"));
        }
        for (const qreal scale : {1.0, 2.0}) {
            ok &= saveGallery(
                std::unique_ptr<QWidget>(blockGallery(look)), QSize(1060, 1000), scale,
                QDir(output).filePath(QStringLiteral("blocks-%1@%2x.png").arg(appearance).arg(scale)));
        }
        ok &= saveGallery(std::unique_ptr<QWidget>(subscriptionGallery(look, false)), QSize(1180, 1320), 1.0,
                          QDir(output).filePath(QStringLiteral("cards-%1.png").arg(appearance)));
        ok &= saveGallery(std::unique_ptr<QWidget>(subscriptionGallery(look, true)), QSize(1180, 720), 1.0,
                          QDir(output).filePath(QStringLiteral("matrix-%1.png").arg(appearance)));
    }
    return ok ? 0 : 1;
}
