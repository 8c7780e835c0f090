#include "providers/CancellableWait.h"

CancellableWait::CancellableWait(std::chrono::milliseconds duration, QObject* parent)
    : QObject(parent) {
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(duration);
    connect(&m_timer, &QTimer::timeout, this, &CancellableWait::finished);
}

void CancellableWait::start() {
    m_cancelled = false;
    m_timer.start();
}

void CancellableWait::cancel() {
    if (!m_timer.isActive()) {
        return;
    }
    m_timer.stop();
    m_cancelled = true;
    Q_EMIT finished();
}
