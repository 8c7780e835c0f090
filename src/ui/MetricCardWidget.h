#pragma once

#include "views/MetricCardContent.h"

#include <QWidget>

class ElidedLabel;

// The card of one window: title and unit icon, the used amount, the ceiling and what
// remains, the bar, the reset line and the note. It draws a MetricCardContent and
// nothing else; every text is a label a screen reader finds by its text.
class MetricCardWidget final : public QWidget {
    Q_OBJECT

public:
    explicit MetricCardWidget(const MetricCardContent& content, QWidget* parent = nullptr);

    const MetricCardContent& content() const noexcept { return m_content; }
    // Takes `content` in place when only its countdown differs (a minute passed) and says
    // so; any other change needs a new card.
    bool follow(const MetricCardContent& content);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    MetricCardContent m_content;
    ElidedLabel* m_countdown = nullptr;
};
