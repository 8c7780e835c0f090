#pragma once

#include "core/SidebarSelection.h"
#include "store/ProviderAccount.h"
#include "views/StatusCardsContent.h"

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

    // What stands in the detail area when the selected account is gone.
    static StatusCardsContent::EmptyState unavailableState();

    // The window toolbar's one item of an overview and of an account.
    struct ToolbarItem {
        QString title;
        QString symbol;
    };
    static ToolbarItem addAccountItem();
    static ToolbarItem deleteAccountItem();
};
