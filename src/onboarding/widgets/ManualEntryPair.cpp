#include "onboarding/widgets/ManualEntryPair.h"

#include "ui/BlockParts.h"
#include "ui/FormField.h"
#include "ui/Theme.h"

#include <QComboBox>
#include <QDateTimeEdit>
#include <QLineEdit>
#include <QVBoxLayout>

ManualEntryPair::ManualEntryPair(const OnboardingContent::ManualPair& pair, QWidget* parent)
    : QWidget(parent) {
    using Ink = ElidedLabel::Ink;
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Theme::kSpaceS);
    m_title = BlockParts::text(pair.title, Theme::kBody, QFont::DemiBold, Ink::primary, this);
    layout->addWidget(m_title);
    auto* row = BlockParts::row(Theme::kSpaceS);
    m_used = new QLineEdit(this);
    m_used->setPlaceholderText(QStringLiteral("0"));
    row->addWidget(FormField::labelled(pair.usedTitle, m_used, this), 1);
    auto* slash =
        BlockParts::text(QStringLiteral("/"), Theme::kHeadline, QFont::Normal, Ink::secondary, this);
    slash->setFixedWidth(12);
    row->addWidget(slash, 0, Qt::AlignBottom);
    m_limit = new QLineEdit(this);
    row->addWidget(FormField::labelled(pair.limitTitle, m_limit, this), 1);
    m_reset = new QComboBox(this);
    for (const OnboardingResetMode mode : pair.resetModes) {
        m_reset->addItem(mode.title(), mode.rawValue());
    }
    row->addWidget(FormField::labelled(pair.resetTitle, m_reset, this), 1);
    layout->addLayout(row);
    m_date = new QDateTimeEdit(this);
    m_date->setCalendarPopup(true);
    m_date->setDisplayFormat(QLocale().dateTimeFormat(QLocale::ShortFormat));
    m_dateRow = FormField::labelled(QStringLiteral("Resets"), m_date, this);
    m_dateRow->setMaximumWidth(280);
    layout->addWidget(m_dateRow);
    setContent(pair);
}

void ManualEntryPair::setContent(const OnboardingContent::ManualPair& pair) {
    m_title->setFullText(pair.title);
    // Both pairs have a "Used" and a "Limit": the pair's title tells them apart.
    for (QWidget* control : std::initializer_list<QWidget*>{m_used, m_limit, m_reset, m_date}) {
        control->setAccessibleDescription(pair.title);
    }
    m_dateRow->setVisible(pair.resetsTitle.has_value());
}
