#include "core/HistoryExport.h"

#include "core/CoreFixtures.h"
#include "model/UsageJson.h"
#include "store/ProviderAccount.h"

#include "FileProtection.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

namespace {
const Timestamp kNow(800'000'000.0);

UsageSnapshot snapshot(double offset, std::optional<double> used, std::optional<double> limit,
                       std::optional<Timestamp> reset) {
    return UsageSnapshot{.source = UsageSource::manual,
                         .capturedAt = kNow.addingSeconds(offset),
                         .windows = {UsageWindow{.id = QStringLiteral("short, \"one\""),
                                                 .title = QStringLiteral("Requests\\nper minute"),
                                                 .unit = UsageUnit::requests,
                                                 .horizon = UsageHorizon::shortTerm,
                                                 .used = used,
                                                 .limit = limit,
                                                 .resetAt = reset},
                                     UsageWindow{.id = QStringLiteral("open"),
                                                 .title = QStringLiteral("No numbers"),
                                                 .unit = UsageUnit::dollars}}};
}

// Parses CSV with Python's csv module, an independent reader, and gives the rows.
QList<QStringList> readWithPython(const QString& path) {
    QProcess python;
    python.start(QStringLiteral("python3"),
                 {QStringLiteral("-c"),
                  QStringLiteral("import csv, json, sys\n"
                                 "with open(sys.argv[1], newline='', encoding='utf-8') as f:\n"
                                 "    print(json.dumps(list(csv.reader(f))))\n"),
                  path});
    if (!python.waitForFinished(10000) || python.exitCode() != 0) {
        qWarning("python3: %s", python.readAllStandardError().constData());
        return {};
    }
    QList<QStringList> rows;
    for (const QJsonValue& row : QJsonDocument::fromJson(python.readAllStandardOutput()).array()) {
        QStringList fields;
        for (const QJsonValue& value : row.toArray()) {
            fields.append(value.toString());
        }
        rows.append(fields);
    }
    return rows;
}
} // namespace

class TestHistoryExport final : public QObject {
    Q_OBJECT

private:
    // Two accounts: one whose name needs quoting, with two recorded snapshots; one with none.
    QList<ProviderAccount*> accounts(CoreFixture& fixture) {
        ProviderAccount* awkward = fixture.addAccount(QStringLiteral("Team \"A\", north\nwing"));
        awkward->record(snapshot(0, 3, 60, kNow.addingSeconds(60)));
        awkward->record(snapshot(3600, std::nullopt, 60, std::nullopt));
        fixture.addAccount(QStringLiteral("Empty"));
        return fixture.store->accounts();
    }

private slots:
    void csvReadsBackWithARealReader() {
        CoreFixture fixture;
        const QList<ProviderAccount*> all = accounts(fixture);
        const QString path = fixture.dir.filePath(QStringLiteral("history.csv"));
        QString error;
        QVERIFY2(HistoryExport::write(path, HistoryExport::csv(all), &error), qPrintable(error));
        const QList<QStringList> rows = readWithPython(path);
        QCOMPARE(rows.size(), 1 + 2 * 2); // header, two windows in each of two snapshots
        QCOMPARE(rows.at(0), (QStringList{"account id", "account name", "captured at", "window id", "title",
                                          "unit", "used", "limit", "remaining", "reset at"}));
        const QString id = all.first()->secretReference();
        QCOMPARE(rows.at(1),
                 (QStringList{id, QStringLiteral("Team \"A\", north\nwing"), rows.at(1).at(2),
                              QStringLiteral("short, \"one\""), QStringLiteral("Requests\\nper minute"),
                              QStringLiteral("requests"), QStringLiteral("3"), QStringLiteral("60"),
                              QStringLiteral("57"), rows.at(1).at(9)}));
        // Moments in ISO 8601, UTC.
        QCOMPARE(rows.at(1).at(2), kNow.toDateTime().toUTC().toString(Qt::ISODateWithMs));
        QCOMPARE(rows.at(1).at(9), kNow.addingSeconds(60).toDateTime().toUTC().toString(Qt::ISODateWithMs));
        // What is absent stays empty, never 0.
        QCOMPARE(rows.at(2).mid(3), (QStringList{"open", "No numbers", "dollars", "", "", "", ""}));
        QCOMPARE(rows.at(3).mid(6), (QStringList{"", "60", "", ""}));
    }

