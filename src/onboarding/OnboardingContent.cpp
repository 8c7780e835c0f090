#include "onboarding/OnboardingContent.h"

#include "model/PlatformWording.h"
#include "onboarding/OnboardingFlow.h"
#include "onboarding/OnboardingValidation.h"
#include "views/DisplayFormatters.h"

namespace {
// The system's texts, as this platform says them.
constexpr auto text = &PlatformWording::text;

QString selectionSymbol(bool selected) {
    return selected ? QStringLiteral("checkmark.circle.fill") : QStringLiteral("circle");
}

OnboardingContent::Footer footerFor(const OnboardingFlow& flow) {
    using Button = OnboardingContent::Button;
    OnboardingContent::Footer footer;
    const bool testing = flow.isTestingConnection();
    switch (flow.page().value()) {
    case OnboardingPage::welcome:
        break;
    case OnboardingPage::provider:
    case OnboardingPage::name:
        footer.back = Button{text("Back")};
        footer.saveForLater = Button{text("Save for later"), !testing};
        footer.trailing = {Button{text("Continue"), true, true}};
        break;
    case OnboardingPage::connection:
        footer.back = Button{text("Back")};
        footer.saveForLater = Button{text("Save for later"), !testing};
        footer.trailing = {Button{text("Add subscription"), !testing, true}};
        break;
    case OnboardingPage::ready:
        footer.trailing = {Button{text("Add another subscription")},
                           Button{text("Open dashboard"), true, true}};
        break;
    }
    return footer;
}

OnboardingContent::ManualPair pair(const char* title, OnboardingResetMode mode) {
    return OnboardingContent::ManualPair{.title = text(title),
                                         .usedTitle = text("Used"),
                                         .limitTitle = text("Limit"),
                                         .resetTitle = text("Reset"),
                                         .resetModes = OnboardingResetMode::allCases(),
                                         .resetsTitle = mode == OnboardingResetMode::setTime
                                                            ? std::optional<QString>(text("Resets"))
                                                            : std::nullopt};
}

} // namespace

OnboardingContent::ManualFields OnboardingContent::manualFields(const OnboardingFlow& flow) {
    OnboardingContent::ManualFields fields{
        .title = text("Limits to watch"),
        .unitTitle = text("Unit"),
        .units = {UsageUnit::messages, UsageUnit::requests, UsageUnit::tokens, UsageUnit::credits,
                  UsageUnit::dollars},
        .line =
            text("Add one or both windows. For resets, choose a real time, say the provider does not provide "
                 "one, or add it later."),
        .shortTerm = pair("Current window", flow.shortResetMode()),
        .weekly = pair("Weekly", flow.weeklyResetMode()),
        .overageHint = text("The dashboard will keep the overage visible as Action needed."),
        .overdueHint = text("The dashboard will show this window as overdue until you update it."),
        .footnote = text("Used can be 0. A limit must be greater than 0.")};
    if (const auto preview = OnboardingContent::manualRemainingPreview(flow.shortUsed(), flow.shortLimit(),
                                                                       flow.manualUnit())) {
        fields.previews.append(text("Current window: ") + *preview);
    }
    if (const auto preview = OnboardingContent::manualRemainingPreview(flow.weeklyUsed(), flow.weeklyLimit(),
                                                                       flow.manualUnit())) {
        fields.previews.append(text("Weekly: ") + *preview);
    }
    if (flow.manualHasOverage()) {
        fields.overageToggle = text("These numbers include an overage");
    }
    if (flow.manualHasPastReset()) {
        fields.overdueToggle = text("This reset has already happened");
    }
    return fields;
}

OnboardingContent::KeyFields OnboardingContent::keyFields(const OnboardingFlow& flow) {
    const bool testing = flow.isTestingConnection();
    return OnboardingContent::KeyFields{
        .fieldLabel = text("Paste your organization admin key"),
        .placeholder = text("sk-…"),
        .keychainLabel = text("We’ll save it in macOS Keychain and use it only when you press Refresh."),
        .pasteTitle = text("Paste key"),
        .test = {testing ? text("Checking…") : text("Test connection"),
                 !testing && !flow.apiKey().trimmed().isEmpty()},
        .showsProgress = testing,
        .cancelTitle = testing ? std::optional<QString>(text("Cancel")) : std::nullopt,
        .message = flow.connectionTestMessage(),
        .messageIsPositive = flow.connectionVerified(),
        .note = text(
            "The connection check also reads provider-reported project names and rate-limit ceilings when "
            "available. Nothing is guessed from a marketing tier."),
        .manualLink = text("Set up manually instead")};
}

