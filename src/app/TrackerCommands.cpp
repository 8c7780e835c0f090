#include "app/TrackerCommands.h"

#include "core/CommandCenter.h"

#include <QAction>
#include <QApplication>
#include <QMenu>

QList<TrackerCommands::Command> TrackerCommands::commands() {
#ifdef Q_OS_MACOS
    // Command-Delete: the Mac's Delete key is the one Qt calls Backspace.
    const QKeySequence deleteShortcut(Qt::CTRL | Qt::Key_Backspace);
#else
    const QKeySequence deleteShortcut(Qt::CTRL | Qt::Key_Delete);
#endif
    // Qt::CTRL is the Command key on macOS and Ctrl elsewhere.
    return {
        {QStringLiteral("Add Account"), QKeySequence(Qt::CTRL | Qt::Key_N), CommandCenter::kAddAccount},
        {QStringLiteral("Refresh Usage"), QKeySequence(Qt::CTRL | Qt::Key_R),
         CommandCenter::kRefreshAccounts},
        {QStringLiteral("Delete Selected Account"), deleteShortcut, CommandCenter::kDeleteSelectedAccount},
    };
}

TrackerCommands::TrackerCommands(QMenuBar* menuBar, QObject* parent)
    : QObject(parent) {
    QMenu* fileMenu = menuBar->addMenu(QStringLiteral("&File"));
    fileMenu->setObjectName(QStringLiteral("fileMenu"));
    QMenu* viewMenu = menuBar->addMenu(QStringLiteral("&View"));
    viewMenu->setObjectName(QStringLiteral("viewMenu"));

    QList<QAction*> actions;
    for (const Command& command : commands()) {
        auto* action = new QAction(command.title, this);
        action->setShortcut(command.shortcut);
        action->setShortcutContext(Qt::ApplicationShortcut);
        action->setObjectName(command.notification);
        const QString notification = command.notification;
        connect(action, &QAction::triggered, this,
                [notification] { CommandCenter::shared().post(notification); });
        actions.append(action);
    }
    m_addAccount = actions.at(0);
    m_refresh = actions.at(1);
    m_delete = actions.at(2);

    fileMenu->addAction(m_addAccount);
    m_export = fileMenu->addAction(QStringLiteral("Export History…"));
    m_export->setObjectName(QStringLiteral("exportHistoryAction"));
    connect(m_export, &QAction::triggered, this, &TrackerCommands::exportRequested);
    fileMenu->addSeparator();
    m_settings = fileMenu->addAction(QStringLiteral("Settings…"));
    m_settings->setObjectName(QStringLiteral("settingsAction"));
    // Linux desktops have no standard key for preferences; Ctrl+, is the common one.
    const QKeySequence preferences(QKeySequence::Preferences);
    m_settings->setShortcut(preferences.isEmpty() ? QKeySequence(Qt::CTRL | Qt::Key_Comma) : preferences);
    m_settings->setShortcutContext(Qt::ApplicationShortcut);
    m_settings->setMenuRole(QAction::PreferencesRole);
    connect(m_settings, &QAction::triggered, this, &TrackerCommands::settingsRequested);
    fileMenu->addSeparator();
    QAction* quit = fileMenu->addAction(QStringLiteral("Quit Tallyfen"));
    quit->setShortcut(QKeySequence::Quit);
    quit->setMenuRole(QAction::QuitRole);
    connect(quit, &QAction::triggered, qApp, &QApplication::quit);

    viewMenu->addAction(m_refresh);
    viewMenu->addAction(m_delete);
}
