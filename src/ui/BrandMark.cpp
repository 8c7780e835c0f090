#include "ui/BrandMark.h"

#include "ui/Theme.h"

#include <QPainter>

BrandMark::BrandMark(int size, QWidget* parent)
    : QWidget(parent)
    , m_size(size) {
    setFixedSize(size, size);
    setAccessibleName(QStringLiteral("Tallyfen"));
}

void BrandMark::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme::Appearance look = Theme::appearance(palette());
    const QColor accent = Theme::colors(Tone::accent, Theme::Appearance::light).foreground;
    const QRectF tile(0, 0, m_size, m_size);
    painter.setPen(Qt::NoPen);
    painter.setBrush(accent);
    painter.drawRoundedRect(tile, m_size * 0.26, m_size * 0.26);
    // Three bars, each taller than the last, in the card colour.
    painter.setBrush(look == Theme::Appearance::dark ? QColor(0xEC, 0xEE, 0xF1) : QColor(Qt::white));
    const double bar = m_size * 0.14;
    const double gap = m_size * 0.09;
    const double left = (m_size - (3 * bar + 2 * gap)) / 2;
    const double bottom = m_size * 0.76;
    for (int i = 0; i < 3; ++i) {
        const double height = m_size * (0.24 + 0.14 * i);
        painter.drawRoundedRect(QRectF(left + i * (bar + gap), bottom - height, bar, height), bar / 2,
                                bar / 2);
    }
}
