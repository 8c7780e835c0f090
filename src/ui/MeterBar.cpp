#include "ui/MeterBar.h"

#include "ui/Theme.h"

#include <QPainter>

MeterBar::MeterBar(QWidget* parent)
    : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFixedHeight(6);
}

void MeterBar::setValue(double value, Tone tone) {
    m_value = qBound(0.0, value, 1.0);
    m_tone = tone;
    setAccessibleName(QStringLiteral("%1 %").arg(qRound(m_value * 100)));
    update();
}

void MeterBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme::Appearance look = Theme::appearance(palette());
    const QRectF track = QRectF(rect());
    const double radius = track.height() / 2;
    painter.setPen(Qt::NoPen);
    painter.setBrush(Theme::colors(Tone::muted, look).fill);
    painter.drawRoundedRect(track, radius, radius);
    if (m_value > 0) {
        QRectF filled = track;
        filled.setWidth(qMax(track.height(), track.width() * m_value));
        painter.setBrush(Theme::colors(m_tone, look).foreground);
        painter.drawRoundedRect(filled, radius, radius);
    }
}
