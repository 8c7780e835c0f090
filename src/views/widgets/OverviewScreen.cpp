#include "views/widgets/OverviewScreen.h"

#include "views/widgets/AttentionList.h"

#include "model/Clock.h"
#include "store/ProviderAccount.h"
#include "ui/BadgeWidget.h"
#include "ui/BlockParts.h"
#include "ui/BrandMark.h"
#include "ui/CardButton.h"
#include "ui/CardGrid.h"
#include "ui/LongText.h"
#include "ui/ProviderLogoWidget.h"
#include "ui/StatusCardWidget.h"
#include "ui/SubscriptionCardWidget.h"
#include "ui/SubscriptionMatrixWidget.h"
#include "ui/SummaryTileWidget.h"
#include "ui/SymbolIcon.h"
#include "ui/Theme.h"

#include <QApplication>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QResizeEvent>
#include <QScrollBar>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
// A card is named after its account, as much of the name as a screen reader is given.
QString cardName(const ProviderAccount& account) {
    return LongText::bounded(account.displayName(), LongText::kReadLimit);
}
} // namespace

namespace {
using Ink = ElidedLabel::Ink;
constexpr int kCardColumnWidth = 380;
constexpr int kLogoSize = 18;
constexpr int kPlaceholderHeight = 360;

QList<QUuid> ids(const QList<ProviderAccount*>& accounts) {
    QList<QUuid> result;
    result.reserve(accounts.size());
    for (const ProviderAccount* account : accounts) {
        result.append(account->id());
    }
    return result;
}
} // namespace

OverviewScreen::OverviewScreen(QWidget* parent)
    : QScrollArea(parent) {
    setObjectName(QStringLiteral("overview"));
    // The page takes the focus for scrolling by keyboard; a screen reader names it.
    setAccessibleName(QStringLiteral("Overview"));
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    buildFixedParts();
    // Cards are drawn when they come into view: scrolling and resizing bring them.
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &OverviewScreen::materializeVisible);
}

void OverviewScreen::resizeEvent(QResizeEvent* event) {
    QScrollArea::resizeEvent(event);
    scheduleMaterialize();
}

void OverviewScreen::buildFixedParts() {
    m_page = new QWidget(this);
    m_page->setObjectName(QStringLiteral("overviewPage"));
    setWidget(m_page);
    m_layout = new QVBoxLayout(m_page);
    m_layout->setContentsMargins(Theme::kSpaceXXL, Theme::kSpaceXL, Theme::kSpaceXXL, Theme::kSpaceXXL);
    m_layout->setSpacing(Theme::kSpaceXL);

    // Header: the mark, the title and the fixed line.
    auto* header = BlockParts::row(Theme::kSpaceM);
    header->addWidget(new BrandMark(36, m_page), 0, Qt::AlignTop);
    auto* titles = new QVBoxLayout;
    titles->setSpacing(2);
    m_heading = BlockParts::text(QString(), Theme::kLargeTitle, QFont::DemiBold, Ink::primary, m_page);
    m_heading->setObjectName(QStringLiteral("overviewTitle"));
    titles->addWidget(m_heading);
    titles->addWidget(BlockParts::text(OverviewView::header(QString()).tagline, Theme::kBody, QFont::Normal,
                                       Ink::secondary, m_page, Tone::muted));
    header->addLayout(titles, 1);
    m_layout->addLayout(header);

    // Five tiles, always there: in one row, or in two when the window is narrow.
    auto* tiles = new CardGrid(SummaryTileWidget::kMinimumWidth, m_page);
    tiles->setObjectName(QStringLiteral("summaryTiles"));
    QList<QWidget*> cards;
    for (const OverviewView::SummaryTile& tile : OverviewView::summaryTiles({}, Clock::now())) {
        auto* widget = new SummaryTileWidget(tile, tiles);
        m_tiles.append(widget);
        cards.append(widget);
    }
    tiles->setCards(cards);
    tiles->setBalanced(Theme::kSpaceM);
    m_layout->addWidget(tiles);
    // The blocks below come and go; each has its place in screen order.
    for (QWidget** slot : {&m_noticeSlot, &m_emptySlot, &m_attentionSlot, &m_monitoringSlot}) {
        *slot = new QWidget(m_page);
        auto* holder = new QVBoxLayout(*slot);
        holder->setContentsMargins(0, 0, 0, 0);
        (*slot)->hide();
        m_layout->addWidget(*slot);
    }
    m_layout->addStretch(1);
}

