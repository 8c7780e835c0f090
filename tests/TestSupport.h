#pragma once

#include <QMetaType>
#include <QTest>

// The current row's value of a data column, for tests that read many columns.
template <typename T>
T fetched(const char* column) {
    return *static_cast<T*>(QTest::qData(column, ::qMetaTypeId<T>()));
}

#include <optional>

using OptionalDouble = std::optional<double>;
Q_DECLARE_METATYPE(OptionalDouble)

namespace QTest {
// Readable failure messages for optional amounts.
inline char* toString(const std::optional<double>& value) {
    return value ? QTest::toString(*value) : qstrdup("absent");
}
} // namespace QTest
