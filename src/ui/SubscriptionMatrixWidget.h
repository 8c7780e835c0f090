#pragma once

#include "views/MatrixRowContent.h"

#include <QHash>
#include <QUuid>
#include <QWidget>

class QVBoxLayout;

// The matrix mode of the dashboard: a header of four columns and one row a
// subscription, each row a flat button that selects its account.
class SubscriptionMatrixWidget final : public QWidget {
    Q_OBJECT

public:
    explicit SubscriptionMatrixWidget(const QList<MatrixRowContent>& rows, QWidget* parent = nullptr);

    // Shows these rows in this order; a row whose content is unchanged is kept as it is.
    void setRows(const QList<MatrixRowContent>& rows);

signals:
    void selected(const QUuid& id);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    struct Row {
        MatrixRowContent content;
        QWidget* widget = nullptr;
    };
    QVBoxLayout* m_rowsLayout = nullptr;
    QHash<QUuid, Row> m_rows;
};
