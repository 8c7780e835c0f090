#include "views/SidebarModel.h"

#include "core/ContentView.h"
#include "core/CoreFixtures.h"
#include "views/Tone.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTest>

namespace {
using Section = SidebarModel::Section;

// The controller, its model, and a tester that checks every change the model reports.
struct SidebarFixture {
    CoreFixture core;
    ContentView content{core.store.get(), core.preferences.get()};
    SidebarModel model{&content};
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::QtTest};

    QModelIndex section(Section which) const { return model.sectionIndex(which); }
    QModelIndex accountRow(int row) const { return model.index(row, 0, section(Section::accounts)); }
    QModelIndex providerRow(AIProvider provider) const {
        return model.index(static_cast<int>(provider.value()), 0, section(Section::providers));
    }
    QStringList accountNames() const {
        QStringList names;
        for (int row = 0; row < model.rowCount(section(Section::accounts)); ++row) {
            names.append(accountRow(row).data().toString());
        }
        return names;
    }
};

// An account with a fixed id, so that its short identifier is known.
ProviderAccount* addWithID(CoreFixture& core, const QString& label, AIProvider provider, double createdAt,
                           const char* id, std::optional<qint64> agents = std::nullopt) {
    auto* account = new ProviderAccount(ProviderAccount::Init{.id = QUuid::fromString(QLatin1StringView(id)),
                                                              .provider = provider,
                                                              .label = label,
                                                              .accountKind = AccountKind::api,
                                                              .createdAt = Timestamp(createdAt)});
    account->setAgentCount(agents);
    core.store->insert(account);
    return account;
}
} // namespace

