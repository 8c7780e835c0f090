#pragma once

#include "ui/PressableButton.h"

// A card that opens something: the card fills the button, a click anywhere or Enter or
// Space presses it, and keyboard focus shows as an accent ring. Its accessible name is
// the card's title, its description the hint.
class CardButton final : public PressableButton {
    Q_OBJECT

public:
    CardButton(QWidget* card, const QString& name, const QString& hint, QWidget* parent = nullptr);

    QWidget* card() const noexcept { return m_card; }
    // Puts a new card in place of the present one, which is deleted.
    void setCard(QWidget* card);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override;
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QWidget* m_card;
};
