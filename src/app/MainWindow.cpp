#include "app/MainWindow.h"

#include "app/TrackerCommands.h"
#include "core/ContentView.h"
#include "core/HistoryExport.h"
#include "editor/AccountEditorForm.h"
#include "editor/widgets/AccountEditorView.h"
#include "model/PlatformWording.h"
#include "model/UuidText.h"
#include "onboarding/widgets/OnboardingView.h"
#include "ui/BlockParts.h"
#include "ui/StatusCardWidget.h"
#include "ui/SymbolIcon.h"
#include "ui/Theme.h"
#include "views/SidebarModel.h"
#include "views/widgets/AccountDetailScreen.h"
#include "views/widgets/OverviewScreen.h"
#include "views/widgets/SettingsView.h"
#include "views/widgets/SidebarView.h"

#include <QAction>
#include <QCloseEvent>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QSettings>
#include <QShowEvent>
#include <QSplitter>
#include <QStackedWidget>
#include <QStyle>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
// The shortest time between two redraws of changed accounts, in milliseconds.
constexpr qint64 kFlushInterval = 50;
// How long a shown window may go without drawing before what waits for its first frame
// comes anyway, in milliseconds.
constexpr int kFirstFrameWait = 500;
const QString kGeometryKey = QStringLiteral("mainWindow/geometry");
const QString kSplitterKey = QStringLiteral("mainWindow/splitter");
} // namespace

MainWindow::MainWindow(ContentView* content, QWidget* parent)
    : QMainWindow(parent)
    , m_content(content) {
    setObjectName(QStringLiteral("mainWindow"));
    setWindowTitle(QStringLiteral("Tallyfen"));
    setMinimumSize(kMinimumWidth, kMinimumHeight);
    resize(1240, 820);

    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setObjectName(QStringLiteral("mainSplitter"));
    m_splitter->setChildrenCollapsible(false);
    m_splitter->setHandleWidth(1);

    m_sidebar = new SidebarView(m_content, m_splitter);
    m_sidebar->setMinimumWidth(kSidebarMinimumWidth);
    connect(m_sidebar, &SidebarView::addRequested, this,
            [this] { m_content->setEditorState(EditorState::newAccount()); });
    connect(m_sidebar, &SidebarView::editRequested, this,
            [this](const QUuid& id) { m_content->setEditorState(EditorState::edit(id)); });
    connect(m_sidebar, &SidebarView::deleteRequested, m_content, &ContentView::requestDelete);

    auto* detailColumn = new QWidget(m_splitter);
    detailColumn->setObjectName(QStringLiteral("detailColumn"));
    auto* detailLayout = new QVBoxLayout(detailColumn);
    detailLayout->setContentsMargins(0, 0, 0, 0);
    detailLayout->setSpacing(0);
    m_noticeSlot = new QWidget(detailColumn);
    m_noticeSlot->setObjectName(QStringLiteral("noticeSlot"));
    auto* noticeLayout = new QVBoxLayout(m_noticeSlot);
    // Lined up with the page below it, whose scroll bar stands beside it.
    noticeLayout->setContentsMargins(
        Theme::kSpaceXXL, Theme::kSpaceXL,
        Theme::kSpaceXXL + m_noticeSlot->style()->pixelMetric(QStyle::PM_ScrollBarExtent), 0);
    m_noticeSlot->hide();
    detailLayout->addWidget(m_noticeSlot);
    m_detailStack = new QStackedWidget(detailColumn);
    detailLayout->addWidget(m_detailStack, 1);
    m_detailStack->setObjectName(QStringLiteral("detailStack"));
    m_overview = new OverviewScreen(m_detailStack);
    connect(m_overview, &OverviewScreen::addRequested, this,
            [this] { m_content->setEditorState(EditorState::newAccount()); });
    connect(m_overview, &OverviewScreen::selected, this,
            [this](const QUuid& id) { m_content->setSelection(SidebarSelection::account(id)); });
    connect(m_overview, &OverviewScreen::clearSampleDataRequested, m_content,
            &ContentView::requestSampleClear);
    m_detailStack->addWidget(m_overview);

    // The account screen and the "unavailable" page are built when first routed to: most
    // launches show the overview and nothing else.

    m_splitter->addWidget(m_sidebar);
    m_splitter->addWidget(detailColumn);
    m_splitter->setStretchFactor(0, 0);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setSizes({kSidebarIdealWidth, width() - kSidebarIdealWidth});
    setCentralWidget(m_splitter);

    m_commands = new TrackerCommands(menuBar(), this);
    buildToolbar();
    connect(m_commands, &TrackerCommands::settingsRequested, this, &MainWindow::showSettings);
    connect(m_commands, &TrackerCommands::exportRequested, this, &MainWindow::exportHistory);

    connect(m_content, &ContentView::accountListChanged, this, &MainWindow::route);
    connect(m_content, &ContentView::selectionChanged, this, &MainWindow::route);
    connect(m_content, &ContentView::accountChanged, this,
            [this](ProviderAccount* account, ProviderAccount::Fields) { accountChanged(account); });
    connect(m_content, &ContentView::refreshingChanged, this, [this](const QUuid& id) {
        if (m_screen == DetailRoute::Screen::account && m_shownIDs.contains(id)) {
            m_detail->setRefreshing(m_content->refreshingIDs().contains(id));
        }
    });
    connect(m_content, &ContentView::heartbeatTicked, this, &MainWindow::timePassed);
    connect(m_content, &ContentView::editorStateChanged, this, &MainWindow::presentEditor);
    connect(m_content, &ContentView::presentationChanged, this, [this] {
        presentOnboarding();
        presentDialogs();
    });

    connect(m_content, &ContentView::noticeChanged, this, &MainWindow::showNotice);

    restoreWindowState();
    route();
    showNotice();
}

