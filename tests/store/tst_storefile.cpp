// The store file as found on disk: stamped with its schema, refused when a newer version
// wrote it, when it can't be written or is damaged, explained when the disk is full,
// kept for its owner alone, and its log cut back after a large save.
#include "StoreFixtures.h"
#include "core/SingleInstance.h"
#include "store/AccountStore.h"
#include "store/StoreFile.h"

#include "FileProtection.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {
QByteArray digest(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly)
               ? QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256)
               : QByteArray();
}

// Sets the header's user version as another program would.
void stamp(const QString& path, quint32 version) {
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("stamp"));
        db.setDatabaseName(path);
        QVERIFY(db.open());
        QVERIFY(QSqlQuery(db).exec(QStringLiteral("PRAGMA journal_mode=DELETE")));
        QVERIFY(QSqlQuery(db).exec(QStringLiteral("PRAGMA user_version=%1").arg(version)));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("stamp"));
}

mode_t modeOf(const QString& path) {
    struct stat status {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? (status.st_mode & 0777U) : 0;
}

QStringList besides(const QString& folder) {
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}
} // namespace

class TestStoreFile final : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString path() const { return m_dir.filePath(QStringLiteral("accounts.store")); }

    void writeAccounts(int count, const QString& label = QStringLiteral("Work")) {
        QString error;
        auto store = AccountStore::open(path(), &error);
        QVERIFY2(store, qPrintable(error));
        for (int i = 0; i < count; ++i) {
            store->insert(new ProviderAccount(accountInit(label)));
        }
        QVERIFY(store->save(&error));
    }

