#include "model/NaturalOrder.h"

#include <QLocale>

#include <unicode/ucol.h>

#include <memory>

namespace {
struct CollatorCloser {
    void operator()(UCollator* collator) const { ucol_close(collator); }
};

UCollator* collator() {
    // One collator for the main thread, in the locale the program runs in.
    static const std::unique_ptr<UCollator, CollatorCloser> shared = [] {
        UErrorCode status = U_ZERO_ERROR;
        UCollator* made = ucol_open(QLocale().name().toUtf8().constData(), &status);
        if (U_FAILURE(status)) {
            status = U_ZERO_ERROR;
            made = ucol_open("", &status); // the root locale
        }
        if (made) {
            ucol_setAttribute(made, UCOL_NUMERIC_COLLATION, UCOL_ON, &status);
        }
        return std::unique_ptr<UCollator, CollatorCloser>(made);
    }();
    return shared.get();
}
} // namespace

int NaturalOrder::compare(const QString& a, const QString& b) {
    UCollator* ordering = collator();
    if (!ordering) {
        return QString::compare(a, b);
    }
    static_assert(sizeof(UChar) == sizeof(char16_t));
    const UCollationResult result =
        ucol_strcoll(ordering, reinterpret_cast<const UChar*>(a.utf16()), static_cast<int32_t>(a.size()),
                     reinterpret_cast<const UChar*>(b.utf16()), static_cast<int32_t>(b.size()));
    return result == UCOL_LESS ? -1 : (result == UCOL_GREATER ? 1 : 0);
}
