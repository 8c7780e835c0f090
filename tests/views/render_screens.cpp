// Renders the application's screens offscreen into PNG files, for people to look at.
// Usage: render_screens <output folder>
#include "core/ContentView.h"
#include "core/Preferences.h"
#include "views/widgets/MainWindow.h"
#include "views/widgets/SettingsWindow.h"

#include <QApplication>
#include <QDir>
#include <QMessageBox>
#include <QTemporaryDir>

#include <cstdio>

namespace {
void addAccount(AccountStore& store, const QString& label, AIProvider provider, SyncStatus status,
                double createdAt) {
    auto* account = new ProviderAccount(ProviderAccount::Init{.provider = provider,
                                                              .label = label,
                                                              .accountKind = AccountKind::consumer,
                                                              .createdAt = Timestamp(createdAt),
                                                              .syncStatus = status});
    store.insert(account);
}

bool save(QWidget& widget, const QString& path) {
    widget.show();
    QApplication::processEvents();
    const bool ok = widget.grab().save(path);
    std::printf("%s %s\n", ok ? "wrote" : "could not write", qPrintable(path));
    return ok;
}
} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    const QString output = QCoreApplication::arguments().value(1, QStringLiteral("screenshots"));
    QDir().mkpath(output);
    QTemporaryDir scratch;
    QString error;
    auto store = AccountStore::open(scratch.filePath(QStringLiteral("screens.store")), &error);
    if (!store) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return 1;
    }
    Preferences preferences(scratch.filePath(QStringLiteral("preferences.ini")));
    ContentView content(store.get(), &preferences);

    bool ok = true;
    {
        // First launch: the welcome.
        MainWindow window(&content);
        window.resize(MainWindow::kMinimumWidth, MainWindow::kMinimumHeight);
        window.show();
        QApplication::processEvents();
        ok &= save(window, QDir(output).filePath(QStringLiteral("main-welcome.png")));
        content.finishOnboarding();
        ok &= save(window, QDir(output).filePath(QStringLiteral("main-empty.png")));
    }
    addAccount(*store, QStringLiteral("Work org"), AIProvider::openAI, SyncStatus::current, 1);
    addAccount(*store, QStringLiteral(""), AIProvider::anthropic, SyncStatus::needsAttention, 2);
    addAccount(*store, QStringLiteral("Grok Premium+"), AIProvider::xAI, SyncStatus::offline, 3);
    addAccount(*store, QStringLiteral("Gemini Advanced"), AIProvider::gemini, SyncStatus::partial, 4);
    {
        MainWindow window(&content);
        window.resize(MainWindow::kMinimumWidth, MainWindow::kMinimumHeight);
        ok &= save(window, QDir(output).filePath(QStringLiteral("main-overview.png")));
        content.setSelection(SidebarSelection::account(store->accounts().at(1)->id()));
        ok &= save(window, QDir(output).filePath(QStringLiteral("main-account.png")));
        content.requestDelete(store->accounts().at(1)->id());
        QApplication::processEvents();
        if (window.deleteDialog()) {
            ok &= save(*window.deleteDialog(), QDir(output).filePath(QStringLiteral("delete-dialog.png")));
            window.deleteDialog()->reject();
        }
        ok &= save(*window.settingsWindow(), QDir(output).filePath(QStringLiteral("settings.png")));
    }
    return ok ? 0 : 1;
}
