#pragma once

#include "views/TrendChartContent.h"

#include <QPixmap>
#include <QWidget>

// A history chart drawn with QPainter: an area, a Catmull-Rom line and the points, in the
// accent colour, over the data's own range. The trend chart has its axes and labels and
// is 150 pixels high; the sparkline is a bare 150 × 44 box. With no points it says so.
class TrendChartWidget final : public QWidget {
    Q_OBJECT

public:
    explicit TrendChartWidget(const TrendChartContent& content, QWidget* parent = nullptr);

    void setContent(const TrendChartContent& content);
    const TrendChartContent& content() const noexcept { return m_content; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool isSparkline() const { return m_content.kind == TrendChartContent::Kind::sparkline; }
    void draw(QPainter& painter);

    TrendChartContent m_content;
    // The chart as last drawn: a repaint at the same size, scale, palette and data only
    // copies it. Emptied by new content.
    QPixmap m_picture;
    size_t m_pictureKey = 0;
};
