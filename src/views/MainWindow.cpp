#include "MainWindow.h"

#include "ContentView.h"
#include "DetailRoute.h"
#include "SettingsWindow.h"
#include "TrackerCommands.h"
#include "UuidText.h"

#include <QLabel>
#include <QListWidget>
#include <QMenuBar>
#include <QShowEvent>
#include <QSplitter>
#include <QVBoxLayout>

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

    auto* detailArea = new QWidget(m_splitter);
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
    detailLayout->addWidget(m_detail, 1);

    m_splitter->addWidget(m_sidebar);
    m_splitter->addWidget(detailArea);
    m_splitter->setStretchFactor(0, 0);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setSizes({kSidebarIdealWidth, kMinimumWidth - kSidebarIdealWidth});
    setCentralWidget(m_splitter);

    m_commands = new TrackerCommands(menuBar(), this);
    m_settings = new SettingsWindow(this);
    connect(m_commands, &TrackerCommands::settingsRequested, this, &MainWindow::showSettings);

    connect(m_sidebar, &QListWidget::currentRowChanged, this, &MainWindow::onSidebarRowChanged);
    connect(m_content, &ContentView::accountsChanged, this, [this] {
        rebuildSidebar();
        updateDetail();
    });
    connect(m_content, &ContentView::stateChanged, this, [this] {
        syncSidebarSelection();
        updateDetail();
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
    auto* overview = new QListWidgetItem(QStringLiteral("Overview"), m_sidebar);
    overview->setData(kAccountIDRole, QString());
    int selectedRow = 0;
    const std::optional<QUuid> selectedID = m_content->selection().accountID();
    for (const ProviderAccount* account : m_content->accounts()) {
        auto* item = new QListWidgetItem(account->displayName(), m_sidebar);
        item->setData(kAccountIDRole, UuidText::toText(account->id()));
        if (selectedID && *selectedID == account->id()) {
            selectedRow = m_sidebar->count() - 1;
        }
    }
    m_sidebar->setCurrentRow(selectedRow);
    m_rebuilding = false;
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
    const DetailRoute route = DetailRoute::forSelection(m_content->selection(), m_content->accounts());
    m_detailTitle->setText(route.title);
    QStringList lines;
    switch (route.screen) {
    case DetailRoute::Screen::overview:
        for (const ProviderAccount* account : route.accounts) {
            lines.append(account->displayName() + QStringLiteral(" — ") +
                         account->effectiveSyncStatus().title());
        }
        if (route.accounts.isEmpty()) {
            lines.append(QStringLiteral("No accounts yet."));
        }
        break;
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

void MainWindow::showSettings() {
    m_settings->show();
    m_settings->raise();
    m_settings->activateWindow();
}
