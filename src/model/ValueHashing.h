#pragma once

#include <QHashFunctions>

#include <optional>

// qHash for optional members of the value records: an absent value hashes apart from
// every present one, including 0 and the empty string.
template <typename T>
size_t qHash(const std::optional<T>& value, size_t seed = 0) {
    if (!value) {
        return qHash(0x9e3779b9U, seed);
    }
    return qHash(*value, qHash(1U, seed));
}

// Combines the hashes of a record's fields. Unqualified calls find both the global
// overloads above and the enumerations' own (by argument-dependent lookup).
template <typename... Fields>
size_t hashFields(size_t seed, const Fields&... fields) {
    ((seed ^= qHash(fields) + 0x9e3779b9U + (seed << 6) + (seed >> 2)), ...);
    return seed;
}
