// Saves a new OpenAI key account through the editor's form in a process of its own, on
// whatever session bus it is given, and prints what the form said:
//
//   editor_probe FOLDER          save on the bus as it is
//   editor_probe FOLDER --lock   lock the keyring's default collection first
//
// Prints "error <message>" or "saved", then "accounts <n>" (in memory) and "label <text>"
// (what the form still holds).
#include "core/AccountLifecycle.h"
#include "core/Preferences.h"
#include "editor/AccountEditorForm.h"
#include "model/PlatformWording.h"
#include "store/AccountStore.h"

#include "KeyringControl.h"

#include <QCoreApplication>
#include <QDir>

#include <cstdio>

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 2) {
        return 2;
    }
    const QDir folder(arguments.at(1));
    if (arguments.contains(QStringLiteral("--lock")) && !lockDefaultCollection()) {
        std::printf("could not lock\n");
        return 3;
    }
    QString error;
    auto store = AccountStore::open(folder.filePath(QStringLiteral("accounts.store")), &error);
    if (!store) {
        std::printf("store %s\n", qPrintable(error));
        return 4;
    }
    Preferences preferences(folder.filePath(QStringLiteral("preferences.ini")));
    AccountLifecycle lifecycle(store.get(), &preferences);
    AccountEditorForm form(&lifecycle, nullptr);
    form.edit().label = QStringLiteral("Work API");
    form.chooseOfficialAPIKey();
    form.edit().secretInput = QStringLiteral("sk-admin-typed");
    if (form.save()) {
        std::printf("saved\n");
    } else {
        // As the sheet shows it, in this platform's words.
        std::printf("error %s\n",
                    qPrintable(PlatformWording::apply(form.fields().errorMessage.value_or(QString()))));
    }
    std::printf("accounts %lld\n", static_cast<long long>(store->accounts().size()));
    std::printf("label %s\n", qPrintable(form.fields().label));
    std::printf("key %s\n", form.fields().secretInput.isEmpty() ? "gone" : "kept");
    return 0;
}
