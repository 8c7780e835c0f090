#include "editor/widgets/EditorParts.h"

#include "ui/BlockParts.h"

#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace EditorParts {
using Ink = ElidedLabel::Ink;

QPushButton* sheetButton(const QString& title, Theme::ButtonRole role, const QString& name, QWidget* parent) {
    QPushButton* button = BlockParts::button(title, role, parent);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

ElidedLabel* note(const QString& text, QWidget* parent) {
    return BlockParts::text(text, Theme::kFootnote, QFont::Normal, Ink::secondary, parent, Tone::muted);
}

ElidedLabel* paragraph(const QString& text, QWidget* parent) {
    return BlockParts::text(text, Theme::kBody, QFont::Normal, Ink::secondary, parent, Tone::muted);
}

QLineEdit* lineEdit(const QString& prompt, QWidget* parent) {
    auto* field = new QLineEdit(parent);
    field->setPlaceholderText(prompt);
    return field;
}

QDateTime localTime(Timestamp moment) {
    return moment.clamped().toDateTime().toLocalTime();
}

QWidget* sheetHeader(const QString& text, ElidedLabel*& title, QWidget* parent) {
    auto* header = new QWidget(parent);
    auto* layout = new QVBoxLayout(header);
    layout->setContentsMargins(Theme::kSpaceXL, Theme::kSpaceL, Theme::kSpaceXL, Theme::kSpaceS);
    title = BlockParts::text(text, Theme::kTitle, QFont::DemiBold, Ink::primary, header);
    title->setObjectName(QStringLiteral("editorTitle"));
    layout->addWidget(title);
    return header;
}

QWidget* errorRow(QWidget* parent, ElidedLabel*& text) {
    auto* row = new QWidget(parent);
    row->setObjectName(QStringLiteral("editorError"));
    auto* layout = BlockParts::row(Theme::kSpaceS);
    row->setLayout(layout);
    layout->setContentsMargins(0, Theme::kSpaceS, 0, 0);
    layout->addWidget(
        BlockParts::icon(QStringLiteral("exclamationmark.circle.fill"), 16, row, Tone::critical), 0,
        Qt::AlignTop);
    text = BlockParts::text(QString(), Theme::kBody, QFont::Medium, Ink::tone, row, Tone::critical);
    layout->addWidget(text, 1);
    return row;
}

ElidedLabel* titleOf(QWidget* row) {
    return row->findChild<ElidedLabel*>(QString(), Qt::FindDirectChildrenOnly);
}
} // namespace EditorParts
