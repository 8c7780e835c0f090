#pragma once

#include <QAbstractButton>

// A settings row that is one control: its label at the leading edge and a switch at the
// trailing edge. Checkable; the label is its accessible name, Space toggles it.
class ToggleSwitch final : public QAbstractButton {
    Q_OBJECT

public:
    explicit ToggleSwitch(const QString& text, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};