void OverviewScreen::place(QWidget* slot, QWidget* block) {
    slot->layout()->addWidget(block);
}

void OverviewScreen::setAccounts(const QString& title, const QList<ProviderAccount*>& accounts) {
    m_title = title;
    m_accounts = accounts;
    // Cards of accounts that stay are kept; they are checked against their record when
    // next in view.
    for (ProviderAccount* account : accounts) {
        m_dirty.insert(account->id());
        m_dirtyRows.insert(account->id());
    }
    redraw(true);
}

void OverviewScreen::accountsChanged(const QList<ProviderAccount*>& accounts) {
    bool shown = false;
    for (ProviderAccount* account : accounts) {
        if (!m_accounts.contains(account)) {
            continue;
        }
        shown = true;
        m_dirty.insert(account->id());
        m_dirtyRows.insert(account->id());
        if (CardButton* card = m_cards.value(account->id())) {
            card->setAccessibleName(cardName(*account));
        }
    }
    if (shown) {
        redraw(false);
    }
}

void OverviewScreen::timePassed() {
    for (const ProviderAccount* account : std::as_const(m_accounts)) {
        m_dirty.insert(account->id());
        m_dirtyRows.insert(account->id());
    }
    redraw(false);
}

void OverviewScreen::setSortMode(MonitoringSort sort) {
    if (sort == m_sort) {
        return;
    }
    m_sort = sort;
    if (m_sortPicker) {
        m_sortPicker->setCurrentIndex(static_cast<int>(sort.value()));
    }
    redraw(false);
}

void OverviewScreen::setViewMode(MonitoringViewMode mode) {
    if (mode == m_viewMode) {
        return;
    }
    m_viewMode = mode;
    if (m_cardsButton) {
        m_cardsButton->setChecked(mode == MonitoringViewMode::cards);
        m_matrixButton->setChecked(mode == MonitoringViewMode::matrix);
    }
    redraw(true);
}

QList<CardButton*> OverviewScreen::cards() const {
    QList<CardButton*> shown;
    if (m_viewMode != MonitoringViewMode::cards) {
        return shown;
    }
    for (const QList<QUuid>& group : m_shownLayout) {
        for (const QUuid& id : group) {
            if (CardButton* card = m_cards.value(id)) {
                shown.append(card);
            }
        }
    }
    return shown;
}

