#include "app/AppMain.h"

#include "app/AppActivation.h"
#include "app/MainWindow.h"
#include "core/ContentView.h"
#include "core/Preferences.h"
#include "core/ProcessHardening.h"
#include "core/SingleInstance.h"
#include "core/StoreLocation.h"
#include "core/TallyfenApp.h"
#include "services/DesktopSettings.h"
#include "services/KeychainStore.h"
#include "store/StoreFile.h"
#include "ui/AppResources.h"
#include "ui/DesktopLook.h"
#include "ui/WheelGuard.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QFont>
#include <QIcon>
#include <QPixmap>
#include <QProcessEnvironment>

#include <cstdio>
#include <cstdlib>

namespace {
// The launcher's icon on the windows too (QIcon::addFile would load every image plugin).
void setWindowIcon() {
    QIcon icon;
    for (const QString& size : {QStringLiteral("32"), QStringLiteral("64"), QStringLiteral("128")}) {
        icon.addPixmap(QPixmap::fromImage(AppResources::png(QStringLiteral(":/app/icon-%1.png").arg(size))));
    }
    QApplication::setWindowIcon(icon);
}
} // namespace

int AppMain::run(int argc, char* argv[], const std::function<void()>& afterFirstShow) {
    // Keys pass through this process's memory: no core dump of it, no reading it.
    ProcessHardening::apply();
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tallyfen"));
    QApplication::setOrganizationName(QStringLiteral("Tallyfen"));
    QApplication::setApplicationDisplayName(QStringLiteral("Tallyfen"));
    // What the desktop asks of the look (light or dark, contrast, motion): asked now, its
    // answers taken in while the store opens, and followed as it changes.
    DesktopSettings desktop;
    DesktopLook look(&desktop);
    WheelGuard::install();
    // The bundled face and icons, so the app reads the same on every machine.
    AppResources::load();
    QGuiApplication::setDesktopFileName(QStringLiteral("com.harrowmere.Tallyfen"));
    if (const QString family = AppResources::fontFamily(); !family.isEmpty()) {
        QFont text(family);
        text.setPixelSize(Theme::kBody);
        QApplication::setFont(text);
    }

    // One process per store: a second launch brings the first one's window forward.
    const QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString storePath = StoreLocation::resolve(environment);
    if (StoreLocation::isDefault(environment)) {
        StoreFile::makePrivateFolder(QFileInfo(storePath).absolutePath());
    }
    SingleInstance::Outcome claimed = SingleInstance::Outcome::first;
    const std::unique_ptr<SingleInstance> instance = SingleInstance::claim(storePath, &claimed);
    if (claimed == SingleInstance::Outcome::handedOver) {
        return EXIT_SUCCESS;
    }

    QString reason;
    const std::unique_ptr<AccountStore> store = TallyfenApp::openStore(environment, &reason);
    if (!store) {
        std::fprintf(stderr, "%s\n", qPrintable(TallyfenApp::fatalStoreMessage(reason)));
        return EXIT_FAILURE;
    }

    Preferences preferences;
    ContentView content(store.get(), &preferences);
    // Light or dark as the desktop is, in the app's own palette and controls.
    desktop.waitForFirstAnswers();
    look.apply();
    MainWindow window(&content);
    window.setReduceMotion(look.reduceMotion());
    QObject::connect(&look, &DesktopLook::reduceMotionChanged, &window, &MainWindow::setReduceMotion);
    if (afterFirstShow) {
        QObject::connect(&window, &MainWindow::firstShown, &window, afterFirstShow, Qt::QueuedConnection);
    }
    // The launch callback comes before the main screen's first appearance (show()).
    AppActivation::applicationDidFinishLaunching();
    if (instance) {
        QObject::connect(instance.get(), &SingleInstance::activationRequested, &window, [&window] {
            window.showNormal();
            AppActivation::raise(&window);
            window.activateWindow();
        });
    }
    // What the first frame doesn't need waits until it is drawn.
    QObject::connect(&window, &MainWindow::firstPainted, &window, [guard = instance.get(), &content] {
        setWindowIcon();
        // Later launches on this store wait up to a second for this.
        if (guard) {
            guard->listen();
        }
        // A key whose deletion the keychain refused last time goes now, if it lets us, and
        // what a killed process still owed the keychain is settled.
        KeychainStore::retryPendingDeletions();
        content.lifecycle().settleKeyJournal();
    });
    window.show();
    AppActivation::raise(&window);
    return QApplication::exec();
}
