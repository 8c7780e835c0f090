#include "views/widgets/SidebarView.h"

#include "core/ContentView.h"
#include "ui/SearchField.h"
#include "ui/SymbolIcon.h"
#include "ui/Theme.h"
#include "views/SidebarModel.h"
#include "views/widgets/SidebarDelegate.h"

#include <QAction>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QTreeView>
#include <QVBoxLayout>

SidebarView::SidebarView(ContentView* content, QWidget* parent)
    : QWidget(parent)
    , m_content(content)
    , m_model(new SidebarModel(content, this)) {
    setObjectName(QStringLiteral("sidebarColumn"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Theme::kSpaceM, Theme::kSpaceM, Theme::kSpaceM, Theme::kSpaceM);
    layout->setSpacing(Theme::kSpaceS);

    buildSearch();
    layout->addWidget(m_search);

    buildList();
    layout->addWidget(m_list, 1);

    m_add = new QPushButton(QStringLiteral("Add Account"), this);
    m_add->setObjectName(QStringLiteral("sidebarAddAccountButton"));
    m_add->setIcon(
        SymbolIcon::icon(QStringLiteral("plus"), 16, [] { return Theme::primaryText(Theme::current()); }));
    m_add->setIconSize(QSize(16, 16));
    m_add->setAccessibleName(m_add->text());
    connect(m_add, &QPushButton::clicked, this, &SidebarView::addRequested);
    layout->addWidget(m_add);

    // The sections come back (and open) when rows arrive; a search or a new account
    // must not lose the selected row.
    connect(m_model, &SidebarModel::rowsInserted, this, [this](const QModelIndex& under) {
        if (!under.isValid()) {
            m_list->expandAll();
        }
        syncSelection();
    });
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            &SidebarView::onCurrentChanged);
    connect(m_content, &ContentView::selectionChanged, this, &SidebarView::syncSelection);
    connect(m_list, &QTreeView::customContextMenuRequested, this, &SidebarView::showContextMenu);
    syncSelection();
}

// "Find subscriptions", with its magnifier and its own clear button.
void SidebarView::buildSearch() {
    m_search = new SearchField(QStringLiteral("Find subscriptions"), this);
    m_search->setObjectName(QStringLiteral("sidebarSearch"));
    connect(m_search, &QLineEdit::textChanged, m_model, &SidebarModel::setSearchText);
}

// The overview, the providers' groups and the accounts, drawn by SidebarDelegate.
void SidebarView::buildList() {
    m_list = new QTreeView(this);
    m_list->setObjectName(QStringLiteral("sidebar"));
    m_list->setAccessibleName(QStringLiteral("Sidebar"));
    m_list->setHeaderHidden(true);
    m_list->setRootIsDecorated(false);
    m_list->setItemsExpandable(false);
    m_list->setIndentation(0);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setSelectionMode(QAbstractItemView::SingleSelection);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setMouseTracking(true);
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    m_list->viewport()->setAutoFillBackground(false);
    // Transparent through the palette: a style sheet of its own would restyle the view.
    QPalette clear = m_list->palette();
    clear.setColor(QPalette::Base, Qt::transparent);
    m_list->setPalette(clear);
    m_list->setItemDelegate(new SidebarDelegate(m_list));
    // Connected before the view is: while rows go (a search, a deletion) the view moves its current row to a
    // neighbour; that is not the operator choosing it.
    connect(m_model, &SidebarModel::rowsAboutToBeRemoved, this, [this] { m_syncing = true; });
    connect(m_model, &SidebarModel::rowsRemoved, this, [this] {
        m_syncing = false;
        syncSelection();
    });
    connect(m_model, &SidebarModel::rowsAboutToBeMoved, this, [this] { m_syncing = true; });
    connect(m_model, &SidebarModel::rowsMoved, this, [this] {
        m_syncing = false;
        syncSelection();
    });
    m_list->setModel(m_model);
    m_list->expandAll();
}

void SidebarView::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), Theme::sidebar(Theme::appearance(palette())));
}

void SidebarView::syncSelection() {
    const QModelIndex wanted = m_model->indexFor(m_content->selection());
    if (m_list->currentIndex() == wanted &&
        (!wanted.isValid() || m_list->selectionModel()->isSelected(wanted))) {
        return;
    }
    // An account the search hides stays selected; its row is simply not there.
    m_syncing = true;
    if (wanted.isValid()) {
        m_list->selectionModel()->setCurrentIndex(wanted, QItemSelectionModel::ClearAndSelect);
        if (m_list->isVisible()) {
            m_list->scrollTo(wanted);
        }
    } else {
        m_list->selectionModel()->clearCurrentIndex();
        m_list->selectionModel()->clearSelection();
    }
    m_syncing = false;
}

void SidebarView::onCurrentChanged(const QModelIndex& current) {
    if (m_syncing || !current.isValid()) {
        return;
    }
    if (const std::optional<SidebarSelection> selection = m_model->selectionAt(current)) {
        m_content->setSelection(*selection);
    } else {
        // A section title: the selection stays where it was.
        syncSelection();
    }
}

QMenu* SidebarView::accountMenu(const QUuid& id) {
    const ProviderAccount* account = m_content->store()->account(id);
    if (!account) {
        return nullptr;
    }
    auto* menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("accountMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QAction* edit = menu->addAction(QStringLiteral("Edit Subscription"));
    edit->setObjectName(QStringLiteral("editSubscription"));
    connect(edit, &QAction::triggered, this, [this, id] { Q_EMIT editRequested(id); });
    QAction* remove = menu->addAction(QStringLiteral("Delete Subscription"));
    remove->setObjectName(QStringLiteral("deleteSubscription"));
    connect(remove, &QAction::triggered, this, [this, id] { Q_EMIT deleteRequested(id); });
    menu->addSeparator();
    // Plain text, read from the record as it is now.
    menu->addAction(account->connectionMode().title())->setEnabled(false);
    menu->addAction(account->syncMessage())->setEnabled(false);
    return menu;
}

void SidebarView::showContextMenu(const QPoint& position) {
    // The menu key asks for the current row's menu; a click, for the row under it.
    QModelIndex index = m_list->indexAt(position);
    if (!m_model->accountAt(index) && !m_list->viewport()->underMouse()) {
        index = m_list->currentIndex();
    }
    const ProviderAccount* account = m_model->accountAt(index);
    if (!account) {
        return;
    }
    if (QMenu* menu = accountMenu(account->id())) {
        menu->popup(m_list->viewport()->mapToGlobal(position));
    }
}
