#pragma once

#include <QObject>

// A switch that ends the requests of one operation: those in flight are aborted when it
// is thrown, and later ones fail at once.
class RequestCancellation final : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    bool isCancelled() const noexcept { return m_cancelled; }
    void cancel();

signals:
    void cancelled();

private:
    bool m_cancelled = false;
};
