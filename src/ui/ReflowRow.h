#pragma once

#include <QLayout>
#include <QList>

#include <functional>
#include <optional>

// Two parts of a line, leading and trailing: side by side while both have the width they
// ask for, the trailing one under the leading one (at the leading edge) when the line is
// too narrow for that, so neither is squeezed until its text must be cut or wrapped.
class ReflowRow final : public QLayout {
    Q_OBJECT

public:
    explicit ReflowRow(int spacing);
    ~ReflowRow() override;

    // The leading part first, then the trailing one; the leading part takes the width
    // left over when they stand side by side.
    void addItem(QLayoutItem* item) override;
    void addLayout(QLayout* layout);
    QLayoutItem* itemAt(int index) const override;
    QLayoutItem* takeAt(int index) override;
    int count() const override { return static_cast<int>(m_items.size()); }

    QSize sizeHint() const override;
    QSize minimumSize() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    Qt::Orientations expandingDirections() const override { return Qt::Horizontal; }
    void setGeometry(const QRect& rect) override;

    // Whether both parts fit side by side in `width`.
    bool sideBySide(int width) const;
    // Told whenever the parts change between side by side and one under the other (and
    // the first time they are placed), to align what they hold to the new arrangement.
    void setArrangementFollower(std::function<void(bool sideBySide)> follower);

private:
    int heightOf(const QLayoutItem* item, int width) const;

    QList<QLayoutItem*> m_items;
    int m_gap;
    std::function<void(bool)> m_follower;
    std::optional<bool> m_arranged;
};
