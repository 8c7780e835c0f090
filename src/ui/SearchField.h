#pragma once

#include <QLineEdit>

class QAction;

// A search field: a magnifier drawn before the text, and a button that clears it while
// there is text. The magnifier is part of the field's picture, not a control of its own,
// so assistive technology meets the field and its "Clear search" button only.
class SearchField final : public QLineEdit {
    Q_OBJECT

public:
    // `prompt` is the placeholder and the field's accessible name.
    explicit SearchField(const QString& prompt, QWidget* parent = nullptr);

    QAction* clearAction() const noexcept { return m_clear; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QAction* m_clear = nullptr;
};
