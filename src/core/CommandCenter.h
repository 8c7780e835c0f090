#pragma once

#include <QObject>
#include <QString>

// The in-process notification centre that carries the menu commands to the main
// screen: a named notification with no object and no payload. Posting delivers to
// every observer at once, on the posting (main) thread.
class CommandCenter final : public QObject {
    Q_OBJECT

public:
    static const QString kAddAccount;
    static const QString kRefreshAccounts;
    static const QString kDeleteSelectedAccount;

    static CommandCenter& shared();

    void post(const QString& name);

signals:
    void posted(const QString& name);
};