QString OnboardingContent::labelPlaceholder(AIProvider provider) {
    return provider == AIProvider::openAI ? text("For example, OpenAI · Team API")
                                          : text("For example, ") + provider.shortName() + text(" · Work");
}

std::optional<QString> OnboardingContent::manualRemainingPreview(const QString& usedText,
                                                                 const QString& limitText, UsageUnit unit) {
    const std::optional<double> used = OnboardingValidation::number(usedText);
    const std::optional<double> limit = OnboardingValidation::number(limitText);
    if (!used || !limit || !(*limit > 0)) {
        return std::nullopt;
    }
    const QString amount = *used > *limit ? text("over by ") + DisplayFormatters::metric(*used - *limit, unit)
                                          : DisplayFormatters::metric(*limit - *used, unit);
    return amount + text(" left");
}

OnboardingContent::Detected
OnboardingContent::detectedMetadataSummary(const ProviderConnectionMetadata& metadata) {
    qsizetype limited = 0;
    for (const UsageWindow& window : metadata.windows) {
        if (window.limit) {
            ++limited;
        }
    }
    return Detected{.label = text("Automatically detected"),
                    .name = metadata.displayName,
                    .signalLine = limited == 0 ? text("No quota ceiling was exposed by the provider yet.")
                                               : QString::number(limited) + text(" quota ") +
                                                     (limited == 1 ? text("signal") : text("signals")) +
                                                     text(" detected. Refresh will fill in current usage.")};
}

QString OnboardingContent::connectionSummary(ConnectionMode mode, bool hasManualAllowance, bool hasMetadata) {
    switch (mode.value()) {
    case ConnectionMode::mock:
        return text("Sample dashboard data · no network calls");
    case ConnectionMode::manual:
        return hasManualAllowance ? text("Operator-entered limits")
                                  : text("Manual limits can be added later");
    case ConnectionMode::apiKey:
        return hasMetadata ? text("Key verified · provider metadata and caps detected")
                           : text("Key verified · press Refresh for your first usage signal");
    case ConnectionMode::browser:
        return text("Reference page only; choose manual setup to track provider limits");
    }
    return QString();
}

OnboardingContent::ProviderPage OnboardingContent::providerPage(const OnboardingFlow& flow) {
    const AIProvider provider = flow.provider();
    ProviderPage choose{
        .title = text("What do you want to watch first?"),
        .subtitle = text("Pick one subscription. You can add the rest later."),
        .line =
            text("OpenAI can show usage automatically with the right secure key. Claude and Grok plans are "
                 "easiest to track by entering the limits you see in your account."),
        .disclosureTitle = text("I’m not sure"),
        .disclosureText = text("Choose the company that bills you. You can add another provider later, and "
                               "choosing a sample never contacts anyone.")};
    for (const AIProvider candidate : AIProvider::allCases()) {
        const bool automatic = candidate == AIProvider::openAI;
        const bool selected = candidate == provider;
        choose.cards.append(
            ChoiceCard{.title = candidate.shortName(),
                       .subtitle = automatic ? text("See usage automatically with a secure key")
                                             : text("Enter the limits shown in your plan"),
                       .isSelected = selected,
                       .trailingSymbol = selectionSymbol(selected),
                       .accessibleName = candidate.shortName() + QStringLiteral(", ") +
                                         (automatic ? text("see usage automatically with a secure key")
                                                    : text("enter the limits shown in your plan"))});
    }
    return choose;
}

