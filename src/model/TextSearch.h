#pragma once

#include <QLocale>
#include <QString>

// Whether one text contains another as a person reading either would say: regardless of
// case by the full Unicode case folding ("STRASSE" contains "straße"), in the Turkish
// and Azerbaijani way for dotted and dotless i where the locale is one of those, and with
// composed and decomposed letters alike ("é" either way) — but a letter with a mark is
// not the letter without it ("é" does not contain "e"). ICU does the folding.
class TextSearch final {
public:
    TextSearch() = delete;

    static bool containsIgnoringCase(const QString& text, const QString& query,
                                     const QLocale& locale = QLocale());
    // The form both sides are compared in: canonical, folded, decomposed.
    static QString folded(const QString& text, const QLocale& locale = QLocale());
    // The same test on texts already folded, for a query asked of many texts.
    static bool containsFolded(const QString& foldedText, const QString& foldedQuery);
};