void MainWindow::showNotice() {
    delete m_notice;
    m_notice = nullptr;
    const std::optional<QString>& notice = m_content->notice();
    m_noticeSlot->setVisible(notice.has_value());
    if (!notice) {
        return;
    }
    QPushButton* dismiss = nullptr;
    m_notice =
        BlockParts::actionCallout(QStringLiteral("exclamationmark.triangle.fill"), ContentView::noticeTitle(),
                                  PlatformWording::apply(*notice), Tone::caution, QStringLiteral("Dismiss"),
                                  Theme::ButtonRole::standard, dismiss, m_noticeSlot);
    m_notice->setObjectName(QStringLiteral("windowNotice"));
    m_noticeSlot->layout()->addWidget(m_notice);
    connect(dismiss, &QPushButton::clicked, m_content, &ContentView::dismissNotice);
}

MainWindow::~MainWindow() = default;

AccountDetailScreen* MainWindow::detailScreen() {
    if (m_detail) {
        return m_detail;
    }
    m_detail = new AccountDetailScreen(m_detailStack);
    connect(m_detail, &AccountDetailScreen::refreshRequested, this, [this] {
        if (ProviderAccount* account = m_detail->account()) {
            m_content->refresh(account);
        }
    });
    connect(m_detail, &AccountDetailScreen::editRequested, this, [this] {
        if (ProviderAccount* account = m_detail->account()) {
            m_content->setEditorState(EditorState::edit(account->id()));
        }
    });
    connect(m_detail, &AccountDetailScreen::signOutConfirmed, this, [this] {
        if (ProviderAccount* account = m_detail->account()) {
            m_content->logout(account);
        }
    });
    m_detailStack->addWidget(m_detail);
    connect(m_detail, &AccountDetailScreen::refreshingShown, this,
            [this](const AccountDetailView::Toolbar& toolbar) {
                m_refreshAction->setText(toolbar.refreshTitle);
                m_refreshAction->setEnabled(toolbar.refreshEnabled);
                if (QWidget* button = m_toolbar->widgetForAction(m_refreshAction)) {
                    button->setAccessibleName(toolbar.refreshTitle);
                }
            });
    return m_detail;
}

QWidget* MainWindow::unavailablePage() {
    if (m_unavailable) {
        return m_unavailable->parentWidget();
    }
    auto* unavailablePage = new QWidget(m_detailStack);
    auto* unavailableLayout = new QVBoxLayout(unavailablePage);
    unavailableLayout->setContentsMargins(Theme::kSpaceXXL, Theme::kSpaceXXL, Theme::kSpaceXXL,
                                          Theme::kSpaceXXL);
    m_unavailable = new StatusCardWidget(
        DetailRoute::unavailableState(), [this] { m_content->setSelection(SidebarSelection::overview()); },
        unavailablePage);
    m_unavailable->setObjectName(QStringLiteral("accountUnavailable"));
    m_unavailable->actionButton()->setObjectName(QStringLiteral("backToOverviewButton"));
    unavailableLayout->addWidget(m_unavailable);
    unavailableLayout->addStretch(1);
    m_detailStack->addWidget(unavailablePage);
    return unavailablePage;
}

