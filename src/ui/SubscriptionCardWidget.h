#pragma once

#include "views/SubscriptionCardContent.h"

#include <QWidget>

class QHBoxLayout;
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

private:
    QHBoxLayout* identityRow(const SubscriptionCardContent& card);
    void addAdditional(QVBoxLayout* layout, const SubscriptionCardContent& card);
    QHBoxLayout* footerRow(const SubscriptionCardContent& card, const QList<UsagePoint>& trend);
};
