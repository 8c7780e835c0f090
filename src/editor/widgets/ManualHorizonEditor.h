#pragma once

#include "editor/ManualHorizonFields.h"

#include <QWidget>

class ElidedLabel;
class QDateTimeEdit;
class QLineEdit;
class ToggleSwitch;

// The inputs of one manual horizon: its title, "Limit" and "Used" side by side, the
// switch for a known reset time, and then the reset picker or the note that there is none.
class ManualHorizonEditor final : public QWidget {
    Q_OBJECT

public:
    explicit ManualHorizonEditor(const ManualHorizonFields& fields, QWidget* parent = nullptr);

    void setContent(const ManualHorizonFields& fields);

    QLineEdit* limitField() const noexcept { return m_limit; }
    QLineEdit* usedField() const noexcept { return m_used; }
    ToggleSwitch* resetSwitch() const noexcept { return m_hasReset; }
    QDateTimeEdit* resetPicker() const noexcept { return m_reset; }

private:
    ElidedLabel* m_title;
    QLineEdit* m_limit;
    QLineEdit* m_used;
    ToggleSwitch* m_hasReset;
    QWidget* m_resetRow;
    QDateTimeEdit* m_reset;
    ElidedLabel* m_noReset;
};
