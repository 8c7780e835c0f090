#include "ui/TrendChartWidget.h"

#include "ui/Theme.h"
#include "views/CatmullRom.h"

#include <QLocale>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QtMath>

namespace {
constexpr int kTrendHeight = 150;
constexpr QSize kSparkline(150, 44);
constexpr double kPointRadius = 2.5;

QFont captionFont(const QFont& base) {
    return Theme::tabular(Theme::font(base, Theme::kCaption));
}

// A range that has room in it, also when every value is the same.
std::pair<double, double> padded(double low, double high) {
    if (high > low) {
        return {low, high};
    }
    const double half = low == 0 ? 1 : qAbs(low) * 0.5;
    return {low - half, high + half};
}
} // namespace

TrendChartWidget::TrendChartWidget(const TrendChartContent& content, QWidget* parent)
    : QWidget(parent) {
    setContent(content);
}

void TrendChartWidget::setContent(const TrendChartContent& content) {
    m_content = content;
    m_picture = QPixmap();
    setAccessibleName(isSparkline() ? content.accessibleName
                                    : (content.isEmpty() ? content.emptyText : content.yAxisLabel));
    setAccessibleDescription(content.accessibleDescription);
    if (isSparkline()) {
        setFixedSize(kSparkline);
    } else {
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        setFixedHeight(kTrendHeight);
    }
    updateGeometry();
    update();
}

QSize TrendChartWidget::sizeHint() const {
    return isSparkline() ? kSparkline : QSize(320, kTrendHeight);
}

QSize TrendChartWidget::minimumSizeHint() const {
    return isSparkline() ? kSparkline : QSize(160, kTrendHeight);
}

void TrendChartWidget::paintEvent(QPaintEvent*) {
    // What the picture depends on besides the data: size, scale, light or dark, contrast, font.
    const qreal ratio = devicePixelRatioF();
    const size_t key =
        qHashMulti(0, width(), height(), qRound(ratio * 8), static_cast<int>(Theme::appearance(palette())),
                   static_cast<int>(Theme::contrast()), font().key());
    if (m_picture.isNull() || key != m_pictureKey) {
        m_picture = QPixmap(size() * ratio);
        m_picture.setDevicePixelRatio(ratio);
        m_picture.fill(Qt::transparent);
        QPainter picture(&m_picture);
        draw(picture);
        m_pictureKey = key;
    }
    QPainter(this).drawPixmap(0, 0, m_picture);
}

