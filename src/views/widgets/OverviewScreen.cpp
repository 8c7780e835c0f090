#include "views/widgets/OverviewScreen.h"

#include "model/Clock.h"
#include "store/ProviderAccount.h"
#include "views/widgets/BadgeWidget.h"
#include "views/widgets/BlockParts.h"
#include "views/widgets/BrandMark.h"
#include "views/widgets/CardButton.h"
#include "views/widgets/CardGrid.h"
#include "views/widgets/ProviderLogoWidget.h"
#include "views/widgets/StatusCardWidget.h"
#include "views/widgets/SubscriptionCardWidget.h"
#include "views/widgets/SubscriptionMatrixWidget.h"
#include "views/widgets/SummaryTileWidget.h"
#include "views/widgets/SymbolIcon.h"
#include "views/widgets/Theme.h"

#include <QApplication>
#include <QButtonGroup>
#include <QComboBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

namespace {
using Ink = ElidedLabel::Ink;
constexpr int kCardColumnWidth = 380;
constexpr int kLogoSize = 18;

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
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    buildFixedParts();
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
                                       Ink::secondary, m_page, Tone::muted, 2));
    header->addLayout(titles, 1);
    m_layout->addLayout(header);

    // Five tiles, always there.
    auto* tiles = BlockParts::row(Theme::kSpaceM);
    for (const OverviewView::SummaryTile& tile : OverviewView::summaryTiles({}, Clock::now())) {
        auto* widget = new SummaryTileWidget(tile, m_page);
        m_tiles.append(widget);
        tiles->addWidget(widget, 1);
    }
    m_layout->addLayout(tiles);
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
    update(true);
}

void OverviewScreen::accountChanged(ProviderAccount* account) {
    if (!m_accounts.contains(account)) {
        return;
    }
    m_cardContent.remove(account->id()); // its card is made anew if it reads differently
    update(false);
}

void OverviewScreen::timePassed() {
    update(false);
}

void OverviewScreen::setSortMode(MonitoringSort sort) {
    if (sort == m_sort) {
        return;
    }
    m_sort = sort;
    if (m_sortPicker) {
        m_sortPicker->setCurrentIndex(static_cast<int>(sort.value()));
    }
    update(false);
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
    update(true);
}

QList<CardButton*> OverviewScreen::cards() const {
    QList<CardButton*> shown;
    for (const QList<QUuid>& group : m_shownLayout) {
        for (const QUuid& id : group) {
            if (CardButton* card = m_cards.value(id)) {
                shown.append(card);
            }
        }
    }
    return shown;
}

