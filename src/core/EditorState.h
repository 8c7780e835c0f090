#pragma once

#include <QList>
#include <QString>
#include <QUuid>

#include <optional>

class ProviderAccount;

// What the account editor works on: a new account, or an existing one by id.
class EditorState final {
public:
    static EditorState newAccount() { return EditorState(std::nullopt); }
    static EditorState edit(const QUuid& id) { return EditorState(id); }

    bool isNew() const noexcept { return !m_editID.has_value(); }
    std::optional<QUuid> editID() const noexcept { return m_editID; }
    // The identity of the editor sheet: "new", or the account's UUID text.
    QString id() const;
    // The first account with the edited id; none for `new` or an id that is gone.
    ProviderAccount* account(const QList<ProviderAccount*>& accounts) const;

    friend bool operator==(const EditorState&, const EditorState&) = default;

private:
    explicit EditorState(std::optional<QUuid> id)
        : m_editID(id) {}

    std::optional<QUuid> m_editID;
};
