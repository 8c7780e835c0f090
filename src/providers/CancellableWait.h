#pragma once

#include <QObject>
#include <QTimer>

#include <chrono>

// A wait on the monotonic clock that can be ended early. finished() comes once: at
// the end of the wait, or at once when cancelled.
class CancellableWait final : public QObject {
    Q_OBJECT

public:
    explicit CancellableWait(std::chrono::milliseconds duration, QObject* parent = nullptr);

    void start();
    void cancel();
    bool isCancelled() const noexcept { return m_cancelled; }
    bool isWaiting() const noexcept { return m_timer.isActive(); }

signals:
    void finished();

private:
    QTimer m_timer;
    bool m_cancelled = false;
};
