#include "ui/ElidedLabel.h"

#include <QApplication>
#include <QEvent>
#include <QFontMetrics>
#include <QPainter>
#include <QTextOption>

#include "ui/LongText.h"
#include "ui/Theme.h"

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent)
    : QLabel(parent) {
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    setFullText(text);
}

void ElidedLabel::setFullText(const QString& text) {
    if (text == m_fullText) {
        return;
    }
    m_fullText = text;
    textOrFontChanged();
    setAccessibleName(LongText::bounded(text, LongText::kReadLimit));
    elide();
    updateGeometry();
}

void ElidedLabel::setMaximumLines(int lines) {
    m_lines = qMax(1, lines);
    textOrFontChanged();
    setWordWrap(m_lines > 1);
    QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    policy.setHeightForWidth(m_lines > 1);
    setSizePolicy(policy);
    elide();
    updateGeometry();
}

void ElidedLabel::setStyle(int pixels, QFont::Weight weight, Ink ink, Tone tone) {
    setFont(Theme::font(font(), pixels, weight));
    m_ink = ink;
    m_tone = tone;
    update();
}

void ElidedLabel::setTabularFigures(bool tabular) {
    QFont figures = font();
    if (tabular) {
        figures = Theme::tabular(figures);
    } else {
        figures.setFamilies(QApplication::font().families());
    }
    setFont(figures);
    elide();
    updateGeometry();
}

void ElidedLabel::paintEvent(QPaintEvent* event) {
    if (m_ink == Ink::palette) {
        QLabel::paintEvent(event);
        return;
    }
    const Theme::Appearance look = Theme::appearance(window()->palette());
    const QColor color = m_ink == Ink::primary     ? Theme::primaryText(look)
                         : m_ink == Ink::secondary ? Theme::secondaryText(look)
                                                   : Theme::colors(m_tone, look).foreground;
    const QRect box = contentsRect();
    // The text is laid out once per text, font and width, not on every paint.
    if (m_laidOutWidth != box.width() || m_laidOut.text() != text()) {
        m_laidOut = QStaticText(text());
        m_laidOut.setTextFormat(Qt::PlainText);
        m_laidOut.setTextOption(QTextOption(alignment() & Qt::AlignHorizontal_Mask));
        m_laidOut.setTextWidth(m_lines > 1 ? box.width() : -1);
        m_laidOut.prepare(QTransform(), font());
        m_laidOutWidth = box.width();
    }
    const QSizeF size = m_laidOut.size();
    const Qt::Alignment align = alignment();
    qreal x = box.left();
    if (m_lines == 1 && align & Qt::AlignRight) {
        x = box.left() + box.width() - size.width();
    } else if (m_lines == 1 && align & Qt::AlignHCenter) {
        x = box.left() + (box.width() - size.width()) / 2;
    }
    qreal y = box.top();
    if (align & Qt::AlignBottom) {
        y = box.top() + box.height() - size.height();
    } else if (!(align & Qt::AlignTop)) {
        y = box.top() + (box.height() - size.height()) / 2;
    }
    QPainter painter(this);
    painter.setPen(color);
    painter.setFont(font());
    painter.drawStaticText(QPointF(x, y), m_laidOut);
}

int ElidedLabel::heightForWidth(int width) const {
    // A layout asks with the width of its column; the label never gets wider than its
    // maximum, and wraps at that.
    const int wraps = qBound(1, width, maximumWidth());
    return qMin(wrappedHeight(wraps), fontMetrics().lineSpacing() * m_lines);
}

int ElidedLabel::wrappedHeight(int width) const {
    // Layouts ask again and again for the same width; wrapping the text is what costs.
    if (width != m_heightFor.width) {
        m_heightFor = {
            width,
            fontMetrics().boundingRect(QRect(0, 0, width, 100000), Qt::TextWordWrap, m_measured).height()};
    }
    return m_heightFor.height;
}

int ElidedLabel::naturalWidth() const {
    if (m_naturalWidth < 0) {
        m_naturalWidth = fontMetrics().horizontalAdvance(m_measured);
    }
    return m_naturalWidth;
}

void ElidedLabel::textOrFontChanged() {
    m_measured = LongText::bounded(m_fullText, LongText::kLineLimit * m_lines);
    m_heightFor = {};
    m_naturalWidth = -1;
    m_laidOutWidth = -1;
}

QSize ElidedLabel::minimumSizeHint() const {
    return QSize(fontMetrics().horizontalAdvance(QStringLiteral("…")) * 3, fontMetrics().height());
}

QSize ElidedLabel::sizeHint() const {
    // Asks for its whole text, at most a sensible line: a 300-character label asks for
    // no more than 480 pixels and gets cut to what the layout gives.
    return QSize(qMin(naturalWidth() + 2, 480), fontMetrics().height());
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    m_placed = true;
    elide();
}

void ElidedLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        textOrFontChanged();
        elide();
        updateGeometry();
    }
}

void ElidedLabel::elide() {
    QString shown;
    if (!m_placed) {
        shown = m_measured;
    } else if (m_lines == 1) {
        // Most texts fit: measured once, they need no cutting on each resize.
        shown = naturalWidth() <= width()
                    ? m_measured
                    : fontMetrics().elidedText(m_measured, Qt::ElideRight, qMax(width(), 1));
    } else {
        // The longest start of the text that, with an ellipsis, wraps into the lines allowed.
        const QFontMetrics metrics = fontMetrics();
        const QRect box(0, 0, qMax(width(), 1), 100000);
        const int allowed = metrics.lineSpacing() * m_lines;
        const auto fits = [&](const QString& candidate) {
            return metrics.boundingRect(box, Qt::TextWordWrap, candidate).height() <= allowed;
        };
        if (wrappedHeight(qMax(width(), 1)) <= allowed) {
            shown = m_measured;
        } else {
            qsizetype low = 0;
            qsizetype high = m_measured.size();
            while (low < high) {
                const qsizetype middle = (low + high + 1) / 2;
                if (fits(m_measured.left(middle).trimmed() + QStringLiteral("…"))) {
                    low = middle;
                } else {
                    high = middle - 1;
                }
            }
            shown = m_measured.left(low).trimmed() + QStringLiteral("…");
        }
    }
    if (text() != shown) {
        setText(shown);
    }
    setToolTip(shown != m_fullText ? LongText::bounded(m_fullText, LongText::kReadLimit) : QString());
}
