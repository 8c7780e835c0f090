#include "views/SidebarModel.h"

#include "core/ContentView.h"
#include "model/AIProvider.h"
#include "model/TextSearch.h"
#include "views/Tone.h"

#include <QLocale>
#include <QSet>

const QString SidebarModel::kOverviewSymbol = QStringLiteral("rectangle.3.group.fill");

namespace {
// A child's internal id is its section's row plus one; a section's is zero.
constexpr quintptr kSectionID = 0;
constexpr int kSectionCountWithAccounts = 3;

quintptr childID(SidebarModel::Section section) {
    return static_cast<quintptr>(section) + 1;
}

// What the search looks at, for the groups of fields that feed it.
constexpr ProviderAccount::Fields kSearchedFields =
    ProviderAccount::Field::identity | ProviderAccount::Field::agents | ProviderAccount::Field::connection;
// What an account row shows: name, provider, status, connection mode and message.
constexpr ProviderAccount::Fields kShownFields =
    ProviderAccount::Field::identity | ProviderAccount::Field::status | ProviderAccount::Field::connection;
} // namespace

SidebarModel::SidebarModel(ContentView* content, QObject* parent)
    : QAbstractItemModel(parent)
    , m_content(content) {
    m_accountsSectionShown = !m_content->accounts().isEmpty();
    for (ProviderAccount* account : filteredAccounts(m_content->accounts(), m_searchText)) {
        m_rows.append(AccountRow{account, account->effectiveSyncStatus()});
    }
    m_providerCounts = providerCounts();
    connect(m_content, &ContentView::accountListChanged, this, [this] {
        syncAccounts();
        syncProviderCounts();
    });
    connect(m_content, &ContentView::accountChanged, this, &SidebarModel::accountChanged);
    connect(m_content, &ContentView::heartbeatTicked, this, &SidebarModel::heartbeatTicked);
}

void SidebarModel::setSearchText(const QString& text) {
    if (m_searchText == text) {
        return;
    }
    m_searchText = text;
    syncAccounts();
}

QString SidebarModel::haystack(const ProviderAccount& account) {
    const std::optional<qint64> agents = account.agentCount();
    return QStringList{account.displayName(),       account.provider().displayName(),
                       account.effectivePlanName(), account.identityText(),
                       account.modelScopeText(),    account.agentScopeText(),
                       account.shortIdentifier(),   agents ? QString::number(*agents) : QString()}
        .join(u' ');
}

QList<ProviderAccount*> SidebarModel::filteredAccounts(const QList<ProviderAccount*>& accounts,
                                                       const QString& searchText) {
    const QString query = searchText.trimmed();
    if (query.isEmpty()) {
        return accounts;
    }
    QList<ProviderAccount*> found;
    const QString folded = TextSearch::folded(query);
    for (ProviderAccount* account : accounts) {
        if (TextSearch::containsFolded(TextSearch::folded(haystack(*account)), folded)) {
            found.append(account);
        }
    }
    return found;
}

void SidebarModel::syncAccounts() {
    const bool wanted = !m_content->accounts().isEmpty();
    const QList<ProviderAccount*> target = filteredAccounts(m_content->accounts(), m_searchText);
    if (!wanted) {
        if (m_accountsSectionShown) {
            const int row = static_cast<int>(Section::accounts);
            beginRemoveRows(QModelIndex(), row, row);
            m_rows.clear();
            m_accountsSectionShown = false;
            endRemoveRows();
        }
        return;
    }
    if (!m_accountsSectionShown) {
        const int row = static_cast<int>(Section::accounts);
        beginInsertRows(QModelIndex(), row, row);
        m_rows.clear();
        for (ProviderAccount* account : target) {
            m_rows.append(AccountRow{account, account->effectiveSyncStatus()});
        }
        m_accountsSectionShown = true;
        endInsertRows();
        return;
    }

    const QModelIndex section = sectionIndex(Section::accounts);
    const QSet<const ProviderAccount*> kept(target.cbegin(), target.cend());
    // Rows that left, from the end so the rows before keep their numbers.
    for (qsizetype i = m_rows.size() - 1; i >= 0; --i) {
        if (!kept.contains(m_rows[i].account)) {
            beginRemoveRows(section, static_cast<int>(i), static_cast<int>(i));
            m_rows.removeAt(i);
            endRemoveRows();
        }
    }
    // Then, front to back, each place gets its account: moved up from further down
    // if it is already listed, inserted if it is new.
    for (qsizetype i = 0; i < target.size(); ++i) {
        ProviderAccount* wantedAccount = target[i];
        if (i < m_rows.size() && m_rows[i].account == wantedAccount) {
            continue;
        }
        qsizetype from = -1;
        for (qsizetype j = i + 1; j < m_rows.size(); ++j) {
            if (m_rows[j].account == wantedAccount) {
                from = j;
                break;
            }
        }
        if (from >= 0) {
            beginMoveRows(section, static_cast<int>(from), static_cast<int>(from), section,
                          static_cast<int>(i));
            m_rows.move(from, i);
            endMoveRows();
        } else {
            beginInsertRows(section, static_cast<int>(i), static_cast<int>(i));
            m_rows.insert(i, AccountRow{wantedAccount, wantedAccount->effectiveSyncStatus()});
            endInsertRows();
        }
    }
}

