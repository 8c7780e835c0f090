#include "ui/ToggleSwitch.h"

#include "ui/LongText.h"

#include "ui/Theme.h"

#include <QPainter>
#include <QStyle>

namespace {
constexpr QSize kTrack(34, 20);
}

ToggleSwitch::ToggleSwitch(const QString& text, QWidget* parent)
    : QAbstractButton(parent) {
    setText(text);
    setAccessibleName(text);
    setCheckable(true);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize ToggleSwitch::sizeHint() const {
    return QSize(fontMetrics().horizontalAdvance(text()) + Theme::kSpaceL + kTrack.width(),
                 qMax(fontMetrics().height(), kTrack.height()) + Theme::kSpaceS);
}

QSize ToggleSwitch::minimumSizeHint() const {
    return QSize(kTrack.width() * 3, sizeHint().height());
}

void ToggleSwitch::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme::Appearance look = Theme::appearance(palette());
    const QRect track(width() - kTrack.width() - 1, (height() - kTrack.height()) / 2, kTrack.width(),
                      kTrack.height());
    painter.setPen(isEnabled() ? Theme::primaryText(look) : Theme::secondaryText(look));
    const QRect label = rect().adjusted(0, 0, -(kTrack.width() + Theme::kSpaceL), 0);
    painter.drawText(label, Qt::AlignVCenter | Qt::AlignLeft,
                     LongText::elided(fontMetrics(), text(), label.width(), LongText::Kind::meaningful));

    const QColor on = Theme::colors(Tone::accent, look).foreground;
    painter.setPen(hasFocus() ? QPen(on, 2) : Qt::NoPen);
    painter.setBrush(isChecked() ? on : Theme::separator(look));
    painter.drawRoundedRect(QRectF(track), kTrack.height() / 2.0, kTrack.height() / 2.0);
    const qreal knob = kTrack.height() - 4;
    const qreal x = isChecked() ? track.right() - knob - 1 : track.left() + 2;
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::card(Theme::Appearance::light));
    painter.drawEllipse(QRectF(x, track.top() + 2, knob, knob));
}
