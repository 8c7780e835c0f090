#include "editor/AccountEditorContent.h"

#include "store/ProviderAuthentication.h"

#include <QTest>

namespace {
QStringList titles(const QList<ProviderAuthTile>& tiles) {
    QStringList result;
    for (const ProviderAuthTile& tile : tiles) {
        result.append(tile.title);
    }
    return result;
}

QStringList selected(const QList<ProviderAuthTile>& tiles) {
    QStringList result;
    for (const ProviderAuthTile& tile : tiles) {
        if (tile.isSelected) {
            result.append(tile.title);
        }
    }
    return result;
}
} // namespace

class TestAccountEditorContent final : public QObject {
    Q_OBJECT

private slots:
    void aNewAccountSelectsNoTileAndOffersSamples() {
        const AccountEditorContent content = AccountEditorContent::make(AccountEditorFields{}, false);
        QCOMPARE(content.title, QStringLiteral("Add Account"));
        QCOMPARE(content.cancelTitle, QStringLiteral("Cancel"));
        QCOMPARE(content.saveTitle, QStringLiteral("Save"));
        QCOMPARE(titles(content.authTiles),
                 QStringList({"Open OpenAI site", "Official API key", "Manual tracking"}));
        QVERIFY(selected(content.authTiles).isEmpty());
        QVERIFY(content.samplePanel);
        QCOMPARE(content.samplePanel->toggleTitle, QStringLiteral("Use safe sample data"));
        QCOMPARE(content.samplePanel->text,
                 QStringLiteral("Sample data is local and clearly labeled. It never contacts a provider."));
        QVERIFY(!content.keyPanel && !content.browserPanel && !content.manual);
        QCOMPARE(content.securityNote, ProviderAuthentication::securityNote);
        QCOMPARE(content.authTiles.first().subtitle, QStringLiteral("Reference only · no live connector"));
        QVERIFY(!content.authTiles.first().badge);
    }

    void theSubscriptionSection() {
        AccountEditorFields fields;
        fields.provider = AIProvider::gemini;
        const AccountEditorContent content = AccountEditorContent::make(fields, true);
        QCOMPARE(content.title, QStringLiteral("Edit Account"));
        QCOMPARE(content.subscriptionHeading, QStringLiteral("Subscription"));
        QCOMPARE(content.label.title, QStringLiteral("Account label"));
        QCOMPARE(content.label.prompt, QStringLiteral("Personal, Work, Team"));
        QCOMPARE(content.providers.size(), 4);
        QCOMPARE(content.providers.at(0).name, QStringLiteral("OpenAI"));
        for (const AccountEditorContent::ProviderTile& tile : content.providers) {
            QCOMPARE(tile.isSelected, tile.provider == AIProvider::gemini);
        }
        QCOMPARE(content.selectedSymbol, QStringLiteral("checkmark.circle.fill"));
        // Gemini has no key tile.
        QCOMPARE(titles(content.authTiles), QStringList({"Open Gemini site", "Manual tracking"}));
    }

    void theKeyPanelWhileTestingAndForAnotherProvider() {
        AccountEditorFields fields;
        fields.connectionMode = ConnectionMode::apiKey;
        AccountEditorContent content = AccountEditorContent::make(fields, false);
        QCOMPARE(selected(content.authTiles), QStringList{"Official API key"});
        QVERIFY(content.keyPanel);
        QCOMPARE(content.keyPanel->fieldTitle, QStringLiteral("API key (saved in Keychain)"));
        QCOMPARE(content.keyPanel->note,
                 QStringLiteral("OpenAI requires an organization Admin API key for live usage."));
        QCOMPARE(content.keyPanel->testTitle, QStringLiteral("Test connection"));
        QVERIFY(content.keyPanel->testEnabled);
        QVERIFY(!content.keyPanel->showsRefresh && !content.keyPanel->showsLogout);

        fields.isTestingConnection = true;
        content = AccountEditorContent::make(fields, true);
        QCOMPARE(content.keyPanel->testTitle, QStringLiteral("Checking…"));
        QVERIFY(!content.keyPanel->testEnabled);
        QVERIFY(content.keyPanel->showsRefresh && !content.keyPanel->refreshEnabled);
        QVERIFY(content.keyPanel->showsLogout);

        // xAI in the key mode: no key tile, the field stays with its note.
        fields.provider = AIProvider::xAI;
        content = AccountEditorContent::make(fields, false);
        QVERIFY(!titles(content.authTiles).contains(QStringLiteral("Official API key")));
        QVERIFY(content.keyPanel);
        QCOMPARE(content.keyPanel->note,
                 QStringLiteral("This provider has no verified live usage adapter in this build."));
    }

    void theBrowserPanelBeforeAndAfterOpening() {
        AccountEditorFields fields;
        fields.provider = AIProvider::anthropic;
        fields.connectionMode = ConnectionMode::browser;
        AccountEditorContent content = AccountEditorContent::make(fields, false);
        QCOMPARE(selected(content.authTiles), QStringList{"Open Claude site"});
        QVERIFY(content.browserPanel);
        QCOMPARE(content.browserPanel->symbol, QStringLiteral("safari.fill"));
        QCOMPARE(content.browserPanel->heading, QStringLiteral("Open provider page"));
        QCOMPARE(content.browserPanel->openTitle, QStringLiteral("Open Claude site"));
        QVERIFY(!content.browserPanel->showsRefresh);
        fields.browserAuthOpened = true;
        content = AccountEditorContent::make(fields, true);
        QCOMPARE(content.browserPanel->heading, QStringLiteral("Provider page opened"));
        QCOMPARE(content.browserPanel->openTitle, QStringLiteral("Open again"));
        QVERIFY(content.browserPanel->showsRefresh);
        QVERIFY(!content.samplePanel);
    }

