#pragma once

#include "core/SidebarSelection.h"
#include "store/ProviderAccount.h"

#include <QList>
#include <QString>

// What the detail area shows for a selection: an overview of some accounts, one
// account, or a notice that the selected account is gone.
struct DetailRoute {
    enum class Screen { overview, account, unavailable };

    Screen screen;
    // The overview's title: "Overview" or the provider's name.
    QString title;
    // The overview's accounts, or the one account.
    QList<ProviderAccount*> accounts;

    static DetailRoute forSelection(const SidebarSelection& selection,
                                    const QList<ProviderAccount*>& accounts);
};