class TestSidebarModel final : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { Clock::setFixedNow(std::nullopt); }

    void emptyStoreHasWorkspaceAndProviders() {
        SidebarFixture f;
        QCOMPARE(f.model.rowCount(), 2);
        QVERIFY(!f.model.hasAccountsSection());
        QCOMPARE(f.section(Section::workspace).data().toString(), QStringLiteral("Workspace"));
        QCOMPARE(f.section(Section::providers).data().toString(), QStringLiteral("Providers"));
        QVERIFY(!f.section(Section::accounts).isValid());
        QVERIFY(!(f.model.flags(f.section(Section::workspace)) & Qt::ItemIsSelectable));

        const QModelIndex overview = f.model.index(0, 0, f.section(Section::workspace));
        QCOMPARE(overview.data().toString(), QStringLiteral("Overview"));
        QCOMPARE(overview.data(SidebarModel::SymbolRole).toString(),
                 QStringLiteral("rectangle.3.group.fill"));
        QVERIFY(f.model.flags(overview) & Qt::ItemIsSelectable);
        QCOMPARE(f.model.selectionAt(overview), std::optional(SidebarSelection::overview()));

        QStringList providers;
        for (const AIProvider provider : AIProvider::allCases()) {
            const QModelIndex row = f.providerRow(provider);
            providers.append(row.data().toString());
            QCOMPARE(row.data(SidebarModel::SymbolRole).toString(), provider.rawValue());
            QVERIFY(!row.data(SidebarModel::CountRole).isValid()); // no account: no number
            QCOMPARE(f.model.selectionAt(row), std::optional(SidebarSelection::provider(provider)));
        }
        QCOMPARE(providers, (QStringList{QStringLiteral("OpenAI"), QStringLiteral("Claude"),
                                         QStringLiteral("Grok"), QStringLiteral("Gemini")}));
        QVERIFY(!f.model.selectionAt(f.section(Section::providers)));
    }

    void accountsSectionComesAndGoesWithTheAccounts() {
        SidebarFixture f;
        QSignalSpy inserted(&f.model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(&f.model, &QAbstractItemModel::rowsRemoved);
        QSignalSpy reset(&f.model, &QAbstractItemModel::modelReset);
        ProviderAccount* account = f.core.addAccount(QStringLiteral("Work"), AIProvider::openAI, 1);
        QVERIFY(f.model.hasAccountsSection());
        QCOMPARE(f.section(Section::accounts).data().toString(), QStringLiteral("Accounts"));
        QCOMPARE(f.accountNames(), QStringList{QStringLiteral("Work")});
        QCOMPARE(inserted.count(), 1);
        QVERIFY(!inserted.first().at(0).value<QModelIndex>().isValid()); // the section itself
        QCOMPARE(f.providerRow(AIProvider::openAI).data(SidebarModel::CountRole), QVariant(1));

        f.core.store->remove(account);
        QVERIFY(!f.model.hasAccountsSection());
        QCOMPARE(f.model.rowCount(), 2);
        QCOMPARE(removed.count(), 1);
        QVERIFY(!f.providerRow(AIProvider::openAI).data(SidebarModel::CountRole).isValid());
        // A provider's item still selects its (now empty) group.
        QCOMPARE(f.model.selectionAt(f.providerRow(AIProvider::openAI)),
                 std::optional(SidebarSelection::provider(AIProvider::openAI)));
        QCOMPARE(reset.count(), 0);
    }

    void rowsFollowTheListPrecisely() {
        SidebarFixture f;
        ProviderAccount* b = f.core.addAccount(QStringLiteral("b"), AIProvider::openAI, 20);
        ProviderAccount* d = f.core.addAccount(QStringLiteral("d"), AIProvider::xAI, 40);
        QSignalSpy inserted(&f.model, &QAbstractItemModel::rowsInserted);
        QSignalSpy removed(&f.model, &QAbstractItemModel::rowsRemoved);
        QSignalSpy moved(&f.model, &QAbstractItemModel::rowsMoved);
        QSignalSpy changed(&f.model, &QAbstractItemModel::dataChanged);
        QSignalSpy reset(&f.model, &QAbstractItemModel::modelReset);
        QSignalSpy layout(&f.model, &QAbstractItemModel::layoutChanged);

        f.core.addAccount(QStringLiteral("c"), AIProvider::openAI, 30); // between the two
        QCOMPARE(f.accountNames(),
                 (QStringList{QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("d")}));
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(inserted.first().at(1).toInt(), 1);
        QCOMPARE(inserted.first().at(0).value<QModelIndex>(), f.section(Section::accounts));

        b->setCreatedAt(Timestamp(50)); // now the newest: moves to the end
        QCOMPARE(f.accountNames(),
                 (QStringList{QStringLiteral("c"), QStringLiteral("d"), QStringLiteral("b")}));
        QVERIFY(moved.count() >= 1);
        QCOMPARE(inserted.count(), 1);
        QCOMPARE(removed.count(), 0);

        changed.clear();
        d->setSyncMessage(QStringLiteral("Refresh completed")); // one field, one row
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().at(0).value<QModelIndex>(), f.accountRow(1));
        QCOMPARE(changed.first().at(1).value<QModelIndex>(), f.accountRow(1));

        changed.clear();
        d->setSnapshot(std::nullopt); // nothing the sidebar shows
        d->setSnapshotData(QByteArrayLiteral("{}"));
        QCOMPARE(changed.count(), 0);

        f.core.store->remove(d);
        QCOMPARE(f.accountNames(), (QStringList{QStringLiteral("c"), QStringLiteral("b")}));
        QCOMPARE(removed.count(), 1);
        QCOMPARE(removed.first().at(1).toInt(), 1);
        QCOMPARE(reset.count(), 0);
        QCOMPARE(layout.count(), 0);
    }

    void providerCountsIgnoreTheSearch() {
        SidebarFixture f;
        f.core.addAccount(QStringLiteral("One"), AIProvider::anthropic, 1);
        ProviderAccount* two = f.core.addAccount(QStringLiteral("Two"), AIProvider::anthropic, 2);
        QCOMPARE(f.providerRow(AIProvider::anthropic).data(SidebarModel::CountRole), QVariant(2));
        f.model.setSearchText(QStringLiteral("nothing matches this"));
        QCOMPARE(f.accountNames(), QStringList());
        QVERIFY(f.model.hasAccountsSection()); // present, with no rows
        QCOMPARE(f.providerRow(AIProvider::anthropic).data(SidebarModel::CountRole), QVariant(2));

        QSignalSpy changed(&f.model, &QAbstractItemModel::dataChanged);
        two->setProvider(AIProvider::gemini);
        QCOMPARE(f.providerRow(AIProvider::anthropic).data(SidebarModel::CountRole), QVariant(1));
        QCOMPARE(f.providerRow(AIProvider::gemini).data(SidebarModel::CountRole), QVariant(1));
        QCOMPARE(changed.count(), 2);
    }

    void search_data() {
        QTest::addColumn<QString>("query");
        QTest::addColumn<QStringList>("found");
        const QStringList all{"Work Team", "Claude home", "Labs", "Ids", "Straße Café"};
        QTest::newRow("empty") << "" << all;
        QTest::newRow("spaces only") << "   \n\t" << all;
        QTest::newRow("capitals find a provider name") << "ANTHROPIC / CLAUDE" << QStringList{"Claude home"};
        QTest::newRow("trimmed") << "  labs  " << QStringList{"Labs"};
        QTest::newRow("two words only together") << "Team Work" << QStringList{};
        QTest::newRow("across two fields") << "Team OpenAI" << QStringList{"Work Team"};
        QTest::newRow("the digit 3: agents or any field") << "3" << QStringList{"Labs", "Ids"};
        QTest::newRow("short identifier start") << "3bbb" << QStringList{"Ids"};
        QTest::newRow("plan name") << "enterprise" << QStringList{"Work Team"};
        QTest::newRow("full case folding") << "STRASSE" << QStringList{"Straße Café"};
        QTest::newRow("decomposed accent") << "CAFE\u0301" << QStringList{"Straße Café"};
        QTest::newRow("a letter without its accent") << "cafe" << QStringList{};
    }
    void search() {
        QFETCH(QString, query);
        QFETCH(QStringList, found);
        SidebarFixture f;
        ProviderAccount* work = addWithID(f.core, QStringLiteral("Work Team"), AIProvider::openAI, 1,
                                          "aaaaaaaa-aaaa-4aaa-8aaa-aaaaaaaaaaa1");
        work->setPlanName(QStringLiteral("Enterprise"));
        addWithID(f.core, QStringLiteral("Claude home"), AIProvider::anthropic, 2,
                  "aaaaaaaa-aaaa-4aaa-8aaa-aaaaaaaaaaa2");
        addWithID(f.core, QStringLiteral("Labs"), AIProvider::xAI, 3, "aaaaaaaa-aaaa-4aaa-8aaa-aaaaaaaaaaa4",
                  3);
        addWithID(f.core, QStringLiteral("Ids"), AIProvider::gemini, 4,
                  "3bbbbbbb-aaaa-4aaa-8aaa-aaaaaaaaaaa5");
        addWithID(f.core, QStringLiteral("Straße Café"), AIProvider::gemini, 5,
                  "aaaaaaaa-aaaa-4aaa-8aaa-aaaaaaaaaaa6");
        f.model.setSearchText(query);
        QCOMPARE(f.accountNames(), found);
        QCOMPARE(SidebarModel::filteredAccounts(f.content.accounts(), query).size(), found.size());
    }

    void searchByShortIdentifier() {
        SidebarFixture f;
        f.core.addAccount(QStringLiteral("First"), AIProvider::openAI, 1);
        ProviderAccount* second = f.core.addAccount(QStringLiteral("Second"), AIProvider::openAI, 2);
        f.model.setSearchText(second->shortIdentifier().left(4).toLower());
        QVERIFY(f.accountNames().contains(QStringLiteral("Second")));
        QVERIFY(SidebarModel::haystack(*second).contains(second->shortIdentifier()));
    }

    void searchFollowsEditsAndKeepsTheSelection() {
        SidebarFixture f;
        ProviderAccount* account = f.core.addAccount(QStringLiteral("Alpha"), AIProvider::openAI, 1);
        f.content.setSelection(SidebarSelection::account(account->id()));
        f.model.setSearchText(QStringLiteral("beta"));
        QCOMPARE(f.accountNames(), QStringList());
        QVERIFY(!f.model.indexFor(f.content.selection()).isValid()); // hidden, still selected
        QCOMPARE(f.content.selection(), SidebarSelection::account(account->id()));

        account->setLabel(QStringLiteral("Beta"));
        QCOMPARE(f.accountNames(), QStringList{QStringLiteral("Beta")});
        QCOMPARE(f.model.indexFor(f.content.selection()), f.accountRow(0));
    }

    void accountRowShowsNameStatusAndMenuTexts() {
        SidebarFixture f;
        ProviderAccount* account = f.core.addAccount(QStringLiteral("Org"), AIProvider::openAI, 1);
        const QModelIndex row = f.accountRow(0);
        QCOMPARE(row.data().toString(), QStringLiteral("Org"));
        QCOMPARE(row.data(SidebarModel::SymbolRole).toString(), QStringLiteral("openai"));
        QCOMPARE(row.data(SidebarModel::SubtitleRole).toString(),
                 QStringLiteral("OpenAI · #") + account->shortIdentifier() + QStringLiteral(" · ") +
                     account->effectiveSyncStatus().title());
        QCOMPARE(row.data(SidebarModel::StatusTitleRole).toString(), account->effectiveSyncStatus().title());
        // A screen reader reads the second line after the name.
        QCOMPARE(row.data(Qt::AccessibleDescriptionRole).toString(),
                 row.data(SidebarModel::SubtitleRole).toString());
        QCOMPARE(row.data(SidebarModel::StatusToneRole).toInt(), static_cast<int>(Tone::critical));
        QCOMPARE(row.data(SidebarModel::ConnectionTitleRole).toString(),
                 ConnectionMode(ConnectionMode::mock).title());
        QCOMPARE(row.data(SidebarModel::SyncMessageRole).toString(), QStringLiteral("Not refreshed yet"));
        QCOMPARE(row.data(SidebarModel::AccountIDRole).toUuid(), account->id());
        QCOMPARE(f.model.accountAt(row), account);
        QCOMPARE(f.model.selectionAt(row), std::optional(SidebarSelection::account(account->id())));

        // A refresh: name, status and menu texts follow at once.
        f.content.refresh(account);
        QTRY_VERIFY(f.content.refreshingIDs().isEmpty());
        QCOMPARE(row.data(SidebarModel::SyncMessageRole).toString(), QStringLiteral("Refresh completed"));
        QCOMPARE(row.data(SidebarModel::StatusTitleRole).toString(), SyncStatus(SyncStatus::current).title());
        QCOMPARE(row.data(SidebarModel::StatusToneRole).toInt(), static_cast<int>(Tone::positive));
        account->setConnectionMode(ConnectionMode::manual);
        QCOMPARE(row.data(SidebarModel::ConnectionTitleRole).toString(),
                 ConnectionMode(ConnectionMode::manual).title());
        account->setLabel(QStringLiteral("Renamed"));
        QCOMPARE(row.data().toString(), QStringLiteral("Renamed"));
    }

    void theHeartbeatRedrawsWhatAged() {
        SidebarFixture f;
        ProviderAccount* account = f.core.addAccount(QStringLiteral("Ageing"), AIProvider::anthropic, 1);
        ProviderAccount* other = f.core.addAccount(QStringLiteral("Steady"), AIProvider::anthropic, 2);
        Clock::setFixedNow(Timestamp(1'000'000));
        account->setLastRefreshAt(Timestamp(1'000'000));
        account->setSyncStatus(SyncStatus::current);
        QCOMPARE(f.accountRow(0).data(SidebarModel::StatusTitleRole).toString(),
                 SyncStatus(SyncStatus::current).title());
        QSignalSpy changed(&f.model, &QAbstractItemModel::dataChanged);
        f.content.engine().tick(Timestamp(1'000'060)); // nothing aged
        QCOMPARE(changed.count(), 0);

        Clock::setFixedNow(Timestamp(1'000'000 + ProviderAccount::kStaleAfterSeconds + 60));
        f.content.engine().tick(Clock::now());
        QCOMPARE(changed.count(), 1);
        QCOMPARE(changed.first().at(0).value<QModelIndex>(), f.accountRow(0));
        QCOMPARE(f.accountRow(0).data(SidebarModel::StatusTitleRole).toString(),
                 SyncStatus(SyncStatus::stale).title());
        QCOMPARE(f.accountRow(0).data(SidebarModel::StatusToneRole).toInt(), static_cast<int>(Tone::caution));
        Q_UNUSED(other);
    }

    void indexesAndSelectionsRoundTrip() {
        SidebarFixture f;
        ProviderAccount* account = f.core.addAccount(QStringLiteral("Round"), AIProvider::gemini, 1);
        const QList<SidebarSelection> selections{SidebarSelection::overview(),
                                                 SidebarSelection::provider(AIProvider::xAI),
                                                 SidebarSelection::account(account->id())};
        for (const SidebarSelection& selection : selections) {
            QCOMPARE(f.model.selectionAt(f.model.indexFor(selection)), std::optional(selection));
        }
        QVERIFY(!f.model.indexFor(SidebarSelection::account(QUuid::createUuid())).isValid());
        QVERIFY(!f.model.accountAt(f.providerRow(AIProvider::gemini)));
    }

    void manyAccountsKeepTheirOrder() {
        SidebarFixture f;
        for (int i = 0; i < 50; ++i) {
            // Inserted newest first: each lands at the top.
            f.core.addAccount(QStringLiteral("Account %1").arg(49 - i), AIProvider::openAI, 49 - i);
        }
        const QStringList names = f.accountNames();
        QCOMPARE(names.size(), 50);
        for (int i = 0; i < 50; ++i) {
            QCOMPARE(names.at(i), QStringLiteral("Account %1").arg(i));
        }
        f.model.setSearchText(QStringLiteral("Account 4"));
        QCOMPARE(f.accountNames().size(), 11); // 4 and 40 to 49
        f.model.setSearchText(QString());
        QCOMPARE(f.accountNames(), names);
    }
};

QTEST_GUILESS_MAIN(TestSidebarModel)
#include "tst_sidebarmodel.moc"
