#pragma once

#include "views/OverviewView.h"

#include <QWidget>

class QListView;
class QStandardItemModel;

// The overview's list of accounts that need attention, under its heading: logo, name,
// message and pulse a row. A row that reads the same is left as it is.
class AttentionList final : public QWidget {
    Q_OBJECT

public:
    AttentionList(const OverviewView::SectionHeading& heading, QWidget* parent = nullptr);

    void setRows(const QList<OverviewView::AttentionRow>& rows);

private:
    QStandardItemModel* m_model = nullptr;
    QListView* m_list = nullptr;
};
