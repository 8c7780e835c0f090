#include "views/widgets/AttentionList.h"

#include "ui/BadgeWidget.h"
#include "ui/BlockParts.h"
#include "ui/LongText.h"
#include "ui/ProviderLogoWidget.h"
#include "ui/Theme.h"

#include <QListView>
#include <QPainter>
#include <QStandardItemModel>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

namespace {
enum AttentionRole { MessageRole = Qt::UserRole + 1, ProviderRole, PulseRole };
constexpr int kAttentionRowHeight = 54;
constexpr int kLogoSize = 18;

// Draws one row of the attention list: logo, name, message and pulse, with a hairline
// above every row but the first. The rows are not buttons.
class AttentionDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
        return QSize(option.rect.width(), kAttentionRowHeight);
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const Theme::Appearance look =
            Theme::appearance(option.widget ? option.widget->palette() : option.palette);
        const QRect row = option.rect;
        painter->save();
        if (index.row() > 0) {
            painter->fillRect(QRect(row.left(), row.top(), row.width(), 1), Theme::separator(look));
        }
        const auto provider = AIProvider::fromRawValue(index.data(ProviderRole).toString());
        const qreal ratio = painter->device()->devicePixelRatioF();
        if (provider) {
            painter->drawPixmap(
                row.left(), row.top() + (row.height() - kLogoSize) / 2,
                ProviderLogoWidget::logo(*provider, kLogoSize, Theme::primaryText(look), ratio));
        }
        const Badge pulse = index.data(PulseRole).value<Badge>();
        const QSize badge = BadgeWidget::capsuleSize(pulse, option.font);
        const QRect badgeRect(row.right() - badge.width(), row.top() + (row.height() - badge.height()) / 2,
                              badge.width(), badge.height());
        BadgeWidget::paintCapsule(*painter, badgeRect, pulse, option.font, look);
        const int left = row.left() + kLogoSize + Theme::kSpaceM;
        const int width = badgeRect.left() - Theme::kSpaceM - left;
        const QFont name = Theme::font(option.font, Theme::kBody, QFont::Medium);
        const QFont message = Theme::font(option.font, Theme::kFootnote);
        const QFontMetrics nameMetrics(name);
        const QFontMetrics messageMetrics(message);
        const int top = row.top() + (row.height() - nameMetrics.height() - messageMetrics.height() - 1) / 2;
        painter->setFont(name);
        painter->setPen(Theme::primaryText(look));
        painter->drawText(QRect(left, top, width, nameMetrics.height()), Qt::AlignLeft | Qt::AlignVCenter,
                          LongText::elided(nameMetrics, index.data(Qt::DisplayRole).toString(), width,
                                           LongText::Kind::free));
        painter->setFont(message);
        painter->setPen(Theme::secondaryText(look));
        painter->drawText(QRect(left, top + nameMetrics.height() + 1, width, messageMetrics.height()),
                          Qt::AlignLeft | Qt::AlignVCenter,
                          LongText::elided(messageMetrics, index.data(MessageRole).toString(), width,
                                           LongText::Kind::meaningful));
        painter->restore();
    }
};

QStandardItem* attentionItem(const OverviewView::AttentionRow& entry) {
    auto* item = new QStandardItem(entry.name);
    item->setData(entry.message, MessageRole);
    item->setData(entry.message, Qt::AccessibleDescriptionRole);
    item->setData(entry.provider.rawValue(), ProviderRole);
    item->setData(QVariant::fromValue(entry.pulse), PulseRole);
    // The whole name and message, where the row has to cut the name.
    item->setToolTip(LongText::bounded(entry.name, LongText::kReadLimit) + u'\n' + entry.message);
    item->setFlags(Qt::ItemIsEnabled);
    return item;
}

bool sameRow(const QStandardItem* item, const OverviewView::AttentionRow& entry) {
    return item->text() == entry.name && item->data(MessageRole).toString() == entry.message &&
           item->data(ProviderRole).toString() == entry.provider.rawValue() &&
           item->data(PulseRole).value<Badge>() == entry.pulse;
}
} // namespace

AttentionList::AttentionList(const OverviewView::SectionHeading& heading, QWidget* parent)
    : QWidget(parent) {
    setObjectName(QStringLiteral("attentionSection"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(Theme::kSpaceM);
    column->addWidget(BlockParts::heading(heading.title, heading.subtitle, this));
    QWidget* card = BlockParts::card(this);
    static_cast<QVBoxLayout*>(card->layout())
        ->setContentsMargins(Theme::kSpaceL, Theme::kSpaceXS, Theme::kSpaceL, Theme::kSpaceXS);
    m_model = new QStandardItemModel(this);
    m_list = new QListView(card);
    m_list->setObjectName(QStringLiteral("attentionList"));
    m_list->setAccessibleName(heading.title);
    m_list->setModel(m_model);
    m_list->setItemDelegate(new AttentionDelegate(m_list));
    m_list->setSelectionMode(QAbstractItemView::NoSelection);
    m_list->setFocusPolicy(Qt::NoFocus);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setUniformItemSizes(true);
    m_list->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // Transparent through the palette: a style sheet of its own would restyle the view.
    QPalette clear = m_list->palette();
    clear.setColor(QPalette::Base, Qt::transparent);
    m_list->setPalette(clear);
    m_list->viewport()->setAutoFillBackground(false);
    card->layout()->addWidget(m_list);
    column->addWidget(card);
}

void AttentionList::setRows(const QList<OverviewView::AttentionRow>& rows) {
    // Rows that read the same stay as they are; the list follows the accounts' order.
    if (m_model->rowCount() > rows.size()) {
        m_model->removeRows(static_cast<int>(rows.size()),
                            m_model->rowCount() - static_cast<int>(rows.size()));
    }
    for (qsizetype i = 0; i < rows.size(); ++i) {
        const int row = static_cast<int>(i);
        if (row < m_model->rowCount()) {
            if (!sameRow(m_model->item(row), rows[i])) {
                m_model->setItem(row, attentionItem(rows[i]));
            }
        } else {
            m_model->appendRow(attentionItem(rows[i]));
        }
    }
    m_list->setFixedHeight(static_cast<int>(rows.size()) * kAttentionRowHeight);
}
