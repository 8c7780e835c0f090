#include "MainWindow.h"

#include "ContentView.h"
#include "DetailRoute.h"
#include "PlatformWording.h"
#include "SettingsWindow.h"
#include "TrackerCommands.h"
#include "UuidText.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QShowEvent>
#include <QSplitter>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace {
constexpr int kAccountIDRole = Qt::UserRole + 1;
}

MainWindow::MainWindow(ContentView* content, QWidget* parent)
    : QMainWindow(parent)
    , m_content(content) {
    setObjectName(QStringLiteral("mainWindow"));
    setWindowTitle(QStringLiteral("Tallyfen"));
    setMinimumSize(kMinimumWidth, kMinimumHeight);

    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setObjectName(QStringLiteral("mainSplitter"));
    m_splitter->setChildrenCollapsible(false);

    m_sidebar = new QListWidget(m_splitter);
    m_sidebar->setObjectName(QStringLiteral("sidebar"));
    m_sidebar->setAccessibleName(QStringLiteral("Accounts"));
    m_sidebar->setMinimumWidth(kSidebarMinimumWidth);
    m_sidebar->setUniformItemSizes(true);

    m_detailStack = new QStackedWidget(m_splitter);
    m_detailStack->setObjectName(QStringLiteral("detailStack"));
    auto* detailArea = new QWidget(m_detailStack);
    detailArea->setObjectName(QStringLiteral("detailArea"));
    auto* detailLayout = new QVBoxLayout(detailArea);
    detailLayout->setContentsMargins(24, 20, 24, 20);
    detailLayout->setSpacing(10);
    m_detailTitle = new QLabel(detailArea);
    m_detailTitle->setObjectName(QStringLiteral("detailTitle"));
    QFont titleFont = m_detailTitle->font();
    titleFont.setBold(true);
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.5);
    m_detailTitle->setFont(titleFont);
    m_detail = new QLabel(detailArea);
    m_detail->setObjectName(QStringLiteral("detail"));
    m_detail->setAccessibleName(QStringLiteral("Detail"));
    m_detail->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_detail->setTextInteractionFlags(Qt::TextSelectableByMouse);
    detailLayout->addWidget(m_detailTitle);
    auto* actions = new QHBoxLayout;
    m_addButton = new QPushButton(QStringLiteral("Add Account"), detailArea);
    m_addButton->setObjectName(QStringLiteral("addAccountButton"));
    connect(m_addButton, &QPushButton::clicked, this,
            [this] { m_content->setEditorState(EditorState::newAccount()); });
    m_clearSamplesButton = new QPushButton(QStringLiteral("Clear Sample Data"), detailArea);
    m_clearSamplesButton->setObjectName(QStringLiteral("clearSampleDataButton"));
    connect(m_clearSamplesButton, &QPushButton::clicked, m_content, &ContentView::requestSampleClear);
    m_deleteButton = new QPushButton(QStringLiteral("Delete Account"), detailArea);
    m_deleteButton->setObjectName(QStringLiteral("deleteAccountButton"));
    connect(m_deleteButton, &QPushButton::clicked, this, [this] {
        if (const auto id = m_content->selection().accountID()) {
            m_content->requestDelete(*id);
        }
    });
    m_backButton = new QPushButton(QStringLiteral("Back to Overview"), detailArea);
    m_backButton->setObjectName(QStringLiteral("backToOverviewButton"));
    connect(m_backButton, &QPushButton::clicked, this,
            [this] { m_content->setSelection(SidebarSelection::overview()); });
    actions->addWidget(m_addButton);
    actions->addWidget(m_backButton);
    actions->addWidget(m_clearSamplesButton);
    actions->addWidget(m_deleteButton);
    actions->addStretch(1);
    // The screen's actions sit under its title, as a toolbar would.
    detailLayout->addLayout(actions);
    detailLayout->addWidget(m_detail, 1);

    m_detailStack->addWidget(detailArea);

    m_splitter->addWidget(m_sidebar);
    m_splitter->addWidget(m_detailStack);
    m_splitter->setStretchFactor(0, 0);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setSizes({kSidebarIdealWidth, kMinimumWidth - kSidebarIdealWidth});
    setCentralWidget(m_splitter);

    m_commands = new TrackerCommands(menuBar(), this);
    m_settings = new SettingsWindow(this);
    connect(m_commands, &TrackerCommands::settingsRequested, this, &MainWindow::showSettings);

    connect(m_sidebar, &QListWidget::currentRowChanged, this, &MainWindow::onSidebarRowChanged);
    // The list itself changing rebuilds the sidebar; a field changing touches one row,
    // so that a burst of refreshes costs one redraw rather than one per field.
    connect(m_content->store(), &AccountStore::accountsChanged, this, [this] {
        rebuildSidebar();
        updateDetail();
    });
    connect(m_content->store(), &AccountStore::accountChanged, this, &MainWindow::accountChanged);
    connect(m_content, &ContentView::refreshingChanged, this, &MainWindow::scheduleDetailUpdate);
    connect(m_content, &ContentView::stateChanged, this, [this] {
        syncSidebarSelection();
        updateDetail();
        presentDialogs();
    });

    rebuildSidebar();
    updateDetail();
}

