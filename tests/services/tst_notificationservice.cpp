#include "FakeNotificationServer.h"
#include "core/UrgentNotification.h"
#include "services/NotificationService.h"
#include "store/ProviderAccount.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {
ProviderAccount::Init init(const QString& label) {
    return ProviderAccount::Init{
        .provider = AIProvider::openAI, .label = label, .accountKind = AccountKind::api};
}
} // namespace

class TestNotificationService final : public QObject {
    Q_OBJECT

private slots:
    void requestIsAPlainValue() {
        const ProviderAccount account(init(QStringLiteral("Work API")));
        const UrgentNotificationRequest request = UrgentNotification::request(account);
        QCOMPARE(request.title, QStringLiteral("AI subscription needs attention"));
        QCOMPARE(request.body, QStringLiteral("Work API is at or above a tracked usage limit."));
        QVERIFY(request.body.startsWith(QStringLiteral("Work API")));
        QVERIFY(request.playsDefaultSound);
        QCOMPARE(request.identifier, QStringLiteral("usage-urgent-") + account.secretReference());
    }

    void identifiersBelongToAccounts() {
        const ProviderAccount first(init(QStringLiteral("Same")));
        const ProviderAccount second(init(QStringLiteral("Same")));
        QVERIFY(UrgentNotification::request(first).identifier !=
                UrgentNotification::request(second).identifier);
        QCOMPARE(UrgentNotification::request(first).identifier,
                 UrgentNotification::request(first).identifier);
    }

    void blankLabelUsesTheProviderName() {
        const ProviderAccount account(init(QStringLiteral("  ")));
        QCOMPARE(UrgentNotification::request(account).body,
                 QStringLiteral("OpenAI is at or above a tracked usage limit."));
    }

    void postsThroughTheDesktopServiceAndReplaces() {
        FakeNotificationServer server;
        QVERIFY(server.isRegistered());
        const ProviderAccount account(init(QStringLiteral("Work API")));
        const ProviderAccount other(init(QStringLiteral("Home")));
        NotificationService::requestAuthorization();

        NotificationService::postUrgent(UrgentNotification::request(account));
        QTRY_COMPARE(server.calls().size(), 1);
        const FakeNotificationServer::Call first = server.calls().first();
        QCOMPARE(first.appName, QStringLiteral("Tallyfen"));
        QCOMPARE(first.summary, QStringLiteral("AI subscription needs attention"));
        QCOMPARE(first.body, QStringLiteral("Work API is at or above a tracked usage limit."));
        QCOMPARE(first.replacesId, 0U);
        QVERIFY(first.hints.contains(QStringLiteral("sound-name")));

        // Posted again at once, before the first answer is in: it still replaces.
        NotificationService::postUrgent(UrgentNotification::request(account));
        QTRY_COMPARE(server.calls().size(), 2);
        QCOMPARE(server.calls().at(1).replacesId, first.assignedId);

        NotificationService::postUrgent(UrgentNotification::request(other));
        QTRY_COMPARE(server.calls().size(), 3);
        QCOMPARE(server.calls().at(2).replacesId, 0U);
        QVERIFY(server.calls().at(2).assignedId != first.assignedId);
    }

    void twoPostsInOneTurnReplaceEachOther() {
        FakeNotificationServer server;
        const ProviderAccount account(init(QStringLiteral("Racing")));
        NotificationService::postUrgent(UrgentNotification::request(account));
        NotificationService::postUrgent(UrgentNotification::request(account));
        QTRY_COMPARE(server.calls().size(), 2);
        QCOMPARE(server.calls().at(0).replacesId, 0U);
        QCOMPARE(server.calls().at(1).replacesId, server.calls().at(0).assignedId);
    }

    void markupIsEscapedWhereTheServerReadsIt_data() {
        QTest::addColumn<QStringList>("capabilities");
        QTest::addColumn<QString>("body");
        QTest::newRow("plain text server")
            << QStringList{QStringLiteral("body")}
            << QStringLiteral("R&D <core> is at or above a tracked usage limit.");
        QTest::newRow("markup server")
            << QStringList{QStringLiteral("body"), QStringLiteral("body-markup")}
            << QStringLiteral("R&amp;D &lt;core&gt; is at or above a tracked usage limit.");
    }
    void markupIsEscapedWhereTheServerReadsIt() {
        QFETCH(QStringList, capabilities);
        QFETCH(QString, body);
        FakeNotificationServer server;
        server.setCapabilities(capabilities);
        const ProviderAccount account(init(QStringLiteral("R&D <core>")));
        NotificationService::postUrgent(UrgentNotification::request(account));
        QTRY_COMPARE(server.calls().size(), 1);
        QCOMPARE(server.calls().first().body, body);
    }

    void aNotificationAfterARestartReplacesTheLastOne() {
        FakeNotificationServer server;
        QTemporaryDir config;
        const QString account = QUuid::createUuid().toString(QUuid::WithoutBraces);
        const auto runProbe = [&] {
            QProcess probe;
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
            probe.setProcessEnvironment(environment);
            probe.start(QStringLiteral(NOTIFICATION_PROBE), {account});
            // The server answers from this process's event loop: keep it turning.
            QTRY_VERIFY_WITH_TIMEOUT(probe.state() == QProcess::NotRunning, 10000);
            QCOMPARE(probe.exitCode(), 0);
        };
        runProbe();
        runProbe(); // a new process: only what was kept on disk connects the two
        QCOMPARE(server.calls().size(), 2);
        QCOMPARE(server.calls().at(0).replacesId, 0U);
        QCOMPARE(server.calls().at(1).replacesId, server.calls().at(0).assignedId);
    }

    void aRefusingDesktopLeavesPostingPromptAndQuiet() {
        FakeNotificationServer server;
        server.setRefusing(true); // the user turned Tallyfen's notifications off
        const ProviderAccount account(init(QStringLiteral("Refused")));
        NotificationService::requestAuthorization();
        QElapsedTimer clock;
        clock.start();
        NotificationService::postUrgent(UrgentNotification::request(account));
        QVERIFY(clock.elapsed() < 100); // the call returns at once
        QTRY_COMPARE(server.calls().size(), 1);
        // The refusal ends that post; a later one goes out again, replacing nothing.
        server.setRefusing(false);
        NotificationService::postUrgent(UrgentNotification::request(account));
        QTRY_COMPARE(server.calls().size(), 2);
        QCOMPARE(server.calls().at(1).replacesId, 0U);
    }

    void withoutAServerPostingIsSilentAndPrompt() {
        const ProviderAccount account(init(QStringLiteral("Nobody listens")));
        QElapsedTimer clock;
        clock.start();
        NotificationService::requestAuthorization();
        NotificationService::postUrgent(UrgentNotification::request(account));
        QVERIFY(clock.elapsed() < 100);

        // The post was dropped, not kept for later: a server that appears afterwards
        // hears nothing, however long it listens.
        FakeNotificationServer lateServer;
        QVERIFY(lateServer.isRegistered());
        QSignalSpy heard(&lateServer, &FakeNotificationServer::notified);
        QVERIFY(!heard.wait(300));
        QVERIFY(lateServer.calls().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestNotificationService)
#include "tst_notificationservice.moc"
