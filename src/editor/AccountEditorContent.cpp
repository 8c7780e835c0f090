#include "editor/AccountEditorContent.h"

#include "model/PlatformWording.h"
#include "store/ProviderAuthentication.h"

namespace {
// The system's texts, as this platform says them.
constexpr auto text = &PlatformWording::text;

QList<ProviderAuthTile> tilesFor(const AccountEditorFields& fields) {
    QList<ProviderAuthTile> tiles;
    tiles.append(ProviderAuthTile{.title = QStringLiteral("Open ") + fields.provider.shortName() +
                                           QStringLiteral(" site"),
                                  .subtitle = text("Reference only · no live connector"),
                                  .isSelected = fields.connectionMode == ConnectionMode::browser,
                                  .logo = fields.provider,
                                  .action = ProviderAuthTile::Action::openProviderPage});
    if (fields.provider == AIProvider::openAI) {
        tiles.append(ProviderAuthTile{.title = text("Official API key"),
                                      .subtitle = text("Usage metrics + caps"),
                                      .isSelected = fields.connectionMode == ConnectionMode::apiKey,
                                      .logo = fields.provider,
                                      .action = ProviderAuthTile::Action::officialAPIKey});
    }
    tiles.append(ProviderAuthTile{.title = text("Manual tracking"),
                                  .subtitle = text("Enter limits and reset windows"),
                                  .isSelected = fields.connectionMode == ConnectionMode::manual,
                                  .logo = fields.provider,
                                  .action = ProviderAuthTile::Action::manualTracking});
    return tiles;
}
} // namespace

QString AccountEditorContent::detectedSignals(const ProviderConnectionMetadata& metadata) {
    qsizetype limited = 0;
    for (const UsageWindow& window : metadata.windows) {
        if (window.limit) {
            ++limited;
        }
    }
    if (limited == 0) {
        return text("No quota ceiling was exposed by the provider.");
    }
    return QString::number(limited) + QStringLiteral(" provider-reported quota ") +
           (limited == 1 ? QStringLiteral("signal") : QStringLiteral("signals"));
}

AccountEditorContent AccountEditorContent::make(const AccountEditorFields& fields, bool hasExisting) {
    AccountEditorContent content;
    content.title = hasExisting ? text("Edit Account") : text("Add Account");
    content.cancelTitle = text("Cancel");
    content.saveTitle = text("Save");

    content.subscriptionHeading = text("Subscription");
    content.subscriptionText = text("Connect one provider account at a time. Everything else is discovered "
                                    "from the connection when the provider supports it.");
    content.label = {text("Account label"), text("Personal, Work, Team")};
    for (const AIProvider provider : AIProvider::allCases()) {
        content.providers.append({provider, provider.shortName(), provider == fields.provider});
    }
    content.selectedSymbol = QStringLiteral("checkmark.circle.fill");

    content.authenticationHeading = text("Authentication");
    content.authenticationText = text(
        "Open the provider account page for reference, or choose Manual tracking. This build never imports "
        "browser credentials or claims a live connection from a website visit.");
    content.authTiles = tilesFor(fields);
    const QString shortName = fields.provider.shortName();
    if (fields.connectionMode == ConnectionMode::browser) {
        content.browserPanel = BrowserPanel{
            .symbol = QStringLiteral("safari.fill"),
            .heading = fields.browserAuthOpened ? text("Provider page opened") : text("Open provider page"),
            .text =
                text("This is a reference link only. The tracker does not read cookies, copy tokens, or "
                     "refresh usage from the provider website. Choose Manual tracking for operator-entered "
                     "limits."),
            .openTitle = fields.browserAuthOpened
                             ? text("Open again")
                             : QStringLiteral("Open ") + shortName + QStringLiteral(" site"),
            .showsRefresh = hasExisting};
    }
    if (fields.connectionMode == ConnectionMode::apiKey) {
        content.keyPanel =
            KeyPanel{.fieldTitle = text("API key (saved in Keychain)"),
                     .note = fields.provider == AIProvider::openAI
                                 ? text("OpenAI requires an organization Admin API key for live usage.")
                                 : text("This provider has no verified live usage adapter in this build."),
                     .testTitle = fields.isTestingConnection ? text("Checking…") : text("Test connection"),
                     .testEnabled = !fields.isTestingConnection,
                     .showsRefresh = hasExisting,
                     .refreshEnabled = !fields.isTestingConnection,
                     .showsLogout = hasExisting};
    }
    content.testMessage = fields.testMessage;
    if (content.testMessage) {
        content.testMessage = PlatformWording::apply(*content.testMessage);
    }
    if (fields.connectionMode == ConnectionMode::mock) {
        content.samplePanel =
            SamplePanel{text("Use safe sample data"),
                        text("Sample data is local and clearly labeled. It never contacts a provider.")};
    }
    content.securityNote = PlatformWording::apply(ProviderAuthentication::securityNote);

    if (fields.connectionMode == ConnectionMode::manual) {
        content.manual = ManualSection{
            .heading = text("Manual allowance"),
            .unitTitle = text("Unit"),
            .units = UsageUnit::allCases(),
            .shortTerm =
                ManualHorizonFields{.title = text("Short term"), .hasReset = fields.manualShortHasReset},
            .weekly = ManualHorizonFields{.title = text("Weekly"), .hasReset = fields.manualWeeklyHasReset},
            .note =
                text("Only use this when the provider does not expose a supported plan feed. Empty horizons "
                     "remain unavailable instead of being treated as zero.")};
    }

    content.advancedHeading = text("Advanced details");
    content.identity = {fields.accountKind == AccountKind::api ? text("Project ID (optional)")
                                                               : text("Login or workspace note"),
                        QString()};
    content.modelScope = {text("Primary model scope (optional)"), text("e.g. Claude Sonnet, GPT-5")};
    content.agentScope = {text("Agent / API key scope (optional)"), text("e.g. key:abc, user:123")};
    content.agentRoster = {text("Agent roster (optional)"), text("Atlas, Nova, Relay")};
    content.agentCount = {text("Agents using this account"), text("0")};
    content.renewalToggleTitle = text("Track renewal date");
    if (fields.hasRenewalDate) {
        content.renewalPickerTitle = text("Renews");
    }
    if (fields.detectedMetadata) {
        content.detected =
            DetectedPanel{.symbol = QStringLiteral("wand.and.stars"),
                          .heading = text("Detected automatically"),
                          .name = fields.detectedMetadata->displayName.value_or(text("Provider connection")),
                          .signalLine = detectedSignals(*fields.detectedMetadata),
                          .overrideTitle = text("Plan / project override")};
    } else {
        content.planOverride =
            TextField{text("Plan / project override (optional)"), text("Override the detected label")};
    }
    content.advancedNote =
        text("Use labels such as Personal, Work, or Family to keep multiple accounts for the "
             "same provider distinct.");

    content.budgetsHeading = text("Per-agent budgets");
    content.budgetsNote = text("Optional operator budgets only. One per line: "
                               "Name|unit|short used|short limit|weekly used|weekly limit.");
    if (fields.errorMessage) {
        content.error = Message{PlatformWording::apply(*fields.errorMessage),
                                QStringLiteral("exclamationmark.circle.fill")};
    }
    return content;
}
