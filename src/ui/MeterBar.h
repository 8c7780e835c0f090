#pragma once

#include "views/Tone.h"

#include <QWidget>

// A thin rounded bar from 0 to 1 in a tone, on a faint track.
class MeterBar final : public QWidget {
    Q_OBJECT

public:
    explicit MeterBar(QWidget* parent = nullptr);

    void setValue(double value, Tone tone);
    double value() const noexcept { return m_value; }

    QSize sizeHint() const override { return QSize(120, 6); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double m_value = 0;
    Tone m_tone = Tone::accent;
};