void MainWindow::buildToolbar() {
    m_toolbar = new QToolBar(QStringLiteral("Toolbar"), this);
    m_toolbar->setObjectName(QStringLiteral("mainToolbar"));
    m_toolbar->setMovable(false);
    m_toolbar->setFloatable(false);
    m_toolbar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_toolbar->setIconSize(QSize(16, 16));
    m_toolbar->toggleViewAction()->setEnabled(false);
    addToolBar(Qt::TopToolBarArea, m_toolbar);
    auto* spacer = new QWidget(m_toolbar);
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    m_toolbar->addWidget(spacer);

    // An icon is drawn when its item first shows (most launches show the overview and
    // nothing else), in the colours of the appearance of the moment.
    const auto item = [&](const QString& title, const QString& symbol, const QString& name, Tone tone) {
        auto* action = new QAction(title, this);
        action->setObjectName(name);
        action->setIcon(SymbolIcon::icon(symbol, 16, [tone] {
            const Theme::Appearance look = Theme::current();
            return tone == Tone::critical ? Theme::colors(tone, look).foreground : Theme::primaryText(look);
        }));
        m_toolbar->addAction(action);
        if (auto* button = qobject_cast<QToolButton*>(m_toolbar->widgetForAction(action))) {
            button->setAccessibleName(title);
            // Reachable with Tab like every other control (a toolbar's buttons are not, by default).
            button->setFocusPolicy(Qt::TabFocus);
            button->setObjectName(name + QStringLiteral("Button"));
            if (tone == Tone::critical) {
                button->setProperty("role", QStringLiteral("destructive"));
            }
        }
        return action;
    };
    const DetailRoute::ToolbarItem add = DetailRoute::addAccountItem();
    m_addAction = item(add.title, add.symbol, QStringLiteral("addAccount"), Tone::accent);
    // The toolbar's commands go the menu's way: each triggers the menu's action, which
    // posts the command's notification. Only the titles differ.
    connect(m_addAction, &QAction::triggered, m_commands->addAccountAction(), &QAction::trigger);
    const AccountDetailView::Toolbar commands = AccountDetailView::toolbar(false);
    m_refreshAction =
        item(commands.refreshTitle, commands.refreshIcon, QStringLiteral("refreshAccount"), Tone::accent);
    connect(m_refreshAction, &QAction::triggered, m_commands->refreshAction(), &QAction::trigger);
    m_editAction =
        item(commands.editTitle, QStringLiteral("pencil"), QStringLiteral("editAccount"), Tone::accent);
    connect(m_editAction, &QAction::triggered, this, [this] {
        if (ProviderAccount* account = m_detail ? m_detail->account() : nullptr) {
            m_content->setEditorState(EditorState::edit(account->id()));
        }
    });
    const DetailRoute::ToolbarItem remove = DetailRoute::deleteAccountItem();
    m_deleteAction = item(remove.title, remove.symbol, QStringLiteral("deleteAccount"), Tone::critical);
    connect(m_deleteAction, &QAction::triggered, m_commands->deleteAction(), &QAction::trigger);
}

void MainWindow::showToolbarFor(DetailRoute::Screen screen) {
    m_addAction->setVisible(screen == DetailRoute::Screen::overview);
    m_refreshAction->setVisible(screen == DetailRoute::Screen::account);
    m_editAction->setVisible(screen == DetailRoute::Screen::account);
    m_deleteAction->setVisible(screen == DetailRoute::Screen::account);
}

QWidget* MainWindow::currentScreen() const {
    return m_detailStack->currentWidget();
}

void MainWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!m_appeared) {
        m_appeared = true;
        m_content->onAppear();
        Q_EMIT firstShown();
        QTimer::singleShot(kFirstFrameWait, this, &MainWindow::announceFirstFrame);
    }
}

void MainWindow::paintEvent(QPaintEvent* event) {
    QMainWindow::paintEvent(event);
    if (!m_painted) {
        // The window's children are drawn after it in the same pass: when the event loop
        // next turns, the frame is on the screen.
        QMetaObject::invokeMethod(this, &MainWindow::announceFirstFrame, Qt::QueuedConnection);
    }
}

void MainWindow::announceFirstFrame() {
    if (!m_painted) {
        m_painted = true;
        Q_EMIT firstPainted();
    }
}

