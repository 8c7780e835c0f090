#include "ui/FormField.h"

#include "ui/BlockParts.h"
#include "ui/Theme.h"

#include <QLabel>
#include <QVBoxLayout>

QWidget* FormField::labelled(const QString& title, QWidget* control, QWidget* parent, const QString& note) {
    using Ink = ElidedLabel::Ink;
    auto* row = new QWidget(parent);
    auto* layout = new QVBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Theme::kSpaceXS);
    ElidedLabel* label = BlockParts::text(title, Theme::kFootnote, QFont::DemiBold, Ink::secondary, row);
    label->setBuddy(control);
    layout->addWidget(label);
    control->setParent(row);
    control->setAccessibleName(title);
    layout->addWidget(control);
    if (!note.isEmpty()) {
        layout->addWidget(
            BlockParts::text(note, Theme::kFootnote, QFont::Normal, Ink::secondary, row, Tone::muted));
    }
    return row;
}
