#include "ui/PressableButton.h"

#include "ui/Theme.h"

#include <QKeyEvent>
#include <QPainter>

void PressableButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

void PressableButton::paintFocusRing(QPainter& painter, const QRectF& frame, qreal radius) const {
    if (!hasFocus()) {
        return;
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Theme::colors(Tone::accent, Theme::appearance(palette())).foreground, kFocusRing));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(frame, radius, radius);
    painter.restore();
}
