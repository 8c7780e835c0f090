// Posts one urgent notification for the account with the id given, as a freshly started
// Tallyfen would, waits for the server's answer, and exits. The tests run it twice to
// see that a notification after a restart replaces the one before it.
//
//   notification_probe <account UUID>
#include "core/UrgentNotification.h"
#include "services/ApplicationSettings.h"
#include "services/NotificationService.h"
#include "store/ProviderAccount.h"

#include <QCoreApplication>
#include <QElapsedTimer>

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const auto id = QUuid::fromString(QCoreApplication::arguments().value(1));
    const ProviderAccount account(ProviderAccount::Init{.id = id,
                                                        .provider = AIProvider::openAI,
                                                        .label = QStringLiteral("Restarted"),
                                                        .accountKind = AccountKind::api});
    const QString identifier = UrgentNotification::request(account).identifier;
    const uint before = ApplicationSettings::open()
                            .value(QStringLiteral("notificationServerIDs"))
                            .toMap()
                            .value(identifier)
                            .toUInt();
    NotificationService::postUrgent(UrgentNotification::request(account));
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 5000) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        const uint after = ApplicationSettings::open()
                               .value(QStringLiteral("notificationServerIDs"))
                               .toMap()
                               .value(identifier)
                               .toUInt();
        if (after != 0 && after != before) {
            return 0;
        }
        if (after != 0 && before != 0 && clock.elapsed() > 1000) {
            return 0; // replaced in place: the server kept the id
        }
    }
    return 1;
}
