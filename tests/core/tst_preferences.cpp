#include "core/Preferences.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class TestPreferences final : public QObject {
    Q_OBJECT

private slots:
    void defaultsWhenNeverWritten() {
        QTemporaryDir dir;
        const Preferences preferences(dir.filePath(QStringLiteral("p.ini")));
        QVERIFY(!preferences.autoRefreshEnabled());
        QCOMPARE(preferences.autoRefreshMinutes(), 30);
        QVERIFY(!preferences.thresholdNotificationsEnabled());
        QVERIFY(!preferences.onboardingCompleted());
        QVERIFY(preferences.useSampleDataByDefault());
    }

    void writesAreReadBackAndSignalled() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("p.ini"));
        {
            Preferences preferences(path);
            QSignalSpy spy(&preferences, &Preferences::changed);
            preferences.setAutoRefreshEnabled(true);
            preferences.setAutoRefreshMinutes(5);
            preferences.setThresholdNotificationsEnabled(true);
            preferences.setOnboardingCompleted(true);
            preferences.setUseSampleDataByDefault(false);
            preferences.setDidSeedSampleAccounts(true);
            QCOMPARE(spy.count(), 6);
            QCOMPARE(spy.at(1).first().toString(), QStringLiteral("autoRefreshMinutes"));
        }
        const Preferences reopened(path);
        QVERIFY(reopened.autoRefreshEnabled());
        QCOMPARE(reopened.autoRefreshMinutes(), 5);
        QVERIFY(reopened.thresholdNotificationsEnabled());
        QVERIFY(reopened.onboardingCompleted());
        QVERIFY(!reopened.useSampleDataByDefault());
        QSettings raw(path, QSettings::IniFormat);
        QCOMPARE(raw.value(QStringLiteral("didSeedSampleAccounts")).toBool(), true);
    }

    void onlyRealChangesAreSignalled() {
        QTemporaryDir dir;
        Preferences preferences(dir.filePath(QStringLiteral("p.ini")));
        QSignalSpy spy(&preferences, &Preferences::changed);
        preferences.setThresholdNotificationsEnabled(true);
        preferences.setThresholdNotificationsEnabled(true);
        preferences.setAutoRefreshMinutes(15);
        preferences.setAutoRefreshMinutes(15);
        QCOMPARE(spy.count(), 2);
        preferences.setThresholdNotificationsEnabled(false);
        QCOMPARE(spy.count(), 3);
    }

    void readsAreFreshEveryTime() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("p.ini"));
        const Preferences reader(path);
        Preferences writer(path);
        QVERIFY(!reader.autoRefreshEnabled());
        writer.setAutoRefreshEnabled(true);
        QVERIFY(reader.autoRefreshEnabled());
    }

    void defaultSettingsFileIsTheApplications() {
        QCoreApplication::setOrganizationName(QStringLiteral("Tallyfen"));
        QCoreApplication::setApplicationName(QStringLiteral("Tallyfen"));
        const Preferences preferences;
        QVERIFY(preferences.useSampleDataByDefault());
        // The test environment points the settings at a throw-away folder.
        const QString file = const_cast<Preferences&>(preferences).settings().fileName();
        QVERIFY2(file.startsWith(qEnvironmentVariable("XDG_CONFIG_HOME")) ||
                     qEnvironmentVariableIsEmpty("XDG_CONFIG_HOME"),
                 qPrintable(file));
    }
};

QTEST_GUILESS_MAIN(TestPreferences)
#include "tst_preferences.moc"
