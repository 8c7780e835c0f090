#pragma once

#include "onboarding/OnboardingContent.h"

#include <QWidget>

class ElidedLabel;
class QComboBox;
class QDateTimeEdit;
class QLineEdit;

// One manual window of the guided flow: its title, "Used" / "Limit", how the reset is
// known, and the date picker while a time is known.
class ManualEntryPair final : public QWidget {
    Q_OBJECT

public:
    explicit ManualEntryPair(const OnboardingContent::ManualPair& pair, QWidget* parent = nullptr);

    void setContent(const OnboardingContent::ManualPair& pair);

    QLineEdit* usedField() const noexcept { return m_used; }
    QLineEdit* limitField() const noexcept { return m_limit; }
    QComboBox* resetPicker() const noexcept { return m_reset; }
    QDateTimeEdit* datePicker() const noexcept { return m_date; }

private:
    ElidedLabel* m_title;
    QLineEdit* m_used;
    QLineEdit* m_limit;
    QComboBox* m_reset;
    QWidget* m_dateRow;
    QDateTimeEdit* m_date;
};