    void theManualSection() {
        AccountEditorFields fields;
        fields.connectionMode = ConnectionMode::manual;
        fields.manualWeeklyHasReset = true;
        const AccountEditorContent content = AccountEditorContent::make(fields, false);
        QVERIFY(content.manual);
        QCOMPARE(content.manual->heading, QStringLiteral("Manual allowance"));
        QCOMPARE(content.manual->unitTitle, QStringLiteral("Unit"));
        QCOMPARE(content.manual->units, UsageUnit::allCases());
        QCOMPARE(content.manual->shortTerm.title, QStringLiteral("Short term"));
        QVERIFY(!content.manual->shortTerm.hasReset);
        QCOMPARE(content.manual->shortTerm.noResetText,
                 QStringLiteral("Reset not provided — you can add it later."));
        QCOMPARE(content.manual->weekly.title, QStringLiteral("Weekly"));
        QVERIFY(content.manual->weekly.hasReset);
        QCOMPARE(content.manual->weekly.resetPickerTitle, QStringLiteral("Reset time"));
        QCOMPARE(content.manual->shortTerm.limitTitle, QStringLiteral("Limit"));
        QCOMPARE(content.manual->shortTerm.usedTitle, QStringLiteral("Used"));
        QCOMPARE(content.manual->shortTerm.resetToggleTitle, QStringLiteral("I know the reset time"));
        QVERIFY(!content.samplePanel);
    }

    void advancedDetailsWithAndWithoutDetection() {
        AccountEditorFields fields;
        fields.accountKind = AccountKind::api;
        AccountEditorContent content = AccountEditorContent::make(fields, false);
        QCOMPARE(content.identity.title, QStringLiteral("Project ID (optional)"));
        QCOMPARE(content.modelScope.prompt, QStringLiteral("e.g. Claude Sonnet, GPT-5"));
        QCOMPARE(content.agentScope.prompt, QStringLiteral("e.g. key:abc, user:123"));
        QCOMPARE(content.agentRoster.prompt, QStringLiteral("Atlas, Nova, Relay"));
        QCOMPARE(content.agentCount.title, QStringLiteral("Agents using this account"));
        QVERIFY(!content.renewalPickerTitle);
        QVERIFY(!content.detected);
        QCOMPARE(content.planOverride->title, QStringLiteral("Plan / project override (optional)"));
        QCOMPARE(content.planOverride->prompt, QStringLiteral("Override the detected label"));

        fields.accountKind = AccountKind::consumer;
        fields.hasRenewalDate = true;
        fields.detectedMetadata = ProviderConnectionMetadata{};
        content = AccountEditorContent::make(fields, false);
        QCOMPARE(content.identity.title, QStringLiteral("Login or workspace note"));
        QCOMPARE(content.renewalPickerTitle, std::optional<QString>(QStringLiteral("Renews")));
        QVERIFY(!content.planOverride);
        QCOMPARE(content.detected->heading, QStringLiteral("Detected automatically"));
        QCOMPARE(content.detected->symbol, QStringLiteral("wand.and.stars"));
        QCOMPARE(content.detected->name, QStringLiteral("Provider connection"));
        QCOMPARE(content.detected->signalLine,
                 QStringLiteral("No quota ceiling was exposed by the provider."));
        QCOMPARE(content.detected->overrideTitle, QStringLiteral("Plan / project override"));

        const UsageWindow limited{
            .id = QStringLiteral("a"), .title = QStringLiteral("a"), .unit = UsageUnit::tokens, .limit = 10};
        UsageWindow open = limited;
        open.limit.reset();
        fields.detectedMetadata =
            ProviderConnectionMetadata{.displayName = QStringLiteral("Research"), .windows = {limited, open}};
        content = AccountEditorContent::make(fields, false);
        QCOMPARE(content.detected->name, QStringLiteral("Research"));
        QCOMPARE(content.detected->signalLine, QStringLiteral("1 provider-reported quota signal"));
        fields.detectedMetadata->windows.append(limited);
        QCOMPARE(AccountEditorContent::detectedSignals(*fields.detectedMetadata),
                 QStringLiteral("2 provider-reported quota signals"));
    }

    void budgetsAndTheError() {
        AccountEditorFields fields;
        AccountEditorContent content = AccountEditorContent::make(fields, false);
        QCOMPARE(content.budgetsHeading, QStringLiteral("Per-agent budgets"));
        QCOMPARE(content.budgetsNote,
                 QStringLiteral("Optional operator budgets only. One per line: "
                                "Name|unit|short used|short limit|weekly used|weekly limit."));
        QVERIFY(!content.error);
        fields.errorMessage = QStringLiteral("The account could not be saved locally.");
        content = AccountEditorContent::make(fields, false);
        QCOMPARE(content.error->text, QStringLiteral("The account could not be saved locally."));
        QCOMPARE(content.error->symbol, QStringLiteral("exclamationmark.circle.fill"));
    }
};

QTEST_GUILESS_MAIN(TestAccountEditorContent)
#include "tst_accounteditorcontent.moc"