void MainWindow::closeEvent(QCloseEvent* event) {
    saveWindowState();
    QMainWindow::closeEvent(event);
}

void MainWindow::restoreWindowState() {
    QSettings& settings = m_content->preferences()->settings();
    if (const QByteArray geometry = settings.value(kGeometryKey).toByteArray(); !geometry.isEmpty()) {
        restoreGeometry(geometry);
    }
    if (const QByteArray splitter = settings.value(kSplitterKey).toByteArray(); !splitter.isEmpty()) {
        m_splitter->restoreState(splitter);
    }
}

void MainWindow::saveWindowState() {
    QSettings& settings = m_content->preferences()->settings();
    settings.setValue(kGeometryKey, saveGeometry());
    settings.setValue(kSplitterKey, m_splitter->saveState());
    settings.sync();
}

void MainWindow::route() {
    const DetailRoute route = DetailRoute::forSelection(m_content->selection(), m_content->accounts());
    m_screen = route.screen;
    m_shownIDs.clear();
    for (const ProviderAccount* account : route.accounts) {
        m_shownIDs.insert(account->id());
    }
    m_changed.clear();
    switch (route.screen) {
    case DetailRoute::Screen::overview:
        m_overview->setAccounts(route.title, route.accounts);
        break;
    case DetailRoute::Screen::account: {
        ProviderAccount* account = route.accounts.first();
        detailScreen()->setAccount(account, m_content->refreshingIDs().contains(account->id()));
        break;
    }
    case DetailRoute::Screen::unavailable:
        break;
    }
    showToolbarFor(route.screen);
    presentOnboarding();
}

void MainWindow::accountChanged(ProviderAccount* account) {
    if (!m_shownIDs.contains(account->id())) {
        return;
    }
    m_changed.insert(account->id());
    if (!m_flushScheduled) {
        m_flushScheduled = true;
        // At most one redraw per frame budget: in a burst of refreshes the changes of
        // many accounts are drawn together.
        const qint64 since = m_lastFlush.isValid() ? m_lastFlush.elapsed() : kFlushInterval;
        QTimer::singleShot(static_cast<int>(qMax<qint64>(0, kFlushInterval - since)), this,
                           &MainWindow::flushChangedAccounts);
    }
}

void MainWindow::flushChangedAccounts() {
    m_flushScheduled = false;
    m_lastFlush.start();
    const QSet<QUuid> changed = std::exchange(m_changed, {});
    QList<ProviderAccount*> accounts;
    for (const QUuid& id : changed) {
        ProviderAccount* account = m_content->store()->account(id);
        if (account && m_shownIDs.contains(id)) {
            accounts.append(account);
        }
    }
    if (m_screen == DetailRoute::Screen::overview && !accounts.isEmpty()) {
        m_overview->accountsChanged(accounts);
    } else if (m_screen == DetailRoute::Screen::account && !accounts.isEmpty()) {
        m_detail->redraw();
    }
    Q_EMIT changesDrawn();
}

void MainWindow::timePassed() {
    if (m_screen == DetailRoute::Screen::overview) {
        m_overview->timePassed();
    } else if (m_screen == DetailRoute::Screen::account) {
        m_detail->redraw();
    }
}

void MainWindow::exportHistory() {
    QString filter;
    const QString path = QFileDialog::getSaveFileName(
        this, QStringLiteral("Export History"), QDir::home().filePath(QStringLiteral("Tallyfen history.csv")),
        QStringLiteral("CSV (*.csv);;JSON (*.json)"), &filter);
    if (path.isEmpty()) {
        return;
    }
    // The filter chosen decides when the name has no suffix of its own.
    QString target = path;
    if (QFileInfo(path).suffix().isEmpty()) {
        target +=
            filter.startsWith(QStringLiteral("JSON")) ? QStringLiteral(".json") : QStringLiteral(".csv");
    }
    exportHistoryTo(target);
}

bool MainWindow::exportHistoryTo(const QString& path) {
    const QList<ProviderAccount*> accounts =
        DetailRoute::forSelection(m_content->selection(), m_content->accounts()).accounts;
    const QByteArray bytes = HistoryExport::formatFor(path) == HistoryExport::Format::json
                                 ? HistoryExport::json(accounts)
                                 : HistoryExport::csv(accounts);
    QString reason;
    if (HistoryExport::write(path, bytes, &reason)) {
        return true;
    }
    m_exportFailure =
        new QMessageBox(QMessageBox::Warning, QStringLiteral("Export History"),
                        QStringLiteral("The history could not be exported."), QMessageBox::Ok, this);
    m_exportFailure->setObjectName(QStringLiteral("exportFailure"));
    m_exportFailure->setInformativeText(reason);
    m_exportFailure->setAttribute(Qt::WA_DeleteOnClose);
    m_exportFailure->setWindowModality(Qt::WindowModal);
    m_exportFailure->open();
    return false;
}