    void jsonIsTheStoredSnapshots() {
        CoreFixture fixture;
        const QList<ProviderAccount*> all = accounts(fixture);
        const QJsonObject document = QJsonDocument::fromJson(HistoryExport::json(all)).object();
        const QJsonArray list = document.value(QStringLiteral("accounts")).toArray();
        QCOMPARE(list.size(), 2);
        for (qsizetype i = 0; i < list.size(); ++i) {
            const QJsonObject entry = list.at(i).toObject();
            QCOMPARE(entry.value(QStringLiteral("id")).toString(), all.at(i)->secretReference());
            QCOMPARE(entry.value(QStringLiteral("name")).toString(), all.at(i)->displayName());
            QList<UsageSnapshot> read;
            for (const QJsonValue& value : entry.value(QStringLiteral("snapshots")).toArray()) {
                const auto decoded = UsageJson::decode<UsageSnapshot>(
                    QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact));
                QVERIFY2(decoded.ok(), qPrintable(decoded.error()));
                read.append(decoded.value());
            }
            QCOMPARE(read, all.at(i)->snapshotHistory());
        }
    }

    void theFormatFollowsTheName() {
        QCOMPARE(HistoryExport::formatFor(QStringLiteral("a.JSON")), HistoryExport::Format::json);
        QCOMPARE(HistoryExport::formatFor(QStringLiteral("a.csv")), HistoryExport::Format::csv);
        QCOMPARE(HistoryExport::formatFor(QStringLiteral("a")), HistoryExport::Format::csv);
    }

    void aRefusedTargetLeavesNothingAndSaysWhy() {
        CoreFixture fixture;
        const QList<ProviderAccount*> all = accounts(fixture);
        const QString folder = fixture.dir.filePath(QStringLiteral("locked"));
        QVERIFY(QDir().mkpath(folder));
        const QString path = folder + QStringLiteral("/history.csv");
        QFile existing(path);
        QVERIFY(existing.open(QIODevice::WriteOnly));
        existing.write("before");
        existing.close();
        QVERIFY(makeReadOnly(folder, true));
        QString error;
        const bool written = HistoryExport::write(path, HistoryExport::csv(all), &error);
        QVERIFY(makeReadOnly(folder, false));
        QVERIFY(!written);
        QVERIFY(!error.isEmpty());
        QVERIFY(existing.open(QIODevice::ReadOnly));
        QCOMPARE(existing.readAll(), QByteArray("before")); // untouched, no half file
        QCOMPARE(QDir(folder).entryList(QDir::Files), QStringList{QStringLiteral("history.csv")});

        QVERIFY(
            !HistoryExport::write(fixture.dir.filePath(QStringLiteral("no/such/folder/h.csv")), "x", &error));
        QVERIFY(!error.isEmpty());
    }

    void aFullDiskLeavesNoFile() {
        // A 64 KiB file system, filled by a 2 MiB export. Mounting needs root, as the
        // suite runs in CI.
        QTemporaryDir mountPoint;
        if (!mountSmallDisk(mountPoint.path())) {
            QSKIP("mounting a small file system needs root");
        }
        QByteArray big(2 * 1024 * 1024, 'x');
        QString error;
        const QString path = mountPoint.filePath(QStringLiteral("history.csv"));
        const bool written = HistoryExport::write(path, big, &error);
        const QStringList left = QDir(mountPoint.path()).entryList(QDir::Files | QDir::Hidden);
        unmountSmallDisk(mountPoint.path());
        QVERIFY(!written);
        QVERIFY(!error.isEmpty());
        QVERIFY2(left.isEmpty(), qPrintable(left.join(u',')));
    }
};

QTEST_GUILESS_MAIN(TestHistoryExport)
#include "tst_historyexport.moc"
