#include "model/PlatformWording.h"

#include <QTest>

class TestPlatformWording final : public QObject {
    Q_OBJECT

private slots:
    void apply_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("onMac");
        QTest::addColumn<QString>("elsewhere");
        QTest::newRow("local database") << "Credentials are stored in Keychain; SwiftData keeps only "
                                           "non-secret account metadata and snapshots."
                                        << "Credentials are stored in Keychain; the local database keeps "
                                           "only non-secret account metadata and "
                                           "snapshots."
                                        << "Credentials are stored in Keychain; the local database keeps "
                                           "only non-secret account metadata and "
                                           "snapshots.";
        QTest::newRow("keychain") << "Your keys stay in macOS Keychain."
                                  << "Your keys stay in macOS Keychain."
                                  << "Your keys stay in the system keychain.";
        QTest::newRow("notification permission")
            << "They require macOS notification permission and work while the tracker is running."
            << "They require macOS notification permission and work while the tracker is running."
            << "They require notification permission and work while the tracker is running.";
        QTest::newRow("plain Keychain stays") << "API key (saved in Keychain)"
                                              << "API key (saved in Keychain)"
                                              << "API key (saved in Keychain)";
    }
    void apply() {
        QFETCH(QString, text);
        QFETCH(QString, onMac);
        QFETCH(QString, elsewhere);
        QCOMPARE(PlatformWording::apply(text, PlatformWording::Platform::macOS), onMac);
        QCOMPARE(PlatformWording::apply(text, PlatformWording::Platform::other), elsewhere);
    }

    void thisBuild() {
#ifdef Q_OS_MACOS
        QCOMPARE(PlatformWording::current(), PlatformWording::Platform::macOS);
#else
        QCOMPARE(PlatformWording::current(), PlatformWording::Platform::other);
        QCOMPARE(PlatformWording::apply(QStringLiteral("in macOS Keychain")),
                 QStringLiteral("in the system keychain"));
#endif
    }
};

QTEST_GUILESS_MAIN(TestPlatformWording)
#include "tst_platformwording.moc"
