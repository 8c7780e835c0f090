#pragma once

#include <QWidget>

class QVariantAnimation;

// The brand mark inside a slowly turning ring: one full turn in 18 seconds, for ever,
// or still when the desktop asks for less motion. One accessible element, "Tallyfen".
class OnboardingOrbit final : public QWidget {
    Q_OBJECT

public:
    explicit OnboardingOrbit(QWidget* parent = nullptr);

    void setReduceMotion(bool reduce);
    double rotation() const noexcept { return m_rotation; }
    bool isTurning() const;

    QSize sizeHint() const override { return QSize(112, 112); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QVariantAnimation* m_turn;
    double m_rotation = 0;
    bool m_reduceMotion = false;
};
