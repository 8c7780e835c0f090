#pragma once

#include <QWidget>

// Five capsules in a row, one a page: those up to the current one in the accent colour,
// the rest faint. One accessible element, labelled with the step.
class StepCapsules final : public QWidget {
    Q_OBJECT

public:
    explicit StepCapsules(QWidget* parent = nullptr);

    void setStep(int filled, const QString& label);
    int filled() const noexcept { return m_filled; }

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int m_filled = 1;
};