void TrendChartWidget::draw(QPainter& painter) {
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme::Appearance look = Theme::appearance(palette());
    const QColor accent = Theme::colors(Tone::accent, look).foreground;
    const QColor secondary = Theme::secondaryText(look);
    const QFont caption = captionFont(font());
    painter.setFont(caption);

    if (m_content.isEmpty()) {
        painter.setPen(secondary);
        painter.drawText(rect(), Qt::AlignCenter, m_content.emptyText);
        return;
    }

    const QFontMetrics metrics(caption);
    QRectF plot = QRectF(rect());
    const auto [minY, maxY] = padded(m_content.axisMinY, m_content.axisMaxY);
    const auto [minX, maxX] = padded(m_content.minX, m_content.maxX);
    if (!isSparkline()) {
        // Room for the y marks on the leading side, the x marks and the axis labels.
        int widest = 0;
        for (const TrendChartContent::YMark& mark : m_content.yMarks) {
            widest = std::max(widest, metrics.horizontalAdvance(mark.text));
        }
        const int leading = widest + Theme::kSpaceS + metrics.height();
        plot.adjust(leading, Theme::kSpaceS, -Theme::kSpaceS, -(metrics.height() * 2 + Theme::kSpaceS));
    } else {
        plot.adjust(kPointRadius, kPointRadius, -kPointRadius, -kPointRadius);
    }
    const auto map = [&](const QPointF& point) {
        return QPointF(plot.left() + (point.x() - minX) / (maxX - minX) * plot.width(),
                       plot.bottom() - (point.y() - minY) / (maxY - minY) * plot.height());
    };
    QList<QPointF> mapped;
    mapped.reserve(m_content.points.size());
    for (const QPointF& point : m_content.points) {
        mapped.append(map(point));
    }

    if (!isSparkline()) {
        // Quiet grid and marks: three y values, the x marks every second day.
        for (const TrendChartContent::YMark& mark : m_content.yMarks) {
            const double y = map(QPointF(minX, mark.value)).y();
            painter.setPen(QPen(Theme::separator(look), 1));
            painter.drawLine(QPointF(plot.left(), y), QPointF(plot.right(), y));
            painter.setPen(secondary);
            painter.drawText(QRectF(metrics.height(), y - metrics.height() / 2.0,
                                    plot.left() - metrics.height() - Theme::kSpaceXS, metrics.height()),
                             Qt::AlignRight | Qt::AlignVCenter, mark.text);
        }
        // A mark every second day; a label only where it has room after the last one, so
        // a long history reads as a calm row of dates rather than a smudge.
        double labelWidth = 0;
        for (const TrendChartContent::XMark& mark : m_content.xMarks) {
            labelWidth = std::max(labelWidth, metrics.horizontalAdvance(mark.text) + double(Theme::kSpaceS));
        }
        double lastLabelEnd = -1e9;
        for (const TrendChartContent::XMark& mark : m_content.xMarks) {
            const double x = map(QPointF(mark.at.secondsSinceReference(), minY)).x();
            if (x < plot.left() - 0.5 || x > plot.right() + 0.5) {
                continue;
            }
            painter.setPen(QPen(Theme::separator(look), 1));
            painter.drawLine(QPointF(x, plot.bottom()), QPointF(x, plot.bottom() + 3));
            if (x - labelWidth / 2 < lastLabelEnd) {
                continue;
            }
            lastLabelEnd = x + labelWidth / 2;
            painter.setPen(secondary);
            painter.drawText(
                QRectF(x - labelWidth / 2, plot.bottom() + Theme::kSpaceXS, labelWidth, metrics.height()),
                Qt::AlignHCenter | Qt::AlignTop, mark.text);
        }
        painter.setPen(secondary);
        // The axis labels.
        painter.drawText(QRectF(plot.left(), height() - metrics.height(), plot.width(), metrics.height()),
                         Qt::AlignHCenter, m_content.xAxisLabel);
        painter.save();
        painter.translate(0, plot.center().y());
        painter.rotate(-90);
        painter.drawText(QRectF(-plot.height() / 2, 0, plot.height(), metrics.height()), Qt::AlignHCenter,
                         m_content.yAxisLabel);
        painter.restore();
    }

    // The line through every point, as cubic Bézier segments, and the area under it.
    QPainterPath line(mapped.first());
    for (const CatmullRom::Segment& segment : CatmullRom::bezierSegments(mapped)) {
        line.cubicTo(segment.control1, segment.control2, segment.end);
    }
    // The area stands on 0 where the axis holds it, else on the axis's bottom.
    const double base = std::clamp(map(QPointF(minX, 0)).y(), plot.top(), plot.bottom());
    QPainterPath area = line;
    area.lineTo(mapped.last().x(), base);
    area.lineTo(mapped.first().x(), base);
    area.closeSubpath();
    QColor fill = accent;
    fill.setAlphaF(isSparkline() ? 0.10F : 0.12F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawPath(area);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(accent, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPath(line);
    if (!isSparkline()) {
        // One dot drawn once, stamped on every point: far cheaper than 90 anti-aliased
        // ellipses, and the same pixels.
        const qreal ratio = devicePixelRatioF();
        const int side = qCeil((kPointRadius * 2 + 2) * ratio);
        QPixmap dot(side, side);
        dot.fill(Qt::transparent);
        {
            QPainter dotPainter(&dot);
            dotPainter.setRenderHint(QPainter::Antialiasing);
            dotPainter.setPen(Qt::NoPen);
            dotPainter.setBrush(accent);
            dotPainter.drawEllipse(QPointF(side / 2.0, side / 2.0), kPointRadius * ratio,
                                   kPointRadius * ratio);
        }
        dot.setDevicePixelRatio(ratio);
        const double half = side / ratio / 2.0;
        for (const QPointF& point : mapped) {
            painter.drawPixmap(QPointF(point.x() - half, point.y() - half), dot);
        }
    }
}
