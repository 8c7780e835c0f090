#include "core/StoreLocation.h"
#include "core/TallyfenApp.h"

#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace {
QProcessEnvironment environmentWith(const std::optional<QString>& storePath) {
    QProcessEnvironment environment;
    environment.insert(QStringLiteral("HOME"), QStringLiteral("/home/someone"));
    if (storePath) {
        environment.insert(QStringLiteral("TALLYFEN_STORE_PATH"), *storePath);
    }
    return environment;
}
} // namespace

class TestStoreLocation final : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QCoreApplication::setOrganizationName(QStringLiteral("Tallyfen"));
        QCoreApplication::setApplicationName(QStringLiteral("Tallyfen"));
    }

    void resolve_data() {
        QTest::addColumn<bool>("set");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("expected"); // empty: the default location
        QTest::newRow("unset") << false << QString() << QString();
        QTest::newRow("empty means unset") << true << QString() << QString();
        QTest::newRow("absolute") << true << "/tmp/a.store"
                                  << "/tmp/a.store";
        QTest::newRow("relative stays relative") << true << "data/a.store"
                                                 << "data/a.store";
        QTest::newRow("no trimming") << true << " a.store "
                                     << " a.store ";
        QTest::newRow("no tilde expansion") << true << "~/a.store"
                                            << "~/a.store";
        QTest::newRow("only blanks is a path") << true << "  "
                                               << "  ";
    }
    void resolve() {
        QFETCH(bool, set);
        QFETCH(QString, value);
        QFETCH(QString, expected);
        const QProcessEnvironment environment =
            environmentWith(set ? std::optional<QString>(value) : std::nullopt);
        const QString resolved = StoreLocation::resolve(environment);
        if (expected.isEmpty()) {
            QCOMPARE(resolved, StoreLocation::defaultPath());
            QVERIFY(StoreLocation::isDefault(environment));
        } else {
            QCOMPARE(resolved, expected);
            QVERIFY(!StoreLocation::isDefault(environment));
        }
    }

    void defaultPathIsInTheApplicationDataFolder() {
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
        QCOMPARE(StoreLocation::defaultPath(), QDir(folder).filePath(QStringLiteral("Tallyfen.store")));
    }

    void relativePathOpensAgainstTheWorkingDirectory() {
        QTemporaryDir dir;
        const QString previous = QDir::currentPath();
        QVERIFY(QDir::setCurrent(dir.path()));
        QString error;
        {
            auto store = TallyfenApp::openStore(environmentWith(QStringLiteral("relative.store")), &error);
            QVERIFY2(store, qPrintable(error));
        }
        QVERIFY(QDir::setCurrent(previous));
        QVERIFY(QFile::exists(dir.filePath(QStringLiteral("relative.store"))));
    }

    void environmentPathsGetNoFolderCreated() {
        QTemporaryDir dir;
        QString error;
        auto store =
            TallyfenApp::openStore(environmentWith(dir.filePath(QStringLiteral("missing/a.store"))), &error);
        QVERIFY(!store);
        QVERIFY(!error.isEmpty());
        QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("missing"))));
        QCOMPARE(TallyfenApp::fatalStoreMessage(error),
                 QStringLiteral("Unable to create the local tracker store: ") + error);
    }
};

QTEST_GUILESS_MAIN(TestStoreLocation)
#include "tst_storelocation.moc"
