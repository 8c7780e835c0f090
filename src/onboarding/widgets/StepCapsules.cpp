#include "onboarding/widgets/StepCapsules.h"

#include "ui/Theme.h"

#include <QPainter>

namespace {
constexpr int kCount = 5;
constexpr int kWidth = 28;
constexpr int kHeight = 6;
constexpr int kGap = 6;
} // namespace

StepCapsules::StepCapsules(QWidget* parent)
    : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void StepCapsules::setStep(int filled, const QString& label) {
    m_filled = filled;
    setAccessibleName(label);
    update();
}

QSize StepCapsules::sizeHint() const {
    return QSize(kCount * kWidth + (kCount - 1) * kGap, kHeight);
}

void StepCapsules::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const Theme::Appearance look = Theme::appearance(palette());
    QColor faint = Theme::primaryText(look);
    faint.setAlphaF(0.12F);
    for (int i = 0; i < kCount; ++i) {
        painter.setBrush(i < m_filled ? Theme::colors(Tone::accent, look).foreground : faint);
        painter.drawRoundedRect(QRectF(i * (kWidth + kGap), 0, kWidth, kHeight), kHeight / 2.0,
                                kHeight / 2.0);
    }
}
