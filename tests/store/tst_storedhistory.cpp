#include "StoreFixtures.h"
#include "model/UsageJson.h"
#include "store/AccountStore.h"
#include "store/ProviderAccount.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

namespace {
// A history of `count` snapshots, captured at 1, 2, …, as the store writes it.
QList<QByteArray> entriesOf(int count) {
    QList<QByteArray> entries;
    for (int i = 1; i <= count; ++i) {
        entries.append(*UsageJson::encode(snapshotAt(Timestamp(i), {pointAt(Timestamp(i), i)})).toOptional());
    }
    return entries;
}

// A snapshot in a unit this version does not know, as a newer one might write it.
QByteArray fromANewerVersion(QByteArray entry) {
    return entry.replace("\"tokens\"", "\"lumens\"");
}

QList<double> capturedTimes(const QList<UsageSnapshot>& history) {
    QList<double> times;
    for (const UsageSnapshot& snapshot : history) {
        times.append(snapshot.capturedAt.secondsSinceReference());
    }
    return times;
}

// What the stored history holds, element by element.
QList<QByteArray> storedEntries(const ProviderAccount& account) {
    QList<QByteArray> texts;
    const auto entries = UsageJson::decodeEntries<UsageSnapshot>(*account.snapshotHistoryData());
    for (const auto& entry : entries.value()) {
        texts.append(entry.json);
    }
    return texts;
}
} // namespace

class TestStoredHistory final : public QObject {
    Q_OBJECT

private slots:
    void oneUnreadableEntryCostsOnlyItself() {
        QList<QByteArray> entries = entriesOf(90);
        entries[41] = fromANewerVersion(entries[41]);
        ProviderAccount account(accountInit());
        account.setSnapshotHistoryData(UsageJson::joinEntries(entries));

        const QList<UsageSnapshot> history = account.snapshotHistory();
        QCOMPARE(history.size(), 89);
        QVERIFY(!capturedTimes(history).contains(42.0));
        QCOMPARE(history.first().capturedAt, Timestamp(1));
        QCOMPARE(history.last().capturedAt, Timestamp(90));
    }

    void theTrendSkipsTheUnreadableEntry() {
        QList<QByteArray> entries = entriesOf(5);
        entries[2] = fromANewerVersion(entries[2]);
        ProviderAccount account(accountInit());
        account.setSnapshotHistoryData(UsageJson::joinEntries(entries));
        account.setSnapshot(snapshotAt(Timestamp(5), {pointAt(Timestamp(5), 5)}));
        // All five points fall on one day; the latest readable one stands for it.
        const QList<UsagePoint> trend = account.trendHistory();
        QCOMPARE(trend.size(), 1);
        QCOMPARE(trend.first().value, 5.0);
    }

    void recordingKeepsTheUnreadableEntryByItsBytes() {
        QList<QByteArray> entries = entriesOf(10);
        entries[3] = fromANewerVersion(entries[3]);
        // A flipped byte that leaves the JSON whole but the snapshot unreadable.
        entries[6].replace("\"source\":\"mock\"", "\"source\":\"mocj\"");
        ProviderAccount account(accountInit());
        account.setSnapshotHistoryData(UsageJson::joinEntries(entries));

        QVERIFY(account.record(snapshotAt(Timestamp(11))));
        const QList<QByteArray> stored = storedEntries(account);
        QCOMPARE(stored.size(), 11);
        QCOMPARE(stored.mid(0, 10), entries);
        QCOMPARE(account.snapshotHistory().size(), 9);
        QCOMPARE(account.snapshotHistory().last().capturedAt, Timestamp(11));
    }

    void theBoundOf90CountsUnreadableEntries() {
        QList<QByteArray> entries = entriesOf(90);
        entries[0] = fromANewerVersion(entries[0]);
        entries[50] = fromANewerVersion(entries[50]);
        ProviderAccount account(accountInit());
        account.setSnapshotHistoryData(UsageJson::joinEntries(entries));

        QVERIFY(account.record(snapshotAt(Timestamp(91))));
        const QList<QByteArray> stored = storedEntries(account);
        QCOMPARE(stored.size(), 90);
        // The oldest entry goes, unreadable or not; the one in the middle stays.
        QCOMPARE(stored.first(), entries.at(1));
        QCOMPARE(stored.at(49), entries.at(50));
        QCOMPARE(account.snapshotHistory().size(), 89);
    }

    void aHistoryThatIsNoListStillReadsEmpty() {
        ProviderAccount account(accountInit());
        account.setSnapshotHistoryData(QByteArrayLiteral("{\"capturedAt\":1}"));
        QVERIFY(account.snapshotHistory().isEmpty());
        QVERIFY(account.record(snapshotAt(Timestamp(3))));
        QCOMPARE(storedEntries(account).size(), 1);
    }

    void entriesKeepTheirTextExactly() {
        const QByteArray json = QByteArrayLiteral("[ {\"a\": \"x,]\\\"}\"} ,[1,[2]], 3 ,\"s\" ]");
        const auto entries = UsageJson::decodeEntries<UsageSnapshot>(json);
        QVERIFY(entries);
        QCOMPARE(entries->size(), 4);
        QCOMPARE(entries->at(0).json, QByteArrayLiteral("{\"a\": \"x,]\\\"}\"}"));
        QCOMPARE(entries->at(1).json, QByteArrayLiteral("[1,[2]]"));
        QCOMPARE(entries->at(2).json, QByteArrayLiteral("3"));
        QCOMPARE(entries->at(3).json, QByteArrayLiteral("\"s\""));
        for (const auto& entry : *entries) {
            QVERIFY(!entry.value);
        }
        QVERIFY(UsageJson::decodeEntries<UsageSnapshot>(QByteArrayLiteral("[]"))->isEmpty());
        QVERIFY(!UsageJson::decodeEntries<UsageSnapshot>(QByteArrayLiteral("[1,")));
    }

    // The whole road on a real file: the stored history with one entry from a newer
    // version, read at start, a refresh recorded and saved, and the file read again.
    void theStoreKeepsTheOther89AndTheEntry() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("history.store"));
        QList<QByteArray> entries = entriesOf(90);
        entries[10] = fromANewerVersion(entries[10]);
        QUuid id;
        {
            QString error;
            auto store = AccountStore::open(path, &error);
            QVERIFY2(store, qPrintable(error));
            auto* account = new ProviderAccount(accountInit());
            account->setSnapshotHistoryData(UsageJson::joinEntries(entries));
            id = account->id();
            store->insert(account);
            QVERIFY(store->save(&error));
        }
        {
            QString error;
            auto store = AccountStore::open(path, &error);
            QVERIFY2(store, qPrintable(error));
            ProviderAccount* account = store->account(id);
            QCOMPARE(account->snapshotHistory().size(), 89);
            QVERIFY(account->record(snapshotAt(Timestamp(91))));
            QVERIFY(store->save(&error));
        }
        QString error;
        auto store = AccountStore::open(path, &error);
        QVERIFY2(store, qPrintable(error));
        const QList<QByteArray> stored = storedEntries(*store->account(id));
        QCOMPARE(stored.size(), 90);
        QCOMPARE(stored.at(9), entries.at(10));
        QCOMPARE(store->account(id)->snapshotHistory().size(), 89);
        QCOMPARE(store->account(id)->snapshotHistory().last().capturedAt, Timestamp(91));
    }
};

QTEST_GUILESS_MAIN(TestStoredHistory)
#include "tst_storedhistory.moc"