void OverviewScreen::update(bool rebuildMonitoring) {
    const Timestamp now = Clock::now();
    m_screen = OverviewView::make(m_title, m_accounts, m_sort, m_viewMode, now);
    m_heading->setFullText(m_screen.header.title);
    for (qsizetype i = 0; i < m_tiles.size() && i < m_screen.tiles.size(); ++i) {
        m_tiles[i]->setTile(m_screen.tiles[i]);
    }
    if (m_screen.sampleNotice && !m_sampleNotice) {
        const OverviewView::SampleDataNotice& notice = *m_screen.sampleNotice;
        m_sampleNotice = BlockParts::card(m_page, Tone::sample);
        m_sampleNotice->setObjectName(QStringLiteral("sampleDataNotice"));
        m_sampleNotice->setAccessibleName(notice.title);
        auto* row = BlockParts::row(Theme::kSpaceM);
        row->addWidget(BlockParts::icon(notice.icon, 20, m_sampleNotice, Tone::sample), 0, Qt::AlignTop);
        auto* texts = new QVBoxLayout;
        texts->setSpacing(2);
        texts->addWidget(
            BlockParts::text(notice.title, Theme::kBody, QFont::DemiBold, Ink::primary, m_sampleNotice));
        texts->addWidget(BlockParts::text(notice.message, Theme::kFootnote, QFont::Normal, Ink::secondary,
                                          m_sampleNotice, Tone::muted, 3));
        row->addLayout(texts, 1);
        QPushButton* clear =
            BlockParts::button(notice.actionTitle, Theme::ButtonRole::destructive, m_sampleNotice);
        clear->setObjectName(QStringLiteral("clearSampleDataButton"));
        connect(clear, &QPushButton::clicked, this, &OverviewScreen::clearSampleDataRequested);
        row->addWidget(clear, 0, Qt::AlignVCenter);
        static_cast<QVBoxLayout*>(m_sampleNotice->layout())->addLayout(row);
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
        auto* segmentRow = BlockParts::row(2);
        segments->setLayout(segmentRow);
        auto* group = new QButtonGroup(segments);
        group->setExclusive(true);
        const Theme::Appearance look = Theme::appearance(palette());
        for (const MonitoringViewMode mode : MonitoringViewMode::allCases()) {
            auto* button = new QToolButton(segments);
            button->setText(mode.title());
            button->setAccessibleName(mode.title());
            button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
            button->setIcon(
                QIcon(SymbolIcon::pixmap(mode.icon(), Theme::primaryText(look), 14, devicePixelRatioF())));
            button->setCheckable(true);
            button->setChecked(mode == m_viewMode);
            button->setFocusPolicy(Qt::StrongFocus);
            group->addButton(button);
            segmentRow->addWidget(button);
            connect(button, &QToolButton::clicked, this, [this, mode] { setViewMode(mode); });
            (mode == MonitoringViewMode::cards ? m_cardsButton : m_matrixButton) = button;
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
        top->addWidget(m_sortPicker, 0, Qt::AlignBottom);
        column->addLayout(top);
        m_monitoringLayout = column;
        place(m_monitoringSlot, m_monitoring);
    }
    m_monitoringSlot->show();

    const QList<QList<QUuid>> shape = layoutKey();
    if (rebuildMonitoring || shape != m_shownLayout || !m_monitoringBody) {
        rebuildMonitoringBody();
        return;
    }
    if (m_viewMode == MonitoringViewMode::matrix) {
        QList<MatrixRowContent> rows;
        for (ProviderAccount* account : m_screen.monitoring->sorted) {
            rows.append(MatrixRowContent::make(*account, now));
        }
        if (rows != m_matrixRows) {
            rebuildMonitoringBody();
        }
        return;
    }
    // Same cards in the same places: only those that read differently are made anew.
    for (ProviderAccount* account : m_screen.monitoring->sorted) {
        const SubscriptionCardContent content = SubscriptionCardContent::make(*account, now);
        const auto shown = m_cardContent.constFind(account->id());
        if (shown != m_cardContent.cend() && *shown == content) {
            continue;
        }
        CardButton* button = m_cards.value(account->id());
        if (!button) {
            continue;
        }
        button->setCard(new SubscriptionCardWidget(content, account->trendHistory()));
        m_cardContent.insert(account->id(), content);
    }
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
    const auto same = [](const std::optional<OverviewView::AttentionSection>& a,
                         const std::optional<OverviewView::AttentionSection>& b) {
        if (a.has_value() != b.has_value()) {
            return false;
        }
        if (!a) {
            return true;
        }
        if (a->rows.size() != b->rows.size()) {
            return false;
        }
        for (qsizetype i = 0; i < a->rows.size(); ++i) {
            const auto& x = a->rows[i];
            const auto& y = b->rows[i];
            if (x.id != y.id || x.name != y.name || x.message != y.message || !(x.pulse == y.pulse) ||
                x.provider != y.provider) {
                return false;
            }
        }
        return true;
    };
    if (m_attention && same(section, m_shownAttention)) {
        return;
    }
    m_shownAttention = section;
    QWidget* old = m_attention;
    m_attention = nullptr;
    if (section) {
        auto* block = new QWidget(m_page);
        block->setObjectName(QStringLiteral("attentionSection"));
        auto* column = new QVBoxLayout(block);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(Theme::kSpaceM);
        column->addWidget(BlockParts::heading(section->heading.title, section->heading.subtitle, block));
        QWidget* card = BlockParts::card(block);
        auto* rows = static_cast<QVBoxLayout*>(card->layout());
        rows->setContentsMargins(Theme::kSpaceL, Theme::kSpaceS, Theme::kSpaceL, Theme::kSpaceS);
        for (const OverviewView::AttentionRow& entry : section->rows) {
            if (rows->count() > 0) {
                rows->addWidget(BlockParts::separator(card));
            }
            auto* row = new QWidget(card);
            row->setAccessibleName(entry.name);
            auto* line = BlockParts::row(Theme::kSpaceM);
            line->setContentsMargins(0, Theme::kSpaceXS, 0, Theme::kSpaceXS);
            row->setLayout(line);
            line->addWidget(new ProviderLogoWidget(entry.provider, kLogoSize, row), 0, Qt::AlignVCenter);
            auto* texts = new QVBoxLayout;
            texts->setSpacing(1);
            texts->addWidget(BlockParts::text(entry.name, Theme::kBody, QFont::Medium, Ink::primary, row));
            texts->addWidget(
                BlockParts::text(entry.message, Theme::kFootnote, QFont::Normal, Ink::secondary, row));
            line->addLayout(texts, 1);
            line->addWidget(new BadgeWidget(entry.pulse, row), 0, Qt::AlignVCenter);
            rows->addWidget(row);
        }
        column->addWidget(card);
        place(m_attentionSlot, block);
        m_attention = block;
    }
    delete old;
    m_attentionSlot->setVisible(m_attention != nullptr);
}

CardButton* OverviewScreen::makeCard(ProviderAccount* account, const SubscriptionCardContent& content) {
    auto* button = new CardButton(new SubscriptionCardWidget(content, account->trendHistory()),
                                  account->displayName(), m_screen.monitoring->cardHint);
    button->setObjectName(QStringLiteral("subscriptionCard"));
    const QUuid id = account->id();
    connect(button, &CardButton::clicked, this, [this, id] { Q_EMIT selected(id); });
    m_cardContent.insert(id, content);
    return button;
}

void OverviewScreen::rebuildMonitoringBody() {
    const Timestamp now = Clock::now();
    const OverviewView::MonitoringSection& section = *m_screen.monitoring;
    QWidget* old = m_monitoringBody;
    m_monitoringBody = new QWidget(m_monitoring);
    m_monitoringBody->setObjectName(QStringLiteral("monitoringBody"));
    auto* body = new QVBoxLayout(m_monitoringBody);
    body->setContentsMargins(0, 0, 0, 0);
    body->setSpacing(Theme::kSpaceL);
    m_matrix = nullptr;
    m_matrixRows.clear();

    QHash<QUuid, CardButton*> kept;
    if (m_viewMode == MonitoringViewMode::matrix) {
        for (ProviderAccount* account : section.sorted) {
            m_matrixRows.append(MatrixRowContent::make(*account, now));
        }
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
            heading->addWidget(BlockParts::value(group.count, Theme::kFootnote, QFont::Normal, Ink::secondary,
                                                 m_monitoringBody));
            heading->addStretch(1);
            body->addLayout(heading);
            auto* grid = new CardGrid(kCardColumnWidth, m_monitoringBody);
            QList<QWidget*> cards;
            for (ProviderAccount* account : group.accounts) {
                const SubscriptionCardContent content = SubscriptionCardContent::make(*account, now);
                CardButton* button = m_cards.take(account->id());
                if (button && m_cardContent.value(account->id()) == content) {
                    button->setAccessibleName(account->displayName());
                } else {
                    delete button;
                    button = makeCard(account, content);
                }
                kept.insert(account->id(), button);
                cards.append(button);
            }
            grid->setCards(cards);
            body->addWidget(grid);
        }
    }
    // Cards of accounts no longer shown go; the kept ones have moved to their new grids.
    qDeleteAll(m_cards);
    m_cards = kept;
    for (auto it = m_cardContent.begin(); it != m_cardContent.end();) {
        it = kept.contains(it.key()) ? std::next(it) : m_cardContent.erase(it);
    }
    m_monitoringLayout->addWidget(m_monitoringBody);
    delete old;
    m_shownLayout = layoutKey();
}