void MainWindow::presentEditor() {
    const std::optional<EditorState>& state = m_content->editorState();
    if (!state) {
        if (m_editor) {
            m_editor->reject();
        }
        return;
    }
    if (m_editor) {
        return; // one sheet at a time
    }
    const EditorState opened = *state;
    m_editor = new AccountEditorView(
        &m_content->lifecycle(), opened.account(m_content->accounts()),
        [this, opened] {
            m_content->editorDidSave(opened, m_editor ? m_editor->form()->keyKept() : std::nullopt);
        },
        this);
    AccountEditorView* editor = m_editor;
    connect(editor, &QDialog::finished, this, [this, editor] {
        editor->deleteLater();
        m_editor = nullptr;
        m_content->setEditorState(std::nullopt);
    });
    editor->open();
}

void MainWindow::presentOnboarding() {
    QWidget* screen = m_screen == DetailRoute::Screen::overview  ? static_cast<QWidget*>(m_overview)
                      : m_screen == DetailRoute::Screen::account ? static_cast<QWidget*>(detailScreen())
                                                                 : unavailablePage();
    m_detailStack->setCurrentWidget(screen);
    if (!m_content->showOnboarding()) {
        if (m_onboarding) {
            m_onboarding->done(QDialog::Accepted);
        }
        return;
    }
    // Once a launch: a flow put away for later comes back at the next start.
    if (m_onboarding || m_onboardingClosed) {
        return;
    }
    m_onboarding = new OnboardingView(m_content, m_reduceMotion, this);
    OnboardingView* sheet = m_onboarding;
    connect(sheet, &QDialog::finished, this, [this, sheet] {
        sheet->deleteLater();
        m_onboarding = nullptr;
        m_onboardingClosed = true;
    });
    sheet->open();
}

void MainWindow::setReduceMotion(bool reduce) {
    m_reduceMotion = reduce;
    if (m_onboarding) {
        m_onboarding->setReduceMotion(reduce);
    }
}

void MainWindow::presentDialogs() {
    if (m_content->showDeleteConfirmation() && !m_deleteDialog) {
        QMessageBox* dialog = BlockParts::confirmation(
            this, QStringLiteral("deleteDialog"), QStringLiteral("Delete this account?"),
            PlatformWording::apply(QStringLiteral(
                "Only this account's metadata, snapshot, and Keychain credential will be removed.")),
            QStringLiteral("Delete Account"));
        m_deleteDialog = dialog;
        connect(dialog, &QMessageBox::finished, this, [this, dialog] {
            const bool confirmed = BlockParts::confirmed(dialog);
            m_deleteDialog = nullptr;
            m_content->setShowDeleteConfirmation(false);
            if (confirmed) {
                m_content->deleteSelectedAccount();
            }
        });
        dialog->open();
    }
    if (m_content->showSampleClearConfirmation() && !m_sampleClearDialog) {
        QMessageBox* dialog = BlockParts::confirmation(
            this, QStringLiteral("sampleClearDialog"), QStringLiteral("Remove sample data?"),
            QStringLiteral(
                "This removes only accounts created in sample mode. Your manually configured and official "
                "API accounts stay untouched."),
            QStringLiteral("Clear Sample Data"));
        m_sampleClearDialog = dialog;
        connect(dialog, &QMessageBox::finished, this, [this, dialog] {
            const bool confirmed = BlockParts::confirmed(dialog);
            m_sampleClearDialog = nullptr;
            m_content->setShowSampleClearConfirmation(false);
            if (confirmed) {
                m_content->clearSampleData();
            }
        });
        dialog->open();
    }
}

SettingsView* MainWindow::settingsWindow() {
    // Made when first asked for: most launches never open it.
    if (!m_settings) {
        m_settings = new SettingsView(m_content->preferences(), this);
    }
    return m_settings;
}

void MainWindow::showSettings() {
    settingsWindow();
    m_settings->show();
    m_settings->raise();
    m_settings->activateWindow();
}