OnboardingContent OnboardingContent::make(const OnboardingFlow& flow) {
    OnboardingContent content;
    const OnboardingPage page = flow.page();
    content.page = page;
    const QString step = QString::number(page.number() + 1);
    content.header = Header{.brand = QStringLiteral("Tallyfen"),
                            .tagline = text("A Harrowmere product"),
                            .step = text("Step ") + step + text(" of 5 · ") + page.label(),
                            .filledCapsules = page.number() + 1,
                            .capsulesLabel = text("Setup step ") + step + text(" of 5")};
    content.footer = footerFor(flow);
    const AIProvider provider = flow.provider();
    const QString shortName = provider.shortName();

    switch (page.value()) {
    case OnboardingPage::welcome: {
        const bool saved = flow.hasSavedDraft();
        Welcome welcome{.heading = saved ? text("Welcome back — your setup is waiting.")
                                         : text("Let’s get your first account on the board."),
                        .text = saved ? text("We saved the non-secret parts of your setup. Your key was "
                                             "never stored here; paste "
                                             "it again when you connect.")
                                      : text("Track each AI subscription in one calm place. Set up your "
                                             "first account, or explore "
                                             "a small sample workspace before you connect anything."),
                        .privacyLabel = text("Your keys stay in macOS Keychain."),
                        .privacySymbol = QStringLiteral("lock.shield.fill"),
                        .privacyLine = text(
                            "No provider website scraping. No request is made just to discover a limit.")};
        welcome.buttons.append(
            Button{saved ? text("Resume setup") : text("Set up first account"), true, true});
        if (saved) {
            welcome.buttons.append(Button{text("Start over")});
        }
        welcome.buttons.append(Button{text("Try sample workspace")});
        welcome.buttons.append(Button{text("I’ll do this later")});
        content.welcome = welcome;
        break;
    }
    case OnboardingPage::provider:
        content.provider = providerPage(flow);
        break;
    case OnboardingPage::name: {
        const QString typed = flow.label().trimmed();
        content.name = NamePage{
            .title = text("What should we call this one?"),
            .subtitle = text("Use a name you’ll recognize in two seconds."),
            .fieldLabel = text("Account name"),
            .placeholder = labelPlaceholder(provider),
            .hint = text("Good names include ") + shortName + text(" · Personal, ") + shortName +
                    text(" · Work, or ") + shortName + text(" · Team."),
            .validation = flow.validationMessage(),
            .duplicateText = flow.isDuplicateName()
                                 ? std::optional<QString>(text("You already have an account with this name."))
                                 : std::nullopt,
            .useAnywayTitle = text("Use anyway"),
            .preview = provider.displayName() + QStringLiteral(" · ") +
                       (typed.isEmpty() ? text("Your new account") : flow.label())};
        break;
    }
    case OnboardingPage::connection: {
        ConnectionPage connection{.title = text("How should we keep this account up to date?"),
                                  .subtitle = text("Choose the clearest source for your subscription.")};
        const auto card = [&](const char* title, QString subtitle, const char* symbol,
                              std::optional<QString> badge, ConnectionMode mode) {
            const bool selected = flow.connectionMode() == mode;
            const QString name = text(title);
            connection.cards.append(ChoiceCard{.title = name,
                                               .subtitle = subtitle,
                                               .symbol = QString::fromLatin1(symbol),
                                               .badge = badge,
                                               .isSelected = selected,
                                               .trailingSymbol = selectionSymbol(selected),
                                               .accessibleName = name});
            connection.cardModes.append(mode);
        };
        card("Use a safe sample", text("Explore the dashboard without contacting a provider."), "sparkles",
             text("Recommended"), ConnectionMode::mock);
        card("I’ll enter limits myself",
             provider == AIProvider::openAI ? text("Useful for a private or custom allowance.")
                                            : text("Best for consumer plans without a documented usage API."),
             "pencil.and.list.clipboard", std::nullopt, ConnectionMode::manual);
        if (provider == AIProvider::openAI) {
            card("Connect OpenAI automatically",
                 text("See usage from your OpenAI organization when you press Refresh."), "link",
                 text("Admin key"), ConnectionMode::apiKey);
        }
        if (flow.connectionMode() == ConnectionMode::apiKey) {
            connection.keyFields = keyFields(flow);
        } else if (flow.connectionMode() == ConnectionMode::manual) {
            connection.manualFields = manualFields(flow);
        } else {
            connection.sampleLine =
                text("No network calls are made in sample mode. The dashboard marks sample data clearly.");
        }
        if (const auto& metadata = flow.connectionMetadata()) {
            connection.detected = detectedMetadataSummary(*metadata);
        }
        connection.validation = flow.validationMessage();
        content.connection = connection;
        break;
    }
    case OnboardingPage::ready: {
        const bool key = flow.connectionMode() == ConnectionMode::apiKey;
        const QString typed = flow.label().trimmed();
        content.ready = ReadyPage{
            .heading =
                key ? text("Connected — your key is verified.") : text("Nice — your account is ready."),
            .text =
                key ? text("Press Refresh to load your first usage signal. Add more subscriptions whenever "
                           "you’re ready.")
                    : text("You can see the first signal now, and add more subscriptions whenever you’re "
                           "ready."),
            .name = typed.isEmpty() ? shortName + QStringLiteral(" · Personal") : flow.label(),
            .summary = connectionSummary(flow.connectionMode(), flow.hasManualAllowance(),
                                         flow.connectionMetadata().has_value()),
            .tag = key ? text("Verified") : text("Ready")};
        break;
    }
    }
    return content;
}