void OverviewScreen::redraw(bool rebuildMonitoring) {
    const Timestamp now = Clock::now();
    m_screen = OverviewView::make(m_title, m_accounts, m_sort, m_viewMode, now);
    m_heading->setFullText(m_screen.header.title);
    for (qsizetype i = 0; i < m_tiles.size() && i < m_screen.tiles.size(); ++i) {
        m_tiles[i]->setTile(m_screen.tiles[i]);
    }

    if (m_screen.sampleNotice && !m_sampleNotice) {
        const OverviewView::SampleDataNotice& notice = *m_screen.sampleNotice;
        QPushButton* clear = nullptr;
        m_sampleNotice =
            BlockParts::actionCallout(notice.icon, notice.title, notice.message, Tone::sample,
                                      notice.actionTitle, Theme::ButtonRole::destructive, clear, m_page);
        m_sampleNotice->setObjectName(QStringLiteral("sampleDataNotice"));
        clear->setObjectName(QStringLiteral("clearSampleDataButton"));
        connect(clear, &QPushButton::clicked, this, &OverviewScreen::clearSampleDataRequested);
        place(m_noticeSlot, m_sampleNotice);
    }
    m_noticeSlot->setVisible(m_screen.sampleNotice.has_value());

    if (m_screen.emptyState) {
        if (!m_emptyState) {
            m_emptyState = new StatusCardWidget(
                *m_screen.emptyState, [this] { Q_EMIT addRequested(); }, m_page);
            m_emptyState->setObjectName(QStringLiteral("overviewEmptyState"));
            m_emptyState->setMinimumHeight(260);
            place(m_emptySlot, m_emptyState);
        }
        m_emptySlot->show();
        updateAttention(std::nullopt);
        m_monitoringSlot->hide();
        return;
    }
    m_emptySlot->hide();
    updateAttention(m_screen.attention);

    if (!m_monitoring) {
        buildMonitoringHeader();
    }
    m_monitoringSlot->show();

    if (m_viewMode == MonitoringViewMode::matrix) {
        redrawMatrix(rebuildMonitoring, now);
        return;
    }
    const QList<QList<QUuid>> shape = layoutKey();
    QList<AIProvider> providers;
    for (const OverviewView::ProviderGroup& group : m_screen.monitoring->groups) {
        providers.append(group.provider);
    }
    if (rebuildMonitoring || !m_monitoringBody || m_matrix || providers != m_shownProviders) {
        rebuildMonitoringBody();
    } else if (shape != m_shownLayout) {
        reorderCards();
    }
    scheduleMaterialize();
}

// Only the rows of changed accounts are worked out again.
void OverviewScreen::redrawMatrix(bool rebuild, Timestamp now) {
    QHash<QUuid, MatrixRowContent> known;
    for (const MatrixRowContent& row : std::as_const(m_matrixRows)) {
        known.insert(row.id, row);
    }
    QList<MatrixRowContent> rows;
    for (ProviderAccount* account : m_screen.monitoring->sorted) {
        const auto found = known.constFind(account->id());
        rows.append(found != known.cend() && !m_dirtyRows.contains(account->id()) && !rebuild
                        ? *found
                        : MatrixRowContent::make(*account, now));
    }
    if (rebuild || !m_matrix) {
        m_matrixRows = rows;
        rebuildMonitoringBody();
    } else if (rows != m_matrixRows) {
        m_matrixRows = rows;
        m_matrix->setRows(rows);
    }
    m_dirtyRows.clear();
}

void OverviewScreen::buildMonitoringHeader() {
    const OverviewView::MonitoringSection& section = *m_screen.monitoring;
    m_monitoring = new QWidget(m_page);
    m_monitoring->setObjectName(QStringLiteral("monitoringSection"));
    auto* column = new QVBoxLayout(m_monitoring);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(Theme::kSpaceM);
    auto* top = BlockParts::row(Theme::kSpaceM);
    top->addWidget(BlockParts::heading(section.heading.title, section.heading.subtitle, m_monitoring), 1);
    // The view picker: two segments, each with its title and icon.
    auto* segments = new QWidget(m_monitoring);
    segments->setObjectName(QStringLiteral("monitoringViewPicker"));
    segments->setAccessibleName(section.viewPickerLabel);
    QList<BlockParts::Segment> modes;
    for (const MonitoringViewMode mode : MonitoringViewMode::allCases()) {
        modes.append(BlockParts::Segment{mode.title(), mode.icon()});
    }
    const QList<QToolButton*> buttons = BlockParts::segments(
        segments, modes, static_cast<int>(MonitoringViewMode::allCases().indexOf(m_viewMode)));
    for (qsizetype i = 0; i < buttons.size(); ++i) {
        const MonitoringViewMode mode = MonitoringViewMode::allCases().at(i);
        connect(buttons.at(i), &QToolButton::clicked, this, [this, mode] { setViewMode(mode); });
        (mode == MonitoringViewMode::cards ? m_cardsButton : m_matrixButton) = buttons.at(i);
    }
    top->addWidget(segments, 0, Qt::AlignBottom);
    m_sortPicker = new QComboBox(m_monitoring);
    m_sortPicker->setObjectName(QStringLiteral("sortPicker"));
    m_sortPicker->setAccessibleName(section.sortPickerLabel);
    for (const MonitoringSort sort : MonitoringSort::allCases()) {
        m_sortPicker->addItem(sort.title());
    }
    m_sortPicker->setCurrentIndex(static_cast<int>(m_sort.value()));
    connect(m_sortPicker, &QComboBox::activated, this,
            [this](int index) { setSortMode(MonitoringSort::allCases().at(index)); });
    // The pickers' labels are for screen readers only: a label of no size, the sort
    // picker's buddy, names it where the platform reads label relations.
    auto* sortLabel = new QLabel(section.sortPickerLabel, m_monitoring);
    sortLabel->setFixedSize(0, 0);
    sortLabel->setBuddy(m_sortPicker);
    m_sortPicker->setAccessibleDescription(section.sortPickerLabel);
    top->addWidget(sortLabel);
    top->addWidget(m_sortPicker, 0, Qt::AlignBottom);
    column->addLayout(top);
    m_monitoringLayout = column;
    place(m_monitoringSlot, m_monitoring);
}

