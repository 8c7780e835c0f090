#include "ui/SubscriptionMatrixWidget.h"

#include "ui/BadgeWidget.h"
#include "ui/BlockParts.h"
#include "ui/PressableButton.h"
#include "ui/Theme.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

namespace {
using Ink = ElidedLabel::Ink;
constexpr std::array<int, 4> kStretch{3, 2, 2, 2};

QWidget* cellWidget(const MatrixRowContent::Cell& cell, QWidget* parent) {
    auto* box = new QWidget(parent);
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    if (!cell.empty.isEmpty()) {
        layout->addWidget(BlockParts::text(cell.empty, Theme::kFootnote, QFont::Normal, Ink::secondary, box));
    }
    for (const MatrixRowContent::Cell::Line& line : cell.lines) {
        auto* top = new QHBoxLayout;
        top->setSpacing(Theme::kSpaceXS);
        top->addWidget(new BadgeWidget(line.dot, box));
        top->addWidget(BlockParts::text(line.used, Theme::kFootnote, QFont::Medium, Ink::primary, box), 1);
        layout->addLayout(top);
        layout->addWidget(BlockParts::text(line.limit, Theme::kCaption, QFont::Normal, Ink::secondary, box));
    }
    if (!cell.more.isEmpty()) {
        layout->addWidget(BlockParts::text(cell.more, Theme::kCaption, QFont::Medium, Ink::secondary, box));
    }
    layout->addStretch(1);
    return box;
}

// One row: a flat button over the whole width that selects its account. A click (press
// and release on the same row), Return, Enter or Space opens it.
class MatrixRow final : public PressableButton {
public:
    MatrixRow(const MatrixRowContent& content, SubscriptionMatrixWidget* matrix, QWidget* parent)
        : PressableButton(parent) {
        setObjectName(QStringLiteral("matrixRow"));
        setAccessibleName(content.name);
        setAccessibleDescription(content.statusLine());
        setCursor(Qt::PointingHandCursor);
        setFocusPolicy(Qt::StrongFocus);
        connect(this, &QAbstractButton::clicked, matrix,
                [matrix, id = content.id] { Q_EMIT matrix->selected(id); });
        auto* layout = new QHBoxLayout(this);
        layout->setContentsMargins(Theme::kSpaceM, Theme::kSpaceM, Theme::kSpaceM, Theme::kSpaceM);
        layout->setSpacing(Theme::kSpaceL);
        auto* who = new QVBoxLayout;
        who->setSpacing(2);
        who->addWidget(BlockParts::text(content.name, Theme::kFootnote, QFont::DemiBold, Ink::primary, this));
        who->addWidget(
            BlockParts::text(content.subtitle, Theme::kCaption, QFont::Normal, Ink::secondary, this));
        who->addStretch(1);
        layout->addLayout(who, kStretch[0]);
        layout->addWidget(cellWidget(content.shortTerm, this), kStretch[1]);
        layout->addWidget(cellWidget(content.weekly, this), kStretch[2]);
        auto* state = new QVBoxLayout;
        state->setSpacing(2);
        auto* pulse = new QHBoxLayout;
        pulse->addWidget(new BadgeWidget(content.pulse, this));
        pulse->addStretch(1);
        state->addLayout(pulse);
        state->addWidget(BlockParts::text(content.status, Theme::kCaption, QFont::Medium, Ink::tone, this,
                                          content.statusTone));
        for (const QString& line : {content.source, content.billingOnly, content.countdown}) {
            if (!line.isEmpty()) {
                state->addWidget(
                    BlockParts::text(line, Theme::kCaption, QFont::Normal, Ink::secondary, this));
            }
        }
        state->addStretch(1);
        layout->addLayout(state, kStretch[3]);
    }

    // Every row but the first has a hairline above it.
    void setFirst(bool first) {
        if (first != m_first) {
            m_first = first;
            update();
        }
    }

    QSize sizeHint() const override { return layout()->sizeHint(); }
    QSize minimumSizeHint() const override { return layout()->minimumSize(); }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        if (!m_first) {
            painter.fillRect(QRect(0, 0, width(), 1), Theme::separator(Theme::appearance(palette())));
        }
        paintFocusRing(painter, QRectF(rect()).adjusted(kFocusRing, kFocusRing, -kFocusRing, -kFocusRing),
                       Theme::kRadiusCard);
    }

private:
    bool m_first = false;
};
} // namespace

SubscriptionMatrixWidget::SubscriptionMatrixWidget(const QList<MatrixRowContent>& rows, QWidget* parent)
    : QWidget(parent) {
    setObjectName(QStringLiteral("subscriptionMatrix"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Theme::kSpaceXS, Theme::kSpaceS, Theme::kSpaceXS, Theme::kSpaceS);
    layout->setSpacing(0);
    auto* header = new QHBoxLayout;
    header->setContentsMargins(Theme::kSpaceM, Theme::kSpaceXS, Theme::kSpaceM, Theme::kSpaceS);
    header->setSpacing(Theme::kSpaceL);
    for (qsizetype i = 0; i < MatrixRowContent::kColumns.size(); ++i) {
        header->addWidget(BlockParts::text(MatrixRowContent::kColumns[i], Theme::kCaption, QFont::DemiBold,
                                           Ink::secondary, this),
                          kStretch[static_cast<std::size_t>(i)]);
    }
    layout->addLayout(header);
    layout->addWidget(BlockParts::separator(this));
    m_rowsLayout = new QVBoxLayout;
    m_rowsLayout->setSpacing(0);
    layout->addLayout(m_rowsLayout);
    setRows(rows);
}

void SubscriptionMatrixWidget::setRows(const QList<MatrixRowContent>& rows) {
    // Rows that read the same stay; changed ones are made anew; the order follows `rows`.
    QHash<QUuid, Row> kept;
    QList<QWidget*> order;
    for (const MatrixRowContent& content : rows) {
        Row row = m_rows.take(content.id);
        if (!row.widget || !(row.content == content)) {
            delete row.widget;
            row = Row{content, new MatrixRow(content, this, this)};
        }
        kept.insert(content.id, row);
        order.append(row.widget);
    }
    for (const Row& gone : std::as_const(m_rows)) {
        delete gone.widget;
    }
    m_rows = kept;
    bool inOrder = m_rowsLayout->count() == order.size();
    for (qsizetype i = 0; inOrder && i < order.size(); ++i) {
        inOrder = m_rowsLayout->itemAt(static_cast<int>(i))->widget() == order[i];
    }
    if (!inOrder) {
        while (QLayoutItem* item = m_rowsLayout->takeAt(0)) {
            delete item;
        }
        for (QWidget* row : order) {
            m_rowsLayout->addWidget(row);
            row->show();
        }
    }
    for (qsizetype i = 0; i < order.size(); ++i) {
        static_cast<MatrixRow*>(order[i])->setFirst(i == 0);
    }
}

void SubscriptionMatrixWidget::paintEvent(QPaintEvent*) {
    Theme::paintCard(this);
}