std::array<int, 4> SidebarModel::providerCounts() const {
    std::array<int, 4> counts{};
    for (const ProviderAccount* account : m_content->accounts()) {
        ++counts[static_cast<std::size_t>(account->provider().value())];
    }
    return counts;
}

void SidebarModel::syncProviderCounts() {
    const std::array<int, 4> counts = providerCounts();
    const QModelIndex section = sectionIndex(Section::providers);
    for (std::size_t i = 0; i < counts.size(); ++i) {
        if (counts[i] != m_providerCounts[i]) {
            m_providerCounts[i] = counts[i];
            const QModelIndex changed = index(static_cast<int>(i), 0, section);
            Q_EMIT dataChanged(changed, changed, {CountRole});
        }
    }
}

void SidebarModel::accountChanged(ProviderAccount* account, ProviderAccount::Fields fields) {
    if (fields.testFlag(ProviderAccount::Field::identity)) {
        syncProviderCounts();
    }
    if ((fields & kSearchedFields) && !m_searchText.trimmed().isEmpty()) {
        syncAccounts();
    }
    if (fields & kShownFields) {
        if (const qsizetype row = rowOf(account); row >= 0) {
            accountRowChanged(row);
        }
    }
}

void SidebarModel::heartbeatTicked() {
    // A current refresh ages into stale without any field changing.
    for (qsizetype row = 0; row < m_rows.size(); ++row) {
        if (m_rows[row].account->effectiveSyncStatus() != m_rows[row].shownStatus) {
            accountRowChanged(row);
        }
    }
}

void SidebarModel::accountRowChanged(qsizetype row) {
    AccountRow& shown = m_rows[row];
    shown.shownStatus = shown.account->effectiveSyncStatus();
    const QModelIndex changed = index(static_cast<int>(row), 0, sectionIndex(Section::accounts));
    Q_EMIT dataChanged(changed, changed);
}

qsizetype SidebarModel::rowOf(const ProviderAccount* account) const {
    for (qsizetype row = 0; row < m_rows.size(); ++row) {
        if (m_rows[row].account == account) {
            return row;
        }
    }
    return -1;
}

QModelIndex SidebarModel::sectionIndex(Section section) const {
    if (section == Section::accounts && !m_accountsSectionShown) {
        return {};
    }
    return createIndex(static_cast<int>(section), 0, kSectionID);
}

QModelIndex SidebarModel::indexFor(const SidebarSelection& selection) const {
    switch (selection.kind()) {
    case SidebarSelection::Kind::overview:
        return index(0, 0, sectionIndex(Section::workspace));
    case SidebarSelection::Kind::provider:
        return index(static_cast<int>(selection.providerValue()->value()), 0,
                     sectionIndex(Section::providers));
    case SidebarSelection::Kind::account:
        for (qsizetype row = 0; row < m_rows.size(); ++row) {
            if (m_rows[row].account->id() == *selection.accountID()) {
                return index(static_cast<int>(row), 0, sectionIndex(Section::accounts));
            }
        }
        return {};
    }
    return {};
}

std::optional<SidebarSelection> SidebarModel::selectionAt(const QModelIndex& index) const {
    switch (kindOf(index)) {
    case Kind::section:
        return std::nullopt;
    case Kind::overview:
        return SidebarSelection::overview();
    case Kind::provider:
        return SidebarSelection::provider(AIProvider::allCases().at(index.row()));
    case Kind::account:
        return SidebarSelection::account(m_rows[index.row()].account->id());
    }
    return std::nullopt;
}

ProviderAccount* SidebarModel::accountAt(const QModelIndex& index) const {
    return kindOf(index) == Kind::account ? m_rows[index.row()].account : nullptr;
}

SidebarModel::Kind SidebarModel::kindOf(const QModelIndex& index) const {
    if (!index.isValid() || index.internalId() == kSectionID) {
        return Kind::section;
    }
    switch (static_cast<Section>(index.internalId() - 1)) {
    case Section::workspace:
        return Kind::overview;
    case Section::providers:
        return Kind::provider;
    case Section::accounts:
        return Kind::account;
    }
    return Kind::section;
}