QList<QList<QUuid>> OverviewScreen::layoutKey() const {
    QList<QList<QUuid>> key;
    if (!m_screen.monitoring) {
        return key;
    }
    if (m_viewMode == MonitoringViewMode::matrix) {
        key.append(ids(m_screen.monitoring->sorted));
        return key;
    }
    for (const OverviewView::ProviderGroup& group : m_screen.monitoring->groups) {
        key.append(ids(group.accounts));
    }
    return key;
}

void OverviewScreen::updateAttention(const std::optional<OverviewView::AttentionSection>& section) {
    m_attentionSlot->setVisible(section.has_value());
    if (!section) {
        return;
    }
    if (!m_attention) {
        m_attention = new AttentionList(section->heading, m_page);
        place(m_attentionSlot, m_attention);
    }
    m_attention->setRows(section->rows);
}

CardButton* OverviewScreen::cardFor(ProviderAccount* account) {
    if (CardButton* existing = m_cards.value(account->id())) {
        return existing;
    }
    // A card waits as a blank of a card's usual height until it comes into view.
    auto* blank = new QWidget;
    blank->setFixedHeight(kPlaceholderHeight);
    auto* button = new CardButton(blank, cardName(*account), m_screen.monitoring->cardHint);
    button->setObjectName(QStringLiteral("subscriptionCard"));
    const QUuid id = account->id();
    connect(button, &CardButton::clicked, this, [this, id] { Q_EMIT selected(id); });
    m_cards.insert(id, button);
    m_dirty.insert(id);
    return button;
}

void OverviewScreen::rebuildMonitoringBody() {
    const OverviewView::MonitoringSection& section = *m_screen.monitoring;
    QWidget* old = m_monitoringBody;
    m_monitoringBody = new QWidget(m_monitoring);
    m_monitoringBody->setObjectName(QStringLiteral("monitoringBody"));
    auto* body = new QVBoxLayout(m_monitoringBody);
    body->setContentsMargins(0, 0, 0, 0);
    body->setSpacing(Theme::kSpaceL);
    m_matrix = nullptr;

    QHash<QUuid, CardButton*> kept;
    m_groupGrids.clear();
    m_groupCounts.clear();
    m_shownProviders.clear();
    if (m_viewMode == MonitoringViewMode::matrix) {
        m_matrix = new SubscriptionMatrixWidget(m_matrixRows, m_monitoringBody);
        m_matrix->setObjectName(QStringLiteral("subscriptionMatrix"));
        connect(m_matrix, &SubscriptionMatrixWidget::selected, this, &OverviewScreen::selected);
        body->addWidget(m_matrix);
    } else {
        for (const OverviewView::ProviderGroup& group : section.groups) {
            auto* heading = BlockParts::row(Theme::kSpaceS);
            heading->addWidget(new ProviderLogoWidget(group.provider, kLogoSize, m_monitoringBody));
            heading->addWidget(BlockParts::value(group.title, Theme::kBody, QFont::DemiBold, Ink::primary,
                                                 m_monitoringBody));
            ElidedLabel* count = BlockParts::value(group.count, Theme::kFootnote, QFont::Normal,
                                                   Ink::secondary, m_monitoringBody);
            heading->addWidget(count);
            heading->addStretch(1);
            body->addLayout(heading);
            auto* grid = new CardGrid(kCardColumnWidth, m_monitoringBody);
            m_groupGrids.append(grid);
            m_groupCounts.append(count);
            m_shownProviders.append(group.provider);
            QList<QWidget*> cards;
            for (ProviderAccount* account : group.accounts) {
                CardButton* button = cardFor(account);
                kept.insert(account->id(), button);
                cards.append(button);
            }
            grid->setCards(cards);
            body->addWidget(grid);
        }
    }
    // Cards of accounts no longer shown go; the kept ones have moved to their new grids.
    for (auto it = m_cards.begin(); it != m_cards.end();) {
        if (kept.contains(it.key())) {
            ++it;
            continue;
        }
        delete it.value();
        m_cardContent.remove(it.key());
        it = m_cards.erase(it);
    }
    m_monitoringLayout->addWidget(m_monitoringBody);
    // Shown now, not when the event loop comes round: a Tab pressed next finds what it holds.
    m_monitoringBody->show();
    delete old;
    m_shownLayout = layoutKey();
}

