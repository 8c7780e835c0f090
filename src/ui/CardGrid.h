#pragma once

#include <QList>
#include <QWidget>

class QGridLayout;

// Cards in as many columns as fit, each column at least `minimumColumnWidth` wide; a
// resize that changes the number of columns moves the cards, it never rebuilds them.
class CardGrid final : public QWidget {
    Q_OBJECT

public:
    explicit CardGrid(int minimumColumnWidth, QWidget* parent = nullptr);

    // A few tiles of one kind: as many columns as fit but rows as even as can be (five
    // tiles in three and two rather than four and one), each row's tiles of one height.
    void setBalanced(int spacing);

    // Shows these cards, in reading order, and becomes their parent; earlier cards not
    // among them are taken out and hidden, and remain the caller's to keep or delete.
    void setCards(const QList<QWidget*>& cards);
    const QList<QWidget*>& cards() const noexcept { return m_cards; }
    int columns() const noexcept { return m_columns; }
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    int columnsFor(int width) const;
    void place();

    int m_minimumColumnWidth;
    int m_columns = 1;
    bool m_balanced = false;
    QGridLayout* m_grid;
    QList<QWidget*> m_cards;
};
