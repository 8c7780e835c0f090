#pragma once

#include "views/MatrixRowContent.h"

#include <QUuid>
#include <QWidget>

// The matrix mode of the dashboard: a header of four columns and one row a
// subscription, each row a flat button that selects its account.
class SubscriptionMatrixWidget final : public QWidget {
    Q_OBJECT

public:
    explicit SubscriptionMatrixWidget(const QList<MatrixRowContent>& rows, QWidget* parent = nullptr);

signals:
    void selected(const QUuid& id);

protected:
    void paintEvent(QPaintEvent* event) override;
};
