#pragma once

#include <QString>

#include <functional>

class QLineEdit;
class QObject;

// Ties a text field to the value it stands for. Every change of the field's text is written
// through, however it came: typing, paste, undo and redo, an input method, drag and drop or
// assistive technology setting the text. Text the value itself puts back into the field is
// not written through again.
class BoundText final {
public:
    BoundText() = delete;

    // `write` runs while `context` lives.
    static void bind(QLineEdit* field, QObject* context, std::function<void(const QString&)> write);

    // Shows `text` in a bound field, if it differs, without writing it through.
    static void show(QLineEdit* field, const QString& text);
};
