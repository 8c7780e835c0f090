#pragma once

#include "model/Timestamp.h"
#include "ui/ElidedLabel.h"
#include "ui/Theme.h"

#include <QDateTime>
#include <QString>

class QLineEdit;
class QPushButton;
class QWidget;

// The small pieces the account sheet is made of.
namespace EditorParts {
// A button of the sheet that Return never presses: Save is the only default button.
QPushButton* sheetButton(const QString& title, Theme::ButtonRole role, const QString& name, QWidget* parent);
ElidedLabel* note(const QString& text, QWidget* parent);
ElidedLabel* paragraph(const QString& text, QWidget* parent);
QLineEdit* lineEdit(const QString& prompt, QWidget* parent);
QDateTime localTime(Timestamp moment);
// The sheet's title above its page; the title's label goes into `title`.
QWidget* sheetHeader(const QString& text, ElidedLabel*& title, QWidget* parent);
// The sheet's refusal: a critical symbol and the text, which goes into `text`.
QWidget* errorRow(QWidget* parent, ElidedLabel*& text);
// A titled field row's title, to rename it with its content.
ElidedLabel* titleOf(QWidget* row);
} // namespace EditorParts
