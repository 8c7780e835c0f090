#pragma once

#include <QLocalServer>
#include <QObject>

#include <memory>

// One process per store. The first launch on a store locks a file beside it and listens
// on a local socket named after it; a later launch on the same store finds the lock held,
// asks the first to bring its window to the front, and ends. The lock is the system's
// (flock): it goes with its process however that ends, so a file left by a process that
// died is simply taken. Launches on different stores don't meet.
class SingleInstance final : public QObject {
    Q_OBJECT

public:
    enum class Outcome {
        first,      // this process owns the store
        handedOver, // another process owns it and was asked to come forward
        unguarded,  // the lock could not be made (an unwritable folder): go on without it
    };

    // Claims `storePath` for this process; the returned object holds the claim while it
    // lives (null unless the outcome is `first`). Nothing listens for later launches until
    // listen(): they wait a second for it.
    static std::unique_ptr<SingleInstance> claim(const QString& storePath, Outcome* outcome);
    // Starts answering later launches on this store (once; again is harmless).
    void listen();
    // The local socket's name for a store: the same for every spelling of its path.
    static QString serverName(const QString& storePath);
    static QString lockPath(const QString& storePath);

    ~SingleInstance() override;

signals:
    // A later launch on this store asked for the window.
    void activationRequested();

private:
    SingleInstance(const QString& storePath, int lockDescriptor);

    QString m_storePath;
    int m_lockDescriptor;
    QLocalServer m_server;
};
