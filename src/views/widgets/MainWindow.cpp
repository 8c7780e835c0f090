#include "views/widgets/MainWindow.h"

#include "core/ContentView.h"
#include "model/UuidText.h"
#include "views/DetailRoute.h"
#include "views/PlatformWording.h"
#include "views/widgets/SettingsWindow.h"
#include "views/widgets/TrackerCommands.h"

#include "views/SidebarModel.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QShowEvent>
#include <QSplitter>
#include <QStackedWidget>
#include <QTimer>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

MainWindow::MainWindow(ContentView* content, QWidget* parent)
    : QMainWindow(parent)
    , m_content(content) {
    setObjectName(QStringLiteral("mainWindow"));
    setWindowTitle(QStringLiteral("Tallyfen"));
    setMinimumSize(kMinimumWidth, kMinimumHeight);

    m_splitter = new QSplitter(Qt::Horizontal, this);
    m_splitter->setObjectName(QStringLiteral("mainSplitter"));
    m_splitter->setChildrenCollapsible(false);

    m_sidebarModel = new SidebarModel(m_content, this);
    m_sidebar = new QTreeView(m_splitter);
    m_sidebar->setObjectName(QStringLiteral("sidebar"));
    m_sidebar->setAccessibleName(QStringLiteral("Accounts"));
    m_sidebar->setMinimumWidth(kSidebarMinimumWidth);
    m_sidebar->setHeaderHidden(true);
    m_sidebar->setRootIsDecorated(false);
    m_sidebar->setItemsExpandable(false);
    m_sidebar->setUniformRowHeights(true);
    m_sidebar->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_sidebar->setSelectionMode(QAbstractItemView::SingleSelection);
    m_sidebar->setModel(m_sidebarModel);
    m_sidebar->expandAll();
    // The accounts section comes back when the first account arrives: open it.
    connect(m_sidebarModel, &SidebarModel::rowsInserted, this, [this](const QModelIndex& under) {
        if (!under.isValid()) {
            m_sidebar->expandAll();
        }
        syncSidebarSelection();
    });

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

    connect(m_sidebar->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &MainWindow::onSidebarCurrentChanged);
    // Each signal redraws what reads it: the list and the selection route the detail;
    // a field redraws it only when it shows that account; a refresh starting or ending
    // changes nothing on the placeholder detail but the account's own fields.
    connect(m_content, &ContentView::accountListChanged, this, &MainWindow::updateDetail);
    connect(m_content, &ContentView::accountChanged, this, &MainWindow::accountChanged);
    connect(m_content, &ContentView::selectionChanged, this, [this] {
        syncSidebarSelection();
        updateDetail();
    });
    connect(m_content, &ContentView::presentationChanged, this, [this] {
        presentOnboarding();
        presentDialogs();
    });

    syncSidebarSelection();
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

void MainWindow::accountChanged(ProviderAccount* account) {
    if (detailShows(account->id())) {
        scheduleDetailUpdate();
    }
}

bool MainWindow::detailShows(const QUuid& id) const {
    return m_shownIDs.contains(id);
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
    const QModelIndex wanted = m_sidebarModel->indexFor(m_content->selection());
    if (m_sidebar->currentIndex() == wanted) {
        return;
    }
    // An account the search hides stays selected; its row is simply not there.
    m_syncingSelection = true;
    if (wanted.isValid()) {
        m_sidebar->selectionModel()->setCurrentIndex(wanted, QItemSelectionModel::ClearAndSelect);
    } else {
        m_sidebar->selectionModel()->clearCurrentIndex();
        m_sidebar->selectionModel()->clearSelection();
    }
    m_syncingSelection = false;
}

void MainWindow::onSidebarCurrentChanged(const QModelIndex& current) {
    if (m_syncingSelection) {
        return;
    }
    if (const std::optional<SidebarSelection> selection = m_sidebarModel->selectionAt(current)) {
        m_content->setSelection(*selection);
    } else {
        // A section heading: the selection stays where it was.
        syncSidebarSelection();
    }
}

void MainWindow::presentOnboarding() {
    if (m_content->showOnboarding() && !m_welcome) {
        // Built only when needed: most launches never show it.
        m_welcome = buildWelcome();
        m_detailStack->addWidget(m_welcome);
    }
    m_detailStack->setCurrentWidget(m_content->showOnboarding() ? m_welcome : m_detailStack->widget(0));
}

void MainWindow::updateDetail() {
    const DetailRoute route = DetailRoute::forSelection(m_content->selection(), m_content->accounts());
    m_shownIDs.clear();
    for (const ProviderAccount* account : route.accounts) {
        m_shownIDs.insert(account->id());
    }
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
