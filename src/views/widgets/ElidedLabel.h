#pragma once

#include "views/Tone.h"

#include <QLabel>
#include <QStaticText>

// A label that never widens its window: text longer than the space it gets is cut with
// an ellipsis (on its last line, when it may wrap), while its accessible name and
// tooltip keep the whole text.
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

    QString m_fullText;
    int m_lines = 1;
    Ink m_ink = Ink::palette;
    Tone m_tone = Tone::muted;
    struct HeightFor {
        int width = -1;
        int height = 0;
    };
    mutable HeightFor m_heightFor;
    QStaticText m_laidOut;
    int m_laidOutWidth = -1;
};
