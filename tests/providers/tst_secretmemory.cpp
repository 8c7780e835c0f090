#include <QProcess>
#include <QTest>

// After a refresh, no copy of the key is left in the process's memory, freed or not
// (secret_probe counts them); a copy kept on purpose is found, so the count can be trusted.
class TestSecretMemory final : public QObject {
    Q_OBJECT

    static QByteArray run(const QStringList& arguments) {
        QProcess probe;
        probe.start(QStringLiteral(SECRET_PROBE), arguments);
        if (!probe.waitForFinished(60000)) {
            probe.kill();
            return "timed out";
        }
        return probe.readAllStandardOutput().trimmed();
    }

private slots:
    void noCopyOfTheKeyOutlivesTheRefresh() {
        const QByteArray output = run({});
        if (output.startsWith("skipped")) {
            QSKIP(output.constData());
        }
        QCOMPARE(output, QByteArray("copies 0"));
    }

    void aCopyKeptOnPurposeIsFound() {
        const QByteArray output = run({QStringLiteral("--keep-a-copy")});
        if (output.startsWith("skipped")) {
            QSKIP(output.constData());
        }
        QVERIFY2(output.startsWith("copies ") && output.mid(7).toInt() >= 1, output.constData());
    }
};

QTEST_GUILESS_MAIN(TestSecretMemory)
#include "tst_secretmemory.moc"
