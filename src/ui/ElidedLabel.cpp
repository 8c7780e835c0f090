#include "ui/ElidedLabel.h"

#include <QApplication>
#include <QEvent>
#include <QFontMetrics>
#include <QPainter>
#include <QTextOption>

#include "ui/LongText.h"
#include "ui/Theme.h"

namespace {
// Text that wraps is measured up to four of the longest lines; beyond that (a provider's
// error page pasted into a message) it is cut, and the tooltip holds the start of it.
constexpr qsizetype kWrappedLimit = LongText::kLineLimit * 4;
// A word wider than this many text heights may be broken inside to fit a narrow line.
constexpr int kWidestWordInHeights = 12;
} // namespace

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent)
    : QLabel(parent) {
    updatePolicy();
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

void ElidedLabel::setFreeText(bool free) {
    if (free == m_free) {
        return;
    }
    m_free = free;
    textOrFontChanged();
    updatePolicy();
    elide();
    updateGeometry();
}

void ElidedLabel::setMaximumLines(int lines) {
    m_lines = qMax(1, lines);
    textOrFontChanged();
    updatePolicy();
    elide();
    updateGeometry();
}

void ElidedLabel::updatePolicy() {
    // Wrapping text asks for its widest word and the height its lines take at the width
    // it is given; free text on one line goes as narrow as three dots and is cut to what
    // it gets.
    const bool wraps = hasHeightForWidth();
    setWordWrap(wraps);
    QSizePolicy policy(QSizePolicy::Preferred, wraps ? QSizePolicy::Preferred : QSizePolicy::Fixed);
    policy.setHeightForWidth(wraps);
    setSizePolicy(policy);
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

QTextOption ElidedLabel::textOption() const {
    QTextOption option(alignment() & Qt::AlignHorizontal_Mask);
    option.setWrapMode(m_free ? QTextOption::WordWrap : QTextOption::WrapAtWordBoundaryOrAnywhere);
    return option;
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    const Theme::Appearance look = Theme::appearance(window()->palette());
    const QColor color = m_ink == Ink::primary     ? Theme::primaryText(look)
                         : m_ink == Ink::secondary ? Theme::secondaryText(look)
                         : m_ink == Ink::tone      ? Theme::colors(m_tone, look).foreground
                                                   : palette().color(foregroundRole());
    const QRect box = contentsRect();
    // The text is laid out once per text, font and width, not on every paint.
    if (m_laidOutWidth != box.width() || m_laidOut.text() != text() ||
        m_laidOut.textOption().alignment() != (alignment() & Qt::AlignHorizontal_Mask)) {
        m_laidOut = QStaticText(text());
        m_laidOut.setTextFormat(Qt::PlainText);
        m_laidOut.setTextOption(textOption());
        m_laidOut.setTextWidth(
            hasHeightForWidth() || alignment() & (Qt::AlignRight | Qt::AlignHCenter) ? box.width() : -1);
        m_laidOut.prepare(QTransform(), font());
        m_laidOutWidth = box.width();
    }
    const QSizeF size = m_laidOut.size();
    const Qt::Alignment align = alignment();
    qreal y = box.top();
    if (align & Qt::AlignBottom) {
        y = box.top() + box.height() - size.height();
    } else if (!(align & Qt::AlignTop)) {
        y = box.top() + qMax<qreal>(0, (box.height() - size.height()) / 2);
    }
    QPainter painter(this);
    painter.setPen(color);
    painter.setFont(font());
    painter.drawStaticText(QPointF(box.left(), y), m_laidOut);
}

int ElidedLabel::heightForWidth(int width) const {
    // A layout asks with the width of its column; the label never gets wider than its
    // maximum, and wraps at that.
    const int wraps = qBound(1, width, maximumWidth());
    const int height = naturalWidth() <= wraps ? fontMetrics().height() : wrappedHeight(wraps);
    return m_free ? qMin(height, fontMetrics().lineSpacing() * m_lines) : height;
}

int ElidedLabel::wrappedHeight(int width) const {
    // Layouts ask again and again for the same width; wrapping the text is what costs.
    if (width != m_heightFor.width) {
        QStaticText wrapped(m_measured);
        wrapped.setTextFormat(Qt::PlainText);
        wrapped.setTextOption(textOption());
        wrapped.setTextWidth(width);
        wrapped.prepare(QTransform(), font());
        m_heightFor = {width, qMax(fontMetrics().height(), qCeil(wrapped.size().height()))};
    }
    return m_heightFor.height;
}

int ElidedLabel::naturalWidth() const {
    if (m_naturalWidth < 0) {
        m_naturalWidth = fontMetrics().horizontalAdvance(m_measured);
    }
    return m_naturalWidth;
}

int ElidedLabel::widestWord() const {
    if (m_widestWord < 0) {
        const QFontMetrics metrics = fontMetrics();
        const int limit = metrics.height() * kWidestWordInHeights;
        m_widestWord = qMin(LongText::widestWord(metrics, m_measured, limit) + 1, limit);
    }
    return m_widestWord;
}

void ElidedLabel::textOrFontChanged() {
    m_measured = LongText::bounded(m_fullText, m_free ? LongText::kLineLimit * m_lines : kWrappedLimit);
    m_heightFor = {};
    m_naturalWidth = -1;
    m_widestWord = -1;
    m_laidOutWidth = -1;
}

QSize ElidedLabel::minimumSizeHint() const {
    if (m_free) {
        return QSize(fontMetrics().horizontalAdvance(QStringLiteral("…")) * 3, fontMetrics().height());
    }
    const int width = widestWord();
    return QSize(width, heightForWidth(width));
}

QSize ElidedLabel::sizeHint() const {
    // Asks for its whole text, at most a sensible line: a 300-character label asks for
    // no more than 480 pixels and gets cut (or wrapped) to what the layout gives.
    const int width = qMax(qMin(naturalWidth() + 2, 480), m_free ? 0 : widestWord());
    return QSize(width, m_free ? fontMetrics().height() : heightForWidth(width));
}

bool ElidedLabel::isCut() const {
    if (text() != m_fullText) {
        return true;
    }
    if (m_free || !m_placed) {
        return false;
    }
    return contentsRect().height() < heightForWidth(contentsRect().width());
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
    if (!m_placed || !m_free) {
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
        if (metrics.boundingRect(box, Qt::TextWordWrap, m_measured).height() <= allowed) {
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