private slots:
    void cleanup() {
        for (const QString& name : besides(m_dir.path())) {
            makeReadOnly(m_dir.filePath(name), false);
            QFile::remove(m_dir.filePath(name));
        }
    }

    void aNewStoreIsStampedWithItsSchema() {
        writeAccounts(1);
        QCOMPARE(StoreFile::schemaVersion(path()), std::optional<quint32>(StoreFile::kSchemaVersion));
    }

    void anUnstampedStoreIsStampedWhenOpened() {
        writeAccounts(2);
        stamp(path(), 0);
        QCOMPARE(StoreFile::schemaVersion(path()), std::optional<quint32>(0));
        QString error;
        auto store = AccountStore::open(path(), &error);
        QVERIFY2(store, qPrintable(error));
        QCOMPARE(store->accounts().size(), 2);
        store.reset();
        QCOMPARE(StoreFile::schemaVersion(path()), std::optional<quint32>(StoreFile::kSchemaVersion));
    }

    void aStoreOfANewerVersionIsRefusedUntouched() {
        writeAccounts(2);
        stamp(path(), StoreFile::kSchemaVersion + 1);
        const QByteArray before = digest(path());
        const QStringList filesBefore = besides(m_dir.path());
        QString error;
        QVERIFY(!AccountStore::open(path(), &error));
        QCOMPARE(error,
                 QStringLiteral("the file was written by a newer version of Tallyfen (schema 2; this version "
                                "reads up to 1) and was left as it was"));
        QCOMPARE(digest(path()), before);
        QCOMPARE(besides(m_dir.path()), filesBefore); // no log, no index beside it
    }

    void aReadOnlyStoreIsRefusedAtOnce() {
        writeAccounts(1);
        QVERIFY(makeReadOnly(path(), true));
        QString error;
        QVERIFY(!AccountStore::open(path(), &error));
        QVERIFY2(error.endsWith(QStringLiteral("is read-only, so nothing could be kept")), qPrintable(error));
    }

    void aDamagedStoreIsRefusedUntouched() {
        writeAccounts(40, QString(300, u'x'));
        // One page of the table overwritten in its middle, as a failing disk would.
        {
            QFile file(path());
            QVERIFY(file.open(QIODevice::ReadWrite));
            const qint64 page = 4096;
            QVERIFY(file.size() > 4 * page);
            file.seek(2 * page + 8);
            file.write(QByteArray(64, '\xA5'));
        }
        const QByteArray before = digest(path());
        QString error;
        QVERIFY(!AccountStore::open(path(), &error));
        QVERIFY2(error.startsWith(QStringLiteral("the file is damaged (")), qPrintable(error));
        QVERIFY2(error.endsWith(QStringLiteral("); it was left as it was")), qPrintable(error));
        QCOMPARE(digest(path()), before);
    }

    void filesAreTheOwnersAlone() {
        const QString folder = m_dir.filePath(QStringLiteral("made/here"));
        QVERIFY(StoreFile::makePrivateFolder(folder));
        QCOMPARE(modeOf(folder), mode_t(0700));
        const QString store = folder + QStringLiteral("/accounts.store");
        QString error;
        auto opened = AccountStore::open(store, &error);
        QVERIFY2(opened, qPrintable(error));
        opened->insert(new ProviderAccount(accountInit()));
        QVERIFY(opened->save());
        QCOMPARE(modeOf(store), mode_t(0600));
        QCOMPARE(modeOf(store + QStringLiteral("-wal")), mode_t(0600));
        QCOMPARE(modeOf(store + QStringLiteral("-shm")), mode_t(0600));
        // A folder that exists keeps the permissions its owner gave it.
        QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                                  QFile::ReadGroup | QFile::ExeGroup));
        QVERIFY(StoreFile::makePrivateFolder(folder));
        QCOMPARE(modeOf(folder), mode_t(0750));
    }

    void theLogShrinksAfterALargeSave() {
        QString error;
        auto store = AccountStore::open(path(), &error);
        QVERIFY2(store, qPrintable(error));
        auto* account = new ProviderAccount(accountInit());
        store->insert(account);
        account->setLabel(QString(6 * 1024 * 1024, u'w'));
        QVERIFY(store->save(&error));
        account->setLabel(QStringLiteral("small"));
        QVERIFY(store->save(&error));
        account->setLabel(QStringLiteral("smaller"));
        QVERIFY(store->save(&error));
        QVERIFY2(QFileInfo(path() + QStringLiteral("-wal")).size() <= 4 * 1024 * 1024,
                 qPrintable(QString::number(QFileInfo(path() + QStringLiteral("-wal")).size())));
    }

    void aFullDiskAtStartIsCalledFull() {
        if (geteuid() != 0) {
            QSKIP("a small tmpfs for the full disk can only be mounted as root");
        }
        const QString folder = m_dir.filePath(QStringLiteral("small"));
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(mountSmallDisk(folder));
        const auto unmount = qScopeGuard([&] { unmountSmallDisk(folder); });
        fillDisk(folder);
        QString error;
        QVERIFY(!AccountStore::open(folder + QStringLiteral("/accounts.store"), &error));
        QVERIFY2(error.startsWith(QStringLiteral("the disk is full (")), qPrintable(error));
    }

    void theLockFileFollowsNoLink() {
        const QString target = m_dir.filePath(QStringLiteral("precious.txt"));
        QFile precious(target);
        QVERIFY(precious.open(QIODevice::WriteOnly));
        precious.write("keep me\n");
        precious.close();
        const QString store = m_dir.filePath(QStringLiteral("linked.store"));
        QVERIFY(QFile::link(target, SingleInstance::lockPath(store)));
        SingleInstance::Outcome outcome = SingleInstance::Outcome::first;
        const auto instance = SingleInstance::claim(store, &outcome);
        QVERIFY(!instance);
        QCOMPARE(outcome, SingleInstance::Outcome::unguarded);
        QVERIFY(precious.open(QIODevice::ReadOnly));
        QCOMPARE(precious.readAll(), QByteArray("keep me\n"));
    }
};

QTEST_GUILESS_MAIN(TestStoreFile)
#include "tst_storefile.moc"
