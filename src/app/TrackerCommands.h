#pragma once

#include <QKeySequence>
#include <QList>
#include <QMenuBar>
#include <QObject>
#include <QString>

class QAction;

// The menu commands. Each one only posts its named notification; the main screen
// decides what it means in its present state.
class TrackerCommands final : public QObject {
    Q_OBJECT

public:
    struct Command {
        QString title;
        QKeySequence shortcut;
        QString notification;
    };

    // "Add Account", "Refresh Usage" and "Delete Selected Account", in menu order.
    static QList<Command> commands();

    // Adds the commands, and the Settings and Quit items, to `menuBar`.
    TrackerCommands(QMenuBar* menuBar, QObject* parent = nullptr);

    QAction* addAccountAction() const noexcept { return m_addAccount; }
    QAction* refreshAction() const noexcept { return m_refresh; }
    QAction* deleteAction() const noexcept { return m_delete; }
    QAction* settingsAction() const noexcept { return m_settings; }
    QAction* exportAction() const noexcept { return m_export; }

signals:
    void settingsRequested();
    void exportRequested();

private:
    QAction* m_addAccount = nullptr;
    QAction* m_refresh = nullptr;
    QAction* m_delete = nullptr;
    QAction* m_settings = nullptr;
    QAction* m_export = nullptr;
};
