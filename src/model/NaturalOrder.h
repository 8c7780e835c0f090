#pragma once

#include <QString>

// Orders names as a person does in the user's locale: by the locale's collation, with
// digits inside names compared by value ("model-9" before "model-10"). ICU does the work.
class NaturalOrder final {
public:
    NaturalOrder() = delete;

    // Negative, zero or positive, as a is before, equal to or after b.
    static int compare(const QString& a, const QString& b);
    static bool lessThan(const QString& a, const QString& b) { return compare(a, b) < 0; }
};
