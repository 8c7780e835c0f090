#include "ui/ReflowRow.h"

#include <QWidget>

ReflowRow::ReflowRow(int spacing)
    : m_gap(spacing) {
    setContentsMargins(0, 0, 0, 0);
}

ReflowRow::~ReflowRow() {
    while (QLayoutItem* item = takeAt(0)) {
        delete item;
    }
}

void ReflowRow::addItem(QLayoutItem* item) {
    m_items.append(item);
    invalidate();
}

void ReflowRow::addLayout(QLayout* layout) {
    addChildLayout(layout);
    addItem(layout);
}

QLayoutItem* ReflowRow::itemAt(int index) const {
    return index >= 0 && index < m_items.size() ? m_items.at(index) : nullptr;
}

QLayoutItem* ReflowRow::takeAt(int index) {
    if (index < 0 || index >= m_items.size()) {
        return nullptr;
    }
    invalidate();
    return m_items.takeAt(index);
}

bool ReflowRow::sideBySide(int width) const {
    if (m_items.size() < 2) {
        return true;
    }
    return m_items.at(0)->sizeHint().width() + m_gap + m_items.at(1)->sizeHint().width() <= width;
}

int ReflowRow::heightOf(const QLayoutItem* item, int width) const {
    return item->hasHeightForWidth() ? item->heightForWidth(width) : item->sizeHint().height();
}

int ReflowRow::heightForWidth(int width) const {
    if (m_items.isEmpty()) {
        return 0;
    }
    if (m_items.size() < 2) {
        return heightOf(m_items.at(0), width);
    }
    const QLayoutItem* trailing = m_items.at(1);
    if (sideBySide(width)) {
        const int trailingWidth = trailing->sizeHint().width();
        return qMax(heightOf(m_items.at(0), width - m_gap - trailingWidth),
                    heightOf(trailing, trailingWidth));
    }
    return heightOf(m_items.at(0), width) + m_gap / 2 +
           heightOf(trailing, qMin(width, trailing->sizeHint().width()));
}

QSize ReflowRow::sizeHint() const {
    int width = 0;
    for (const QLayoutItem* item : m_items) {
        width += item->sizeHint().width();
    }
    width += m_items.size() > 1 ? m_gap : 0;
    return {width, heightForWidth(width)};
}

QSize ReflowRow::minimumSize() const {
    int width = 0;
    for (const QLayoutItem* item : m_items) {
        width = qMax(width, item->minimumSize().width());
    }
    return {width, heightForWidth(width)};
}

void ReflowRow::setArrangementFollower(std::function<void(bool)> follower) {
    m_follower = std::move(follower);
    m_arranged.reset();
}

void ReflowRow::setGeometry(const QRect& rect) {
    QLayout::setGeometry(rect);
    if (m_items.isEmpty()) {
        return;
    }
    QLayoutItem* leading = m_items.at(0);
    if (m_items.size() < 2) {
        leading->setGeometry(rect);
        return;
    }
    QLayoutItem* trailing = m_items.at(1);
    const bool beside = sideBySide(rect.width());
    if (m_follower && m_arranged != beside) {
        m_arranged = beside;
        m_follower(beside);
    }
    if (beside) {
        const int trailingWidth = trailing->sizeHint().width();
        const int leadingWidth = rect.width() - m_gap - trailingWidth;
        leading->setGeometry(QRect(rect.x(), rect.y(), leadingWidth, heightOf(leading, leadingWidth)));
        trailing->setGeometry(QRect(rect.right() + 1 - trailingWidth, rect.y(), trailingWidth,
                                    heightOf(trailing, trailingWidth)));
        return;
    }
    // Under the leading part, at the leading edge, as wide as it asks.
    const int leadingHeight = heightOf(leading, rect.width());
    leading->setGeometry(QRect(rect.x(), rect.y(), rect.width(), leadingHeight));
    const int trailingWidth = qMin(rect.width(), trailing->sizeHint().width());
    trailing->setGeometry(QRect(rect.x(), rect.y() + leadingHeight + m_gap / 2, trailingWidth,
                                heightOf(trailing, trailingWidth)));
}
