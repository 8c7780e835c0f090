#include "ui/AccessibleParts.h"

#include <QAccessibleWidget>
#include <QToolButton>
#include <QVariant>

namespace {
constexpr char kSegment[] = "tallyfenSegment";

// A segment: a radio button among its neighbours, which one press turns on.
class SegmentAccessible final : public QAccessibleWidget {
public:
    explicit SegmentAccessible(QToolButton* button)
        : QAccessibleWidget(button, QAccessible::RadioButton) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = segment()->isChecked();
        return state;
    }
    QStringList actionNames() const override {
        return QStringList{pressAction()} + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& action) override {
        if (action == pressAction()) {
            segment()->click();
            return;
        }
        QAccessibleWidget::doAction(action);
    }

private:
    QToolButton* segment() const { return static_cast<QToolButton*>(widget()); }
};

// A logo: a picture, and one that isn't there unless it was given a name.
class LogoAccessible final : public QAccessibleWidget {
public:
    explicit LogoAccessible(QWidget* logo)
        : QAccessibleWidget(logo, QAccessible::Graphic) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.invisible = state.invisible || widget()->accessibleName().isEmpty();
        return state;
    }
};

QAccessibleInterface* factory(const QString& className, QObject* object) {
    // By its class's name: the logo's own code asks for this factory.
    if (className == QLatin1String("ProviderLogoWidget") && object->isWidgetType()) {
        return new LogoAccessible(static_cast<QWidget*>(object));
    }
    if (auto* button = qobject_cast<QToolButton*>(object); button && button->property(kSegment).toBool()) {
        return new SegmentAccessible(button);
    }
    return nullptr;
}
} // namespace

void AccessibleParts::install() {
    static const bool installed = [] {
        QAccessible::installFactory(&factory);
        return true;
    }();
    Q_UNUSED(installed);
}

void AccessibleParts::markSegment(QToolButton* button) {
    install();
    button->setProperty(kSegment, true);
}
