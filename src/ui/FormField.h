#pragma once

#include <QString>

class QWidget;

// A form's input under its title. The title is the input's accessible name and its
// buddy, so a screen reader and a tool driving the window find the input by it.
class FormField final {
public:
    FormField() = delete;

    // `control` moves into the returned row; `note`, when given, goes under it.
    static QWidget* labelled(const QString& title, QWidget* control, QWidget* parent,
                             const QString& note = QString());
};
