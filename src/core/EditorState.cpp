#include "core/EditorState.h"

#include "model/UuidText.h"
#include "store/ProviderAccount.h"

QString EditorState::id() const {
    return m_editID ? UuidText::toText(*m_editID) : QStringLiteral("new");
}

ProviderAccount* EditorState::account(const QList<ProviderAccount*>& accounts) const {
    if (!m_editID) {
        return nullptr;
    }
    for (ProviderAccount* account : accounts) {
        if (account->id() == *m_editID) {
            return account;
        }
    }
    return nullptr;
}
