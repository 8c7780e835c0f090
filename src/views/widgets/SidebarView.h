#pragma once

#include <QUuid>
#include <QWidget>

class ContentView;
class QLineEdit;
class QModelIndex;
class QPushButton;
class QTreeView;
class SidebarModel;

// The main window's left column: the search field "Find subscriptions", the list of
// sections (overview, providers, accounts) drawn from a SidebarModel, and the pinned
// "Add Account" button. Choosing a row sets the controller's selection, and the
// controller's selection moves the list; a search never changes the selection.
class SidebarView final : public QWidget {
    Q_OBJECT

public:
    explicit SidebarView(ContentView* content, QWidget* parent = nullptr);

    SidebarModel* model() const noexcept { return m_model; }
    QTreeView* list() const noexcept { return m_list; }
    QLineEdit* searchField() const noexcept { return m_search; }
    QPushButton* addButton() const noexcept { return m_add; }

    // The context menu of an account row, as built for that account now.
    QMenu* accountMenu(const QUuid& id);

signals:
    void addRequested();
    void editRequested(const QUuid& id);
    void deleteRequested(const QUuid& id);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void buildSearch();
    void buildList();
    void syncSelection();
    void onCurrentChanged(const QModelIndex& current);
    void showContextMenu(const QPoint& position);

    ContentView* m_content;
    SidebarModel* m_model;
    QLineEdit* m_search;
    QTreeView* m_list;
    QPushButton* m_add;
    bool m_syncing = false;
};
