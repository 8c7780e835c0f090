#pragma once

#include <QObject>

// One rule for pointer wheels across the application: a wheel over a picker, spin box,
// date or time field or slider that does not have the keyboard focus scrolls the page it
// sits in and never changes its value. With the focus, the control steps through its
// values as the platform does. Installed once on the application object.
class WheelGuard final : public QObject {
    Q_OBJECT

public:
    explicit WheelGuard(QObject* parent = nullptr)
        : QObject(parent) {}

    // Installs one guard on the running application.
    static void install();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};
