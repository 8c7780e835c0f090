#include "core/SidebarSelection.h"

std::optional<QUuid> SidebarSelection::accountID() const {
    if (m_kind != Kind::account) {
        return std::nullopt;
    }
    return m_account;
}

size_t qHash(const SidebarSelection& selection, size_t seed) {
    const int provider =
        selection.providerValue() ? static_cast<int>(selection.providerValue()->value()) : -1;
    return qHashMulti(seed, static_cast<int>(selection.kind()), provider,
                      selection.accountID().value_or(QUuid()));
}
