#pragma once

#include "views/Tone.h"

#include <QLabel>
#include <QStaticText>

// A label that never widens its window: text longer than the space it gets is cut with
// an ellipsis (on its last line, when it may wrap), while its accessible name and
// tooltip keep the whole text (the first thousand characters of an absurdly long one).
class ElidedLabel final : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(const QString& text = QString(), QWidget* parent = nullptr);

    void setFullText(const QString& text);
    const QString& fullText() const noexcept { return m_fullText; }
    // How many lines the text may wrap to; one by default.
    void setMaximumLines(int lines);

    // Draws the text in a colour of the theme, chosen anew for the window's light or
    // dark palette: primary or secondary text, or a tone.
    enum class Ink { palette, primary, secondary, tone };
    void setStyle(int pixels, QFont::Weight weight, Ink ink, Tone tone = Tone::muted);
    // Draws figures at one width each, so a number that changes does not jitter.
    void setTabularFigures(bool tabular);

    bool hasHeightForWidth() const override { return m_lines > 1; }
    int heightForWidth(int width) const override;

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void elide();
    // Forgets what was measured of the text in the current font.
    void textOrFontChanged();
    // The width of the whole text on one line, measured once per text and font.
    int naturalWidth() const;
    // The height of the whole text wrapped at `width`, measured once per width.
    int wrappedHeight(int width) const;

    QString m_fullText;
    // What is measured and shown of the text: all of it, unless it is longer than any
    // line could show (then its start and an ellipsis).
    QString m_measured;
    int m_lines = 1;
    Ink m_ink = Ink::palette;
    Tone m_tone = Tone::muted;
    struct HeightFor {
        int width = -1;
        int height = 0;
    };
    mutable HeightFor m_heightFor;
    mutable int m_naturalWidth = -1;
    // Until its first resize a label has no width of its own to cut the text to: it holds
    // the whole text, and measuring starts when the layout has placed it.
    bool m_placed = false;
    QStaticText m_laidOut;
    int m_laidOutWidth = -1;
};
