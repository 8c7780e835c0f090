#pragma once

#include <QStyledItemDelegate>

// Draws the sidebar's rows: quiet section titles, the overview with its symbol, the
// providers with their logo and count, and the accounts with their logo, status dot,
// name and second line. The selected row sits on an accent-tinted capsule.
class SidebarDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    static constexpr int kSectionHeight = 30;
    static constexpr int kItemHeight = 32;
    static constexpr int kAccountHeight = 46;
    static constexpr int kLogoSize = 18;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};
