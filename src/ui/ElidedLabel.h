#pragma once

#include "views/Tone.h"

#include <QLabel>
#include <QStaticText>

// A label that never widens its window and never hides what it says: text longer than
// its line wraps onto more lines (between words where it can, inside a word where one
// alone is wider than the line), so a number, a unit, a date or a title is always whole.
// Only free text a person typed (an account's label) is cut instead, with an ellipsis
// on its last line, while its accessible name and tooltip keep the whole text (the first
// thousand characters of an absurdly long one).
class ElidedLabel final : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(const QString& text = QString(), QWidget* parent = nullptr);

    void setFullText(const QString& text);
    const QString& fullText() const noexcept { return m_fullText; }

    // Free text is cut to its lines rather than wrapped without end.
    void setFreeText(bool free);
    bool isFreeText() const noexcept { return m_free; }
    // How many lines free text may wrap to; one by default. Other text takes the lines it
    // needs.
    void setMaximumLines(int lines);
    // True when some of the text can't be seen in the space the label was given: cut with
    // an ellipsis, or wrapped to more lines than its height holds.
    bool isCut() const;

    // Draws the text in a colour of the theme, chosen anew for the window's light or
    // dark palette: primary or secondary text, or a tone.
    enum class Ink { palette, primary, secondary, tone };
    void setStyle(int pixels, QFont::Weight weight, Ink ink, Tone tone = Tone::muted);
    // Draws figures at one width each, so a number that changes does not jitter.
    void setTabularFigures(bool tabular);

    bool hasHeightForWidth() const override { return !m_free || m_lines > 1; }
    int heightForWidth(int width) const override;

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void elide();
    void updatePolicy();
    // Forgets what was measured of the text in the current font.
    void textOrFontChanged();
    // The width of the whole text on one line, measured once per text and font.
    int naturalWidth() const;
    // The widest word, up to a limit: the narrowest the label goes without breaking a word.
    int widestWord() const;
    // The height of the whole text wrapped at `width`, measured once per width.
    int wrappedHeight(int width) const;
    QTextOption textOption() const;

    QString m_fullText;
    // What is measured and shown of the text: all of it, unless it is longer than any
    // label could show (then its start and an ellipsis).
    QString m_measured;
    bool m_free = false;
    int m_lines = 1;
    Ink m_ink = Ink::palette;
    Tone m_tone = Tone::muted;
    struct HeightFor {
        int width = -1;
        int height = 0;
    };
    mutable HeightFor m_heightFor;
    mutable int m_naturalWidth = -1;
    mutable int m_widestWord = -1;
    // Until its first resize a label has no width of its own to cut the text to: it holds
    // the whole text, and measuring starts when the layout has placed it.
    bool m_placed = false;
    QStaticText m_laidOut;
    int m_laidOutWidth = -1;
};
