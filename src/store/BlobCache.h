#pragma once

#include <QByteArray>

#include <optional>
#include <utility>

// Remembers the value decoded from one stored blob. The key is the stored bytes
// themselves, so a hit can never give a different result than decoding afresh.
template <typename T>
class BlobCache final {
public:
    template <typename Decode>
    const T& get(const std::optional<QByteArray>& bytes, Decode&& decode) const {
        if (!m_value || !sameBytes(bytes)) {
            m_value = std::forward<Decode>(decode)(bytes);
        }
        // Holding the caller's copy lets the next look-up match by sharing alone.
        m_bytes = bytes;
        return *m_value;
    }

    // Remembers `value` as what `bytes` decode to. Only for a value the bytes were just
    // encoded from, so that the pair stays true.
    void prime(const std::optional<QByteArray>& bytes, T value) const {
        m_bytes = bytes;
        m_value = std::move(value);
    }

    // Whether two stored values hold the same bytes. Shared data, the common case,
    // needs no comparison of contents.
    static bool sameBytes(const std::optional<QByteArray>& a, const std::optional<QByteArray>& b) {
        if (a.has_value() != b.has_value()) {
            return false;
        }
        return !a || a->isSharedWith(*b) || *a == *b;
    }

private:
    bool sameBytes(const std::optional<QByteArray>& bytes) const { return sameBytes(bytes, m_bytes); }

    mutable std::optional<QByteArray> m_bytes;
    mutable std::optional<T> m_value;
};
