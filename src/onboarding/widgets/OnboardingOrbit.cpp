#include "onboarding/widgets/OnboardingOrbit.h"

#include "ui/BrandMark.h"
#include "ui/Theme.h"

#include <QPainter>
#include <QVariantAnimation>

namespace {
constexpr int kTurnMilliseconds = 18'000;
constexpr int kMark = 56;
} // namespace

OnboardingOrbit::OnboardingOrbit(QWidget* parent)
    : QWidget(parent)
    , m_turn(new QVariantAnimation(this)) {
    setAccessibleName(QStringLiteral("Tallyfen"));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setFixedSize(sizeHint());
    auto* mark = new BrandMark(kMark, this);
    mark->move((width() - kMark) / 2, (height() - kMark) / 2);
    m_turn->setStartValue(0.0);
    m_turn->setEndValue(360.0);
    m_turn->setDuration(kTurnMilliseconds);
    m_turn->setLoopCount(-1);
    m_turn->setEasingCurve(QEasingCurve::Linear);
    connect(m_turn, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        m_rotation = value.toDouble();
        update();
    });
}

void OnboardingOrbit::setReduceMotion(bool reduce) {
    m_reduceMotion = reduce;
    if (reduce) {
        m_turn->stop();
        m_rotation = 0;
        update();
    } else if (isVisible()) {
        m_turn->start();
    }
}

bool OnboardingOrbit::isTurning() const {
    return m_turn->state() == QAbstractAnimation::Running;
}

void OnboardingOrbit::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (!m_reduceMotion) {
        m_turn->start();
    }
}

void OnboardingOrbit::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    m_turn->stop(); // nothing turns where nobody sees it
}

void OnboardingOrbit::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme::Appearance look = Theme::appearance(palette());
    const QColor accent = Theme::colors(Tone::accent, look).foreground;
    const QRectF ring = QRectF(rect()).adjusted(6, 6, -6, -6);
    QColor faint = accent;
    faint.setAlphaF(0.15F);
    painter.setPen(QPen(faint, 2));
    painter.drawEllipse(ring);
    // A bright arc and a dot on the ring, turned by the rotation.
    painter.translate(ring.center());
    painter.rotate(m_rotation);
    painter.translate(-ring.center());
    painter.setPen(QPen(accent, 2.5, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(ring, 90 * 16, -70 * 16);
    painter.setPen(Qt::NoPen);
    painter.setBrush(accent);
    painter.drawEllipse(QPointF(ring.center().x(), ring.top()), 4, 4);
}
