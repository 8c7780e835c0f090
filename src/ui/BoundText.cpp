#include "ui/BoundText.h"

#include <QLineEdit>
#include <QVariant>

namespace {
// Set on the field while `show` changes its text.
constexpr char kShowing[] = "tallyfenShowingBoundText";
} // namespace

void BoundText::bind(QLineEdit* field, QObject* context, std::function<void(const QString&)> write) {
    QObject::connect(field, &QLineEdit::textChanged, context,
                     [field, write = std::move(write)](const QString& text) {
                         if (!field->property(kShowing).toBool()) {
                             write(text);
                         }
                     });
}

void BoundText::show(QLineEdit* field, const QString& text) {
    if (field->text() == text) {
        return;
    }
    field->setProperty(kShowing, true);
    field->setText(text);
    field->setProperty(kShowing, false);
}