void OverviewScreen::reorderCards() {
    const OverviewView::MonitoringSection& section = *m_screen.monitoring;
    QSet<QUuid> shown;
    for (qsizetype i = 0; i < section.groups.size(); ++i) {
        const OverviewView::ProviderGroup& group = section.groups[i];
        QList<QWidget*> cards;
        for (ProviderAccount* account : group.accounts) {
            cards.append(cardFor(account));
            shown.insert(account->id());
        }
        m_groupGrids[i]->setCards(cards);
        m_groupCounts[i]->setFullText(group.count);
    }
    for (auto it = m_cards.begin(); it != m_cards.end();) {
        if (shown.contains(it.key())) {
            ++it;
            continue;
        }
        delete it.value();
        m_cardContent.remove(it.key());
        it = m_cards.erase(it);
    }
    m_shownLayout = layoutKey();
}

void OverviewScreen::scheduleMaterialize() {
    if (!m_materializeScheduled) {
        m_materializeScheduled = true;
        QTimer::singleShot(0, this, [this] {
            m_materializeScheduled = false;
            materializeVisible();
        });
    }
}

void OverviewScreen::materializeVisible() {
    if (m_viewMode != MonitoringViewMode::cards || m_dirty.isEmpty()) {
        return;
    }
    const Timestamp now = Clock::now();
    // Cards in view and a screenful below; a drawn card may push others into view, so
    // look again until nothing in view is left to draw.
    for (int pass = 0; pass < 4; ++pass) {
        m_page->layout()->activate();
        const int top = verticalScrollBar()->value();
        const QRect wanted(0, top, m_page->width(), viewport()->height() * 2);
        bool drew = false;
        for (ProviderAccount* account : std::as_const(m_accounts)) {
            const QUuid id = account->id();
            if (!m_dirty.contains(id)) {
                continue;
            }
            CardButton* button = m_cards.value(id);
            if (!button || !button->isVisibleTo(m_page)) {
                continue;
            }
            const QRect area(button->mapTo(m_page, QPoint(0, 0)), button->size());
            if (!area.intersects(wanted)) {
                continue;
            }
            m_dirty.remove(id);
            SubscriptionCardContent content = SubscriptionCardContent::make(*account, now);
            const auto shown = m_cardContent.constFind(id);
            if (shown != m_cardContent.cend() && *shown == content) {
                continue;
            }
            button->setCard(new SubscriptionCardWidget(content, account->trendHistory()));
            button->setAccessibleName(cardName(*account));
            m_cardContent.insert(id, std::move(content));
            drew = true;
        }
        if (!drew) {
            break;
        }
    }
}
