#pragma once

#include "views/MetricCardContent.h"

#include <QWidget>

class ElidedLabel;
class QLabel;
class MeterBar;

// The card of one window: title and unit icon, the used amount, the ceiling and what
// remains, the bar, the reset line and the note. It draws a MetricCardContent and
// nothing else; every text is a label a screen reader finds by its text.
class MetricCardWidget final : public QWidget {
    Q_OBJECT

public:
    explicit MetricCardWidget(const MetricCardContent& content, QWidget* parent = nullptr);

    void setContent(const MetricCardContent& content);
    const MetricCardContent& content() const noexcept { return m_content; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void applyColors();

    MetricCardContent m_content;
    ElidedLabel* m_title;
    QLabel* m_unitIcon;
    QLabel* m_value;
    ElidedLabel* m_ceiling;
    QLabel* m_remainder;
    MeterBar* m_bar;
    QLabel* m_resetIcon;
    QLabel* m_countdown;
    QLabel* m_resetDate;
    ElidedLabel* m_note;
};
