#pragma once

// What the main-window tests set up and read back alike.

#include "core/CoreFixtures.h"
#include "model/Clock.h"
#include "providers/MockDataFactory.h"
#include "views/SidebarModel.h"

#include <QTreeView>

namespace windowfixtures {

// An account with a mock snapshot as a finished refresh leaves it.
inline ProviderAccount* refreshed(CoreFixture& fixture, const QString& label, AIProvider provider,
                                  double createdAt, ConnectionMode mode = ConnectionMode::mock) {
    ProviderAccount* account = fixture.addAccount(label, provider, createdAt);
    account->setConnectionMode(mode);
    account->setSnapshot(MockDataFactory::snapshot(*account));
    account->setLastRefreshAt(Clock::now());
    account->setSyncStatus(SyncStatus::current);
    return account;
}

// The texts of the sidebar's rows under "Accounts", top to bottom; empty without the section.
inline QStringList accountRows(const QTreeView* sidebar) {
    const auto* model = qobject_cast<const SidebarModel*>(sidebar->model());
    const QModelIndex section = model->sectionIndex(SidebarModel::Section::accounts);
    QStringList rows;
    for (int row = 0; section.isValid() && row < model->rowCount(section); ++row) {
        rows.append(model->index(row, 0, section).data().toString());
    }
    return rows;
}

} // namespace windowfixtures
