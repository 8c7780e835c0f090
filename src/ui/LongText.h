#pragma once

#include <QFontMetrics>
#include <QString>

// Text far longer than anything can show (a label pasted from a file, 5 MB of it) is cut
// before it is measured, drawn or handed to a tooltip: shaping it whole takes seconds,
// and nothing past its first couple of thousand characters could be seen anyway.
class LongText final {
public:
    LongText() = delete;

    // More characters than the widest line of the narrowest glyphs holds on any screen.
    static constexpr qsizetype kLineLimit = 2048;
    // What a tooltip or a screen reader is given of a text at most.
    static constexpr qsizetype kReadLimit = 1000;

    // The text itself when it has at most `limit` characters; otherwise its start (never
    // splitting a character) and an ellipsis.
    static QString bounded(const QString& text, qsizetype limit = kLineLimit);
    // The text cut with an ellipsis at the right to fit `width` pixels in `metrics`.
    static QString elided(const QFontMetrics& metrics, const QString& text, int width);
};
