#include "editor/widgets/ManualHorizonEditor.h"

#include "ui/BlockParts.h"
#include "ui/FormField.h"
#include "ui/Theme.h"
#include "ui/ToggleSwitch.h"

#include <QDateTimeEdit>
#include <QLineEdit>
#include <QVBoxLayout>

ManualHorizonEditor::ManualHorizonEditor(const ManualHorizonFields& fields, QWidget* parent)
    : QWidget(parent) {
    using Ink = ElidedLabel::Ink;
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, Theme::kSpaceXS, 0, Theme::kSpaceXS);
    layout->setSpacing(Theme::kSpaceS);
    m_title = BlockParts::text(fields.title, Theme::kBody, QFont::DemiBold, Ink::primary, this);
    layout->addWidget(m_title);

    auto* numbers = BlockParts::row(Theme::kSpaceM);
    m_limit = new QLineEdit(this);
    m_limit->setInputMethodHints(Qt::ImhFormattedNumbersOnly);
    numbers->addWidget(FormField::labelled(fields.limitTitle, m_limit, this), 1);
    m_used = new QLineEdit(this);
    m_used->setInputMethodHints(Qt::ImhFormattedNumbersOnly);
    numbers->addWidget(FormField::labelled(fields.usedTitle, m_used, this), 1);
    layout->addLayout(numbers);

    m_hasReset = new ToggleSwitch(fields.resetToggleTitle, this);
    layout->addWidget(m_hasReset);
    m_reset = new QDateTimeEdit(this);
    m_reset->setCalendarPopup(true);
    m_reset->setDisplayFormat(QLocale().dateTimeFormat(QLocale::ShortFormat));
    m_resetRow = FormField::labelled(fields.resetPickerTitle, m_reset, this);
    m_resetRow->setMaximumWidth(280);
    layout->addWidget(m_resetRow);
    m_noReset = BlockParts::text(fields.noResetText, Theme::kFootnote, QFont::Normal, Ink::secondary, this,
                                 Tone::muted);
    layout->addWidget(m_noReset);
    setContent(fields);
}

void ManualHorizonEditor::setContent(const ManualHorizonFields& fields) {
    m_title->setFullText(fields.title);
    // Both sections have a "Limit" and a "Used": the section's title tells them apart.
    for (QWidget* control : std::initializer_list<QWidget*>{m_limit, m_used, m_hasReset, m_reset}) {
        control->setAccessibleDescription(fields.title);
    }
    m_hasReset->setChecked(fields.hasReset);
    m_resetRow->setVisible(fields.hasReset);
    m_noReset->setVisible(!fields.hasReset);
}
