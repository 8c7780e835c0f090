#pragma once

#include "core/SidebarSelection.h"
#include "model/SyncStatus.h"
#include "store/ProviderAccount.h"

#include <QAbstractItemModel>
#include <QList>
#include <QString>

#include <array>
#include <optional>

class ContentView;

// What the sidebar lists, as an item model: the sections "Workspace" (the overview),
// "Providers" (one row per provider, with its number of accounts) and, while there are
// accounts, "Accounts" (the accounts that match the search, oldest first). Sections are
// top-level rows that can't be selected; their items are their children. It follows the
// controller's signals and reports exactly the rows that changed.
class SidebarModel final : public QAbstractItemModel {
    Q_OBJECT

public:
    enum class Section { workspace = 0, providers = 1, accounts = 2 };
    enum class Kind { section, overview, provider, account };

    enum Role {
        // Kind of the row, as an int.
        KindRole = Qt::UserRole + 1,
        // The icon: a symbol name for the overview, the provider's logo name otherwise.
        SymbolRole,
        // A provider's number of accounts, present only when above zero; the search
        // doesn't change it.
        CountRole,
        // An account's second line: "OpenAI · #1A2B3C · Current".
        SubtitleRole,
        // The tone of an account's effective status, as an int of Tone.
        StatusToneRole,
        // The title of an account's effective status: the status dot's accessible name.
        StatusTitleRole,
        // The title of an account's connection mode.
        ConnectionTitleRole,
        // An account's sync message.
        SyncMessageRole,
        // An account's id.
        AccountIDRole,
    };

    static const QString kOverviewSymbol;

    explicit SidebarModel(ContentView* content, QObject* parent = nullptr);

    const QString& searchText() const noexcept { return m_searchText; }
    void setSearchText(const QString& text);

    // The accounts whose fields contain the query (trimmed; case-insensitive), in order.
    static QList<ProviderAccount*> filteredAccounts(const QList<ProviderAccount*>& accounts,
                                                    const QString& searchText);
    // The eight fields a search looks through, joined by one blank each.
    static QString haystack(const ProviderAccount& account);

    // The row that stands for a selection; invalid for an account the search hides.
    QModelIndex indexFor(const SidebarSelection& selection) const;
    // What choosing this row selects; none for a section.
    std::optional<SidebarSelection> selectionAt(const QModelIndex& index) const;
    ProviderAccount* accountAt(const QModelIndex& index) const;
    QModelIndex sectionIndex(Section section) const;
    bool hasAccountsSection() const noexcept { return m_accountsSectionShown; }

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& child) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    struct AccountRow {
        ProviderAccount* account;
        // The effective status as last reported, to notice when time moves it.
        SyncStatus shownStatus;
    };

    Kind kindOf(const QModelIndex& index) const;
    // Brings the account rows and the section in line with the controller's list.
    void syncAccounts();
    // The number of accounts of each provider, in the order of the providers.
    std::array<int, 4> providerCounts() const;
    void syncProviderCounts();
    void accountChanged(ProviderAccount* account, ProviderAccount::Fields fields);
    void heartbeatTicked();
    qsizetype rowOf(const ProviderAccount* account) const;
    void accountRowChanged(qsizetype row);

    ContentView* m_content;
    QString m_searchText;
    bool m_accountsSectionShown = false;
    QList<AccountRow> m_rows;
    std::array<int, 4> m_providerCounts{};
};
