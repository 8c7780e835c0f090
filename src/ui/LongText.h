#pragma once

#include <QFontMetrics>
#include <QString>
#include <QStringList>

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
    // What a drawn text is: free text a person typed (a label), which may be cut to its
    // line, or text that carries meaning (a value, a unit, a date, a title), which the
    // screens give the room it needs.
    enum class Kind { free, meaningful };
    // The text cut with an ellipsis at the right to fit `width` pixels in `metrics`. A
    // meaningful text that had to be cut is noted, for takeCuts().
    static QString elided(const QFontMetrics& metrics, const QString& text, int width, Kind kind);
    // The width of the text's widest word in `metrics`, at most `limit` pixels: the
    // narrowest a wrapping text goes without breaking a word.
    static int widestWord(const QFontMetrics& metrics, const QString& text, int limit);
    // The meaningful texts drawn cut since the last call: a layout that left one of them
    // too little room (none should).
    static QStringList takeCuts();
};