MainWindow::~MainWindow() = default;

void MainWindow::showEvent(QShowEvent* event) {
    QMainWindow::showEvent(event);
    if (!m_appeared) {
        m_appeared = true;
        m_content->onAppear();
        Q_EMIT firstShown();
    }
}

void MainWindow::rebuildSidebar() {
    m_rebuilding = true;
    m_sidebar->clear();
    m_sidebarItems.clear();
    auto* overview = new QListWidgetItem(QStringLiteral("Overview"), m_sidebar);
    overview->setData(kAccountIDRole, QString());
    int selectedRow = 0;
    const std::optional<QUuid> selectedID = m_content->selection().accountID();
    for (const ProviderAccount* account : m_content->accounts()) {
        auto* item = new QListWidgetItem(account->displayName(), m_sidebar);
        item->setData(kAccountIDRole, UuidText::toText(account->id()));
        m_sidebarItems.insert(account->id(), item);
        if (selectedID && *selectedID == account->id()) {
            selectedRow = m_sidebar->count() - 1;
        }
    }
    m_sidebar->setCurrentRow(selectedRow);
    m_rebuilding = false;
}

void MainWindow::accountChanged(ProviderAccount* account) {
    if (QListWidgetItem* item = m_sidebarItems.value(account->id())) {
        const QString name = account->displayName();
        if (item->text() != name) {
            item->setText(name);
        }
    }
    scheduleDetailUpdate();
}

void MainWindow::scheduleDetailUpdate() {
    if (!m_detailUpdateScheduled) {
        m_detailUpdateScheduled = true;
        QTimer::singleShot(0, this, [this] {
            m_detailUpdateScheduled = false;
            updateDetail();
        });
    }
}

void MainWindow::syncSidebarSelection() {
    const std::optional<QUuid> selectedID = m_content->selection().accountID();
    const QString wanted = selectedID ? UuidText::toText(*selectedID) : QString();
    for (int row = 0; row < m_sidebar->count(); ++row) {
        if (m_sidebar->item(row)->data(kAccountIDRole).toString() == wanted) {
            if (m_sidebar->currentRow() != row) {
                m_rebuilding = true;
                m_sidebar->setCurrentRow(row);
                m_rebuilding = false;
            }
            return;
        }
    }
}

void MainWindow::onSidebarRowChanged(int row) {
    if (m_rebuilding || row < 0) {
        return;
    }
    const QString idText = m_sidebar->item(row)->data(kAccountIDRole).toString();
    const auto id = UuidText::fromText(idText);
    m_content->setSelection(id ? SidebarSelection::account(*id) : SidebarSelection::overview());
}

void MainWindow::updateDetail() {
    if (m_content->showOnboarding() && !m_welcome) {
        // Built only when needed: most launches never show it.
        m_welcome = buildWelcome();
        m_detailStack->addWidget(m_welcome);
    }
    m_detailStack->setCurrentWidget(m_content->showOnboarding() ? m_welcome : m_detailStack->widget(0));
    const DetailRoute route = DetailRoute::forSelection(m_content->selection(), m_content->accounts());
    const bool anySamples =
        std::any_of(m_content->accounts().cbegin(), m_content->accounts().cend(),
                    [](const ProviderAccount* account) { return account->sampleDataEnabled(); });
    m_addButton->setVisible(route.screen == DetailRoute::Screen::overview);
    m_clearSamplesButton->setVisible(route.screen == DetailRoute::Screen::overview && anySamples);
    m_deleteButton->setVisible(route.screen == DetailRoute::Screen::account);
    m_backButton->setVisible(route.screen == DetailRoute::Screen::unavailable);
    m_detailTitle->setText(route.title);
    QStringList lines;
    switch (route.screen) {
    case DetailRoute::Screen::overview: {
        // A summary: the sidebar lists every account.
        constexpr qsizetype kShown = 30;
        for (const ProviderAccount* account : route.accounts.mid(0, kShown)) {
            lines.append(account->displayName() + QStringLiteral(" — ") +
                         account->effectiveSyncStatus().title());
        }
        if (route.accounts.size() > kShown) {
            lines.append(QStringLiteral("… and %1 more").arg(route.accounts.size() - kShown));
        }
        if (route.accounts.isEmpty()) {
            lines.append(QStringLiteral("No accounts yet."));
        }
        break;
    }
    case DetailRoute::Screen::account: {
        const ProviderAccount* account = route.accounts.first();
        if (account->displayName() != account->provider().displayName()) {
            lines.append(account->provider().displayName());
        }
        lines.append(account->effectiveSyncStatus().title() + QStringLiteral(" — ") + account->syncMessage());
        break;
    }
    case DetailRoute::Screen::unavailable:
        lines.append(QStringLiteral("This account may have been removed."));
        break;
    }
    m_detail->setText(lines.join(u'\n'));
}

