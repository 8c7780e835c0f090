#include "core/EditorState.h"
#include "core/SidebarSelection.h"
#include "views/DetailRoute.h"

#include "CoreFixtures.h"

#include <QSet>
#include <QTest>

// SidebarSelection, EditorState and the routing of the detail area.
class TestSelection final : public QObject {
    Q_OBJECT

private slots:
    void sidebarSelectionEqualityAndHash() {
        const QUuid id = QUuid::createUuid();
        QCOMPARE(SidebarSelection::account(id), SidebarSelection::account(id));
        QVERIFY(SidebarSelection::account(id) != SidebarSelection::account(QUuid::createUuid()));
        QVERIFY(SidebarSelection::provider(AIProvider::xAI) !=
                SidebarSelection::provider(AIProvider::gemini));
        QVERIFY(SidebarSelection::overview() != SidebarSelection::provider(AIProvider::openAI));
        const QSet<SidebarSelection> set{SidebarSelection::overview(), SidebarSelection::overview(),
                                         SidebarSelection::account(id),
                                         SidebarSelection::provider(AIProvider::xAI)};
        QCOMPARE(set.size(), 3);
        QCOMPARE(SidebarSelection::account(id).accountID(), std::optional<QUuid>(id));
        QVERIFY(!SidebarSelection::overview().accountID());
        QCOMPARE(SidebarSelection::provider(AIProvider::xAI).providerValue(),
                 std::optional<AIProvider>(AIProvider::xAI));
    }

    void editorState() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("A"));
        QCOMPARE(EditorState::newAccount().id(), QStringLiteral("new"));
        QCOMPARE(EditorState::edit(account->id()).id(), account->secretReference());
        QCOMPARE(EditorState::edit(account->id()).account(fixture.store->accounts()), account);
        QCOMPARE(EditorState::newAccount().account(fixture.store->accounts()), nullptr);
        QCOMPARE(EditorState::edit(QUuid::createUuid()).account(fixture.store->accounts()), nullptr);
    }

    void routing() {
        CoreFixture fixture;
        ProviderAccount* openAI = fixture.addAccount(QStringLiteral("o"), AIProvider::openAI, 1);
        ProviderAccount* grok = fixture.addAccount(QStringLiteral("g"), AIProvider::xAI, 2);
        const QList<ProviderAccount*>& all = fixture.store->accounts();

        const DetailRoute overview = DetailRoute::forSelection(SidebarSelection::overview(), all);
        QCOMPARE(overview.screen, DetailRoute::Screen::overview);
        QCOMPARE(overview.title, QStringLiteral("Overview"));
        QCOMPARE(overview.accounts, (QList<ProviderAccount*>{openAI, grok}));

        const DetailRoute provider =
            DetailRoute::forSelection(SidebarSelection::provider(AIProvider::xAI), all);
        QCOMPARE(provider.screen, DetailRoute::Screen::overview);
        QCOMPARE(provider.title, QStringLiteral("xAI / Grok"));
        QCOMPARE(provider.accounts, QList<ProviderAccount*>{grok});

        const DetailRoute one = DetailRoute::forSelection(SidebarSelection::account(openAI->id()), all);
        QCOMPARE(one.screen, DetailRoute::Screen::account);
        QCOMPARE(one.accounts, QList<ProviderAccount*>{openAI});

        const DetailRoute gone =
            DetailRoute::forSelection(SidebarSelection::account(QUuid::createUuid()), all);
        QCOMPARE(gone.screen, DetailRoute::Screen::unavailable);
        QCOMPARE(gone.title, QStringLiteral("Account unavailable"));
    }
};

QTEST_GUILESS_MAIN(TestSelection)
#include "tst_selection.moc"
