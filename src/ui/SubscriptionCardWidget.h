#pragma once

#include "views/SubscriptionCardContent.h"

#include <QWidget>

class QVBoxLayout;

// The full monitoring card of one subscription, drawn from its SubscriptionCardContent:
// identity and badges, then "No snapshot yet" or the horizons, panels and footer.
class SubscriptionCardWidget final : public QWidget {
    Q_OBJECT

public:
    SubscriptionCardWidget(const SubscriptionCardContent& content, const QList<UsagePoint>& trend,
                           QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};
