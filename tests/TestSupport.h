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

#include <QCoreApplication>
#include <QEventLoop>

#include <QCoro/QCoroTask>

#include <exception>

// Runs a provider coroutine to its end on the event loop and gives its value, or
// rethrows what it threw. (QCoro::waitFor needs a default-constructible value.)
template <typename T>
T awaitTask(QCoro::Task<T>&& task) {
    std::optional<T> result;
    std::exception_ptr failure;
    bool done = false;
    auto run = [&]() -> QCoro::Task<> {
        try {
            result.emplace(co_await std::move(task));
        } catch (...) {
            failure = std::current_exception();
        }
        done = true;
    };
    run();
    while (!done) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
    return std::move(*result);
}
