#pragma once

#include <QAbstractButton>

class QPainter;

// A button that is a whole surface (a card, a tile, a row): Return and Enter press it, as
// Space does, and it draws the accent ring that shows the keyboard focus where it likes.
class PressableButton : public QAbstractButton {
    Q_OBJECT

public:
    using QAbstractButton::QAbstractButton;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    // The focus ring round `frame`, while the button has the keyboard focus.
    void paintFocusRing(QPainter& painter, const QRectF& frame, qreal radius) const;

    static constexpr int kFocusRing = 2;
};
