#pragma once

#include "app/MainWindow.h"
#include "core/ContentView.h"
#include "core/CoreFixtures.h"
#include "editor/widgets/AccountEditorView.h"

// The main window on a store of its own, shown, with the account editor a click away.
struct Window {
    CoreFixture fixture;
    std::unique_ptr<ContentView> content;
    std::unique_ptr<MainWindow> window;

    Window() {
        content = std::make_unique<ContentView>(fixture.store.get(), fixture.preferences.get());
        window = std::make_unique<MainWindow>(content.get());
        window->show();
    }

    AccountEditorView* openAdd() {
        content->setEditorState(EditorState::newAccount());
        return window->editor();
    }

    // The store as a fresh start would read it.
    std::unique_ptr<AccountStore> reopened() {
        QString error;
        return AccountStore::open(fixture.dir.filePath(QStringLiteral("accounts.store")), &error);
    }
};