QWidget* MainWindow::buildWelcome() {
    // A plain welcome until the guided flow arrives: it offers the sample workspace.
    auto* welcome = new QWidget(m_detailStack);
    welcome->setObjectName(QStringLiteral("welcome"));
    auto* layout = new QVBoxLayout(welcome);
    layout->setContentsMargins(48, 48, 48, 48);
    layout->setSpacing(14);
    auto* heading = new QLabel(QStringLiteral("Let’s get your first account on the board."), welcome);
    heading->setObjectName(QStringLiteral("welcomeHeading"));
    QFont headingFont = heading->font();
    headingFont.setBold(true);
    headingFont.setPointSizeF(headingFont.pointSizeF() * 1.6);
    heading->setFont(headingFont);
    heading->setWordWrap(true);
    auto* text =
        new QLabel(QStringLiteral("Track each AI subscription in one calm place. Set up your first account, "
                                  "or explore a small sample workspace before you connect anything."),
                   welcome);
    text->setWordWrap(true);
    auto* sample = new QPushButton(QStringLiteral("Try sample workspace"), welcome);
    sample->setObjectName(QStringLiteral("trySampleWorkspaceButton"));
    sample->setDefault(true);
    connect(sample, &QPushButton::clicked, this, [this] {
        m_content->createDemoAccounts();
        m_content->finishOnboarding();
    });
    layout->addWidget(heading);
    layout->addWidget(text);
    layout->addWidget(sample, 0, Qt::AlignLeft);
    layout->addStretch(1);
    return welcome;
}

QMessageBox* MainWindow::confirmation(const QString& objectName, const QString& title, const QString& message,
                                      const QString& destructiveButton) {
    auto* dialog = new QMessageBox(QMessageBox::Warning, title, message, QMessageBox::NoButton, this);
    dialog->setObjectName(objectName);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QPushButton* confirm = dialog->addButton(destructiveButton, QMessageBox::DestructiveRole);
    confirm->setObjectName(QStringLiteral("confirmButton"));
    QPushButton* cancel = dialog->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cancelButton"));
    dialog->setDefaultButton(cancel);
    dialog->setEscapeButton(cancel);
    return dialog;
}

void MainWindow::presentDialogs() {
    if (m_content->showDeleteConfirmation() && !m_deleteDialog) {
        m_deleteDialog = confirmation(
            QStringLiteral("deleteDialog"), QStringLiteral("Delete this account?"),
            PlatformWording::apply(QStringLiteral(
                "Only this account's metadata, snapshot, and Keychain credential will be removed.")),
            QStringLiteral("Delete Account"));
        QMessageBox* dialog = m_deleteDialog;
        connect(dialog, &QMessageBox::finished, this, [this, dialog] {
            const bool confirmed =
                dialog->buttonRole(dialog->clickedButton()) == QMessageBox::DestructiveRole;
            m_deleteDialog = nullptr;
            m_content->setShowDeleteConfirmation(false);
            if (confirmed) {
                m_content->deleteSelectedAccount();
            }
        });
        dialog->open();
    }
    if (m_content->showSampleClearConfirmation() && !m_sampleClearDialog) {
        m_sampleClearDialog = confirmation(
            QStringLiteral("sampleClearDialog"), QStringLiteral("Remove sample data?"),
            QStringLiteral(
                "This removes only accounts created in sample mode. Your manually configured and official "
                "API accounts stay untouched."),
            QStringLiteral("Clear Sample Data"));
        QMessageBox* dialog = m_sampleClearDialog;
        connect(dialog, &QMessageBox::finished, this, [this, dialog] {
            const bool confirmed =
                dialog->buttonRole(dialog->clickedButton()) == QMessageBox::DestructiveRole;
            m_sampleClearDialog = nullptr;
            m_content->setShowSampleClearConfirmation(false);
            if (confirmed) {
                m_content->clearSampleData();
            }
        });
        dialog->open();
    }
}

void MainWindow::showSettings() {
    m_settings->show();
    m_settings->raise();
    m_settings->activateWindow();
}