QModelIndex SidebarModel::index(int row, int column, const QModelIndex& parent) const {
    if (!hasIndex(row, column, parent)) {
        return {};
    }
    if (!parent.isValid()) {
        return createIndex(row, column, kSectionID);
    }
    return createIndex(row, column, childID(static_cast<Section>(parent.row())));
}

QModelIndex SidebarModel::parent(const QModelIndex& child) const {
    if (!child.isValid() || child.internalId() == kSectionID) {
        return {};
    }
    return createIndex(static_cast<int>(child.internalId() - 1), 0, kSectionID);
}

int SidebarModel::rowCount(const QModelIndex& parent) const {
    if (!parent.isValid()) {
        return m_accountsSectionShown ? kSectionCountWithAccounts : kSectionCountWithAccounts - 1;
    }
    if (parent.column() != 0 || parent.internalId() != kSectionID) {
        return 0;
    }
    switch (static_cast<Section>(parent.row())) {
    case Section::workspace:
        return 1;
    case Section::providers:
        return static_cast<int>(AIProvider::kRawValues.size());
    case Section::accounts:
        return static_cast<int>(m_rows.size());
    }
    return 0;
}

int SidebarModel::columnCount(const QModelIndex&) const {
    return 1;
}

QVariant SidebarModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const Kind kind = kindOf(index);
    if (role == KindRole) {
        return static_cast<int>(kind);
    }
    switch (kind) {
    case Kind::section:
        if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole) {
            static const std::array<QString, 3> titles{
                QStringLiteral("Workspace"), QStringLiteral("Providers"), QStringLiteral("Accounts")};
            return titles[static_cast<std::size_t>(index.row())];
        }
        return {};
    case Kind::overview:
        if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole) {
            return QStringLiteral("Overview");
        }
        if (role == SymbolRole) {
            return kOverviewSymbol;
        }
        return {};
    case Kind::provider: {
        const AIProvider provider = AIProvider::allCases().at(index.row());
        const int count = m_providerCounts[static_cast<std::size_t>(index.row())];
        switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return provider.shortName();
        case SymbolRole:
            return provider.rawValue();
        case CountRole:
            return count > 0 ? QVariant(count) : QVariant();
        // The count beside the name, in the reader's digits, as it is drawn.
        case Qt::AccessibleDescriptionRole:
            return count > 0 ? QVariant(QLocale().toString(count)) : QVariant();
        default:
            return {};
        }
    }
    case Kind::account: {
        const ProviderAccount* account = m_rows[index.row()].account;
        switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return account->displayName();
        // The whole name, where the row has to cut it (its first thousand characters).
        case Qt::ToolTipRole:
            return account->displayName().left(1000);
        case SymbolRole:
            return account->provider().rawValue();
        // The row's second line, which a screen reader reads after the name.
        case SubtitleRole:
        case Qt::AccessibleDescriptionRole:
            return QString(account->provider().shortName() + QStringLiteral(" · #") +
                           account->shortIdentifier() + QStringLiteral(" · ") +
                           account->effectiveSyncStatus().title());
        case StatusToneRole:
            return static_cast<int>(Tones::forStatus(account->effectiveSyncStatus()));
        case StatusTitleRole:
            return account->effectiveSyncStatus().title();
        case ConnectionTitleRole:
            return account->connectionMode().title();
        case SyncMessageRole:
            return account->syncMessage();
        case AccountIDRole:
            return account->id();
        default:
            return {};
        }
    }
    }
    return {};
}

Qt::ItemFlags SidebarModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) {
        return Qt::NoItemFlags;
    }
    if (kindOf(index) == Kind::section) {
        return Qt::ItemIsEnabled;
    }
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

QHash<int, QByteArray> SidebarModel::roleNames() const {
    QHash<int, QByteArray> names = QAbstractItemModel::roleNames();
    names.insert(KindRole, QByteArrayLiteral("kind"));
    names.insert(SymbolRole, QByteArrayLiteral("symbol"));
    names.insert(CountRole, QByteArrayLiteral("count"));
    names.insert(SubtitleRole, QByteArrayLiteral("subtitle"));
    names.insert(StatusToneRole, QByteArrayLiteral("statusTone"));
    names.insert(StatusTitleRole, QByteArrayLiteral("statusTitle"));
    names.insert(ConnectionTitleRole, QByteArrayLiteral("connectionTitle"));
    names.insert(SyncMessageRole, QByteArrayLiteral("syncMessage"));
    names.insert(AccountIDRole, QByteArrayLiteral("accountID"));
    return names;
}
