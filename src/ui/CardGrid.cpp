#include "ui/CardGrid.h"

#include "ui/Theme.h"

#include <QGridLayout>
#include <QResizeEvent>

CardGrid::CardGrid(int minimumColumnWidth, QWidget* parent)
    : QWidget(parent)
    , m_minimumColumnWidth(minimumColumnWidth)
    , m_grid(new QGridLayout(this)) {
    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setSpacing(Theme::kSpaceL);
    // The grid may narrow below its present columns: it then takes fewer.
    m_grid->setSizeConstraint(QLayout::SetNoConstraint);
}

QSize CardGrid::minimumSizeHint() const {
    return QSize(m_minimumColumnWidth, m_grid->minimumSize().height());
}

void CardGrid::setBalanced(int spacing) {
    m_balanced = true;
    m_grid->setSpacing(spacing);
    m_columns = columnsFor(width() > 0 ? width() : m_minimumColumnWidth);
    place();
}

int CardGrid::columnsFor(int width) const {
    const int spacing = m_grid->horizontalSpacing();
    const int fit = qMax(1, (width + spacing) / (m_minimumColumnWidth + spacing));
    if (!m_balanced || m_cards.isEmpty()) {
        return fit;
    }
    const auto count = static_cast<int>(m_cards.size());
    const int rows = (count + fit - 1) / fit;
    return (count + rows - 1) / rows;
}

void CardGrid::setCards(const QList<QWidget*>& cards) {
    for (QWidget* card : std::as_const(m_cards)) {
        if (!cards.contains(card)) {
            m_grid->removeWidget(card);
            card->hide();
        }
    }
    m_cards = cards;
    for (QWidget* card : m_cards) {
        // Moving a card to another parent restyles all of it; staying costs nothing.
        if (card->parentWidget() != this) {
            card->setParent(this);
        }
    }
    m_columns = columnsFor(width() > 0 ? width() : m_minimumColumnWidth);
    place();
    for (QWidget* card : m_cards) {
        card->show();
    }
}

void CardGrid::place() {
    for (QWidget* card : std::as_const(m_cards)) {
        m_grid->removeWidget(card);
    }
    for (int column = 0; column < m_grid->columnCount(); ++column) {
        m_grid->setColumnStretch(column, column < m_columns ? 1 : 0);
    }
    for (qsizetype i = 0; i < m_cards.size(); ++i) {
        m_grid->addWidget(m_cards[i], static_cast<int>(i / m_columns), static_cast<int>(i % m_columns),
                          m_balanced ? Qt::Alignment() : Qt::AlignTop);
    }
    for (int column = 0; column < m_columns; ++column) {
        m_grid->setColumnStretch(column, 1);
    }
}

void CardGrid::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    const int columns = columnsFor(event->size().width());
    if (columns != m_columns) {
        m_columns = columns;
        place();
    }
}
