#pragma once

#include <QCoreApplication>
#include <QEvent>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <ctime>

// The probes' reports of the moments their window was first shown and first painted, on
// the system-wide monotonic clock, so that the benchmark can tell start-up from the
// process's exit.
inline void reportMoment(const char* what) {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    std::printf("%s %lld\n", what, static_cast<long long>(now.tv_sec) * 1000000000LL + now.tv_nsec);
    std::fflush(stdout);
}

// Reports "shown" now, then "painted" once `window` has drawn its first frame (the paint
// events of one update are delivered together; the report follows them), and quits.
class FirstFrame final : public QObject {
public:
    explicit FirstFrame(QWidget* window)
        : QObject(window)
        , m_window(window) {
        reportMoment("shown");
        QCoreApplication::instance()->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (!m_painted && event->type() == QEvent::Paint && watched->isWidgetType() &&
            static_cast<QWidget*>(watched)->window() == m_window) {
            m_painted = true;
            QTimer::singleShot(0, this, [] {
                reportMoment("painted");
                QCoreApplication::quit();
            });
        }
        return false;
    }

private:
    QWidget* m_window;
    bool m_painted = false;
};
