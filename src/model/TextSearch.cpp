#include "model/TextSearch.h"

#include <unicode/uchar.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>

#include <vector>

namespace {
const UChar* utf16(const QString& text) {
    return reinterpret_cast<const UChar*>(text.utf16());
}

// A text in one of the canonical forms; the text itself when ICU can't give it.
QString normalized(const QString& text, bool compose) {
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* form = compose ? unorm2_getNFCInstance(&status) : unorm2_getNFDInstance(&status);
    if (U_FAILURE(status)) {
        return text;
    }
    std::vector<UChar> out(static_cast<std::size_t>(text.size()) * 3 + 16);
    const int32_t length = unorm2_normalize(form, utf16(text), static_cast<int32_t>(text.size()), out.data(),
                                            static_cast<int32_t>(out.size()), &status);
    if (U_FAILURE(status)) {
        return text;
    }
    return QString(reinterpret_cast<const QChar*>(out.data()), length);
}

QString decomposed(const QString& text) {
    return normalized(text, false);
}

bool turkic(const QLocale& locale) {
    return locale.language() == QLocale::Turkish || locale.language() == QLocale::Azerbaijani;
}

// A mark that belongs to the letter before it.
bool isMark(QChar c) {
    return u_getCombiningClass(c.unicode()) != 0 || c.category() == QChar::Mark_NonSpacing ||
           c.category() == QChar::Mark_Enclosing || c.category() == QChar::Mark_SpacingCombining;
}
} // namespace

QString TextSearch::folded(const QString& text, const QLocale& locale) {
    // The Turkic folding of İ to i applies to the letter as one character, so there the
    // text is composed first; elsewhere it is decomposed, as caseless matching asks.
    const bool dottedI = turkic(locale);
    const QString first = normalized(text, dottedI);
    const uint32_t options = dottedI ? U_FOLD_CASE_EXCLUDE_SPECIAL_I : U_FOLD_CASE_DEFAULT;
    UErrorCode status = U_ZERO_ERROR;
    // Full folding at most triples a text (ß becomes ss, some ligatures three letters).
    std::vector<UChar> out(static_cast<std::size_t>(first.size()) * 3 + 16);
    const int32_t length = u_strFoldCase(out.data(), static_cast<int32_t>(out.size()), utf16(first),
                                         static_cast<int32_t>(first.size()), options, &status);
    if (U_FAILURE(status)) {
        return first.toCaseFolded();
    }
    return decomposed(QString(reinterpret_cast<const QChar*>(out.data()), length));
}

bool TextSearch::containsIgnoringCase(const QString& text, const QString& query, const QLocale& locale) {
    return query.isEmpty() || containsFolded(folded(text, locale), folded(query, locale));
}

bool TextSearch::containsFolded(const QString& haystack, const QString& needle) {
    if (needle.isEmpty()) {
        return true;
    }
    // A match counts only where it ends at the end of a letter: "e" is not found in the
    // "e" that a combining accent follows.
    for (qsizetype at = haystack.indexOf(needle); at >= 0; at = haystack.indexOf(needle, at + 1)) {
        const qsizetype end = at + needle.size();
        if (end >= haystack.size() || !isMark(haystack.at(end))) {
            return true;
        }
    }
    return false;
}
