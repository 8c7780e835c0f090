#pragma once

#include "views/StatusCardsContent.h"

#include <QWidget>

#include <functional>

class QPushButton;

// The small shared cards drawn from StatusCardsContent: the empty state, the
// unavailable metric, and the two kept ready that no screen places yet (the account
// summary and the metric cell). Each is a card surface with its texts as labels.
class StatusCardWidget final : public QWidget {
    Q_OBJECT

public:
    // The empty state; its button runs `action` and is there only when the content has
    // an action title.
    StatusCardWidget(const StatusCardsContent::EmptyState& content, std::function<void()> action,
                     QWidget* parent = nullptr);
    StatusCardWidget(const StatusCardsContent::Unavailable& content, QWidget* parent = nullptr);
    StatusCardWidget(const StatusCardsContent::AccountSummary& content, QWidget* parent = nullptr);
    StatusCardWidget(const StatusCardsContent::MetricCell& content, QWidget* parent = nullptr);

    QPushButton* actionButton() const noexcept { return m_action; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    explicit StatusCardWidget(QWidget* parent, bool muted);

    bool m_muted;
    QPushButton* m_action = nullptr;
};
