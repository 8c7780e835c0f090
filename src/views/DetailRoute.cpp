#include "views/DetailRoute.h"

DetailRoute DetailRoute::forSelection(const SidebarSelection& selection,
                                      const QList<ProviderAccount*>& accounts) {
    switch (selection.kind()) {
    case SidebarSelection::Kind::overview:
        return DetailRoute{Screen::overview, QStringLiteral("Overview"), accounts};
    case SidebarSelection::Kind::provider: {
        const AIProvider provider = *selection.providerValue();
        QList<ProviderAccount*> ofProvider;
        for (ProviderAccount* account : accounts) {
            if (account->provider() == provider) {
                ofProvider.append(account);
            }
        }
        return DetailRoute{Screen::overview, provider.displayName(), ofProvider};
    }
    case SidebarSelection::Kind::account:
        for (ProviderAccount* account : accounts) {
            if (account->id() == *selection.accountID()) {
                return DetailRoute{Screen::account, account->displayName(), {account}};
            }
        }
        return DetailRoute{Screen::unavailable, QStringLiteral("Account unavailable"), {}};
    }
    Q_UNREACHABLE();
    return DetailRoute{Screen::unavailable, QString(), {}};
}

StatusCardsContent::EmptyState DetailRoute::unavailableState() {
    return StatusCardsContent::emptyState(QStringLiteral("Account unavailable"),
                                          QStringLiteral("This account may have been removed."),
                                          QStringLiteral("Back to Overview"), true);
}

DetailRoute::ToolbarItem DetailRoute::addAccountItem() {
    return {QStringLiteral("Add Account"), QStringLiteral("plus")};
}

DetailRoute::ToolbarItem DetailRoute::deleteAccountItem() {
    return {QStringLiteral("Delete Account"), QStringLiteral("trash")};
}
