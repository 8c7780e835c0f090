#pragma once

#include "model/AIProvider.h"

#include <QString>

// How an account's name is cleaned before it is stored, and when two names are the same
// name: outer blanks never count, and neither does letter case.
class AccountLabel final {
public:
    AccountLabel() = delete;

    // The label without outer blanks, or "{short name} · Personal" when nothing is left.
    static QString normalized(const QString& label, AIProvider provider);
    // The form two names are compared in: trimmed, then lower case by the user's locale.
    static QString comparable(const QString& label);
    static bool same(const QString& a, const QString& b) { return comparable(a) == comparable(b); }
};
