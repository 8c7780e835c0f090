#include "ui/WheelGuard.h"

#include <QAbstractScrollArea>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QScrollBar>
#include <QWheelEvent>

namespace {
// A control whose value a wheel would change.
bool changesValueOnWheel(const QWidget* widget) {
    return qobject_cast<const QAbstractSpinBox*>(widget) || qobject_cast<const QComboBox*>(widget) ||
           (qobject_cast<const QAbstractSlider*>(widget) && !qobject_cast<const QScrollBar*>(widget));
}
} // namespace

void WheelGuard::install() {
    qApp->installEventFilter(new WheelGuard(qApp));
}

bool WheelGuard::eventFilter(QObject* watched, QEvent* event) {
    auto* widget = qobject_cast<QWidget*>(watched);
    if (!widget || !changesValueOnWheel(widget)) {
        return false;
    }
    if (event->type() == QEvent::Polish && widget->focusPolicy() == Qt::WheelFocus) {
        // A wheel must not take the focus on its way past either.
        widget->setFocusPolicy(Qt::StrongFocus);
        return false;
    }
    if (event->type() != QEvent::Wheel || widget->hasFocus()) {
        return false;
    }
    // The page scrolls as if the control were not there.
    const auto* wheel = static_cast<QWheelEvent*>(event);
    for (QWidget* above = widget->parentWidget(); above; above = above->parentWidget()) {
        if (auto* area = qobject_cast<QAbstractScrollArea*>(above)) {
            QWheelEvent passed(area->viewport()->mapFromGlobal(wheel->globalPosition()),
                               wheel->globalPosition(), wheel->pixelDelta(), wheel->angleDelta(),
                               wheel->buttons(), wheel->modifiers(), wheel->phase(), wheel->inverted(),
                               wheel->source());
            QCoreApplication::sendEvent(area->viewport(), &passed);
            break;
        }
    }
    return true;
}
