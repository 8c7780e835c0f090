#include "onboarding/OnboardingContent.h"

#include "model/Clock.h"
#include "onboarding/OnboardingFlow.h"
#include "onboarding/OnboardingSavedDraft.h"
#include "providers/ProviderFactory.h"

#include "providers/SilentServer.h"

#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

namespace {
const Timestamp kNow(800'000'000.0);

struct Flow {
    QTemporaryDir dir;
    QSettings settings{dir.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat};
    std::unique_ptr<OnboardingFlow> flow;

    explicit Flow(bool savedDraft = false) {
        if (savedDraft) {
            OnboardingSavedDraft{
                .label = QStringLiteral("Half done"), .provider = QStringLiteral("openai"), .page = 2}
                .save(settings);
        }
        flow = std::make_unique<OnboardingFlow>(
            &settings, QStringList{QStringLiteral("Taken")},
            OnboardingFlow::Hooks{.createAccount = [](const OnboardingDraft&,
                                                      OnboardingFlow::Hooks::Refusal*) { return true; }});
        flow->appear();
    }
    OnboardingContent content() const { return OnboardingContent::make(*flow); }
};

QStringList titles(const QList<OnboardingContent::Button>& buttons) {
    QStringList result;
    for (const OnboardingContent::Button& button : buttons) {
        result.append(button.title);
    }
    return result;
}
} // namespace

class TestOnboardingContent final : public QObject {
    Q_OBJECT

private slots:
    void init() { Clock::setFixedNow(kNow); }
    void cleanup() { Clock::setFixedNow(std::nullopt); }

    void theHeaderCountsFromOne() {
        Flow f;
        OnboardingContent content = f.content();
        QCOMPARE(content.header.brand, QStringLiteral("Tallyfen"));
        QCOMPARE(content.header.tagline, QStringLiteral("A Harrowmere product"));
        QCOMPARE(content.header.step, QStringLiteral("Step 1 of 5 · Welcome"));
        QCOMPARE(content.header.filledCapsules, 1);
        QCOMPARE(content.header.capsulesLabel, QStringLiteral("Setup step 1 of 5"));
        f.flow->begin();
        content = f.content();
        QCOMPARE(content.header.step, QStringLiteral("Step 2 of 5 · Choose provider"));
        QCOMPARE(content.header.filledCapsules, 2);
    }

    void welcomeWithAndWithoutASavedDraft() {
        Flow fresh;
        OnboardingContent content = fresh.content();
        QCOMPARE(content.welcome->heading, QStringLiteral("Let’s get your first account on the board."));
        QCOMPARE(titles(content.welcome->buttons),
                 (QStringList{"Set up first account", "Try sample workspace", "I’ll do this later"}));
        QVERIFY(content.welcome->buttons.first().isDefault);
        QCOMPARE(content.welcome->privacyLabel, QStringLiteral("Your keys stay in the system keychain."));
        QVERIFY(!content.footer.back && !content.footer.saveForLater && content.footer.trailing.isEmpty());

        Flow saved(true);
        content = saved.content();
        QCOMPARE(content.welcome->heading, QStringLiteral("Welcome back — your setup is waiting."));
        QCOMPARE(titles(content.welcome->buttons),
                 (QStringList{"Resume setup", "Start over", "Try sample workspace", "I’ll do this later"}));
    }

    void providerCards() {
        Flow f;
        f.flow->begin();
        f.flow->selectProvider(AIProvider::xAI);
        const OnboardingContent content = f.content();
        QCOMPARE(content.provider->cards.size(), 4);
        const OnboardingContent::ChoiceCard& openAI = content.provider->cards.at(0);
        QCOMPARE(openAI.subtitle, QStringLiteral("See usage automatically with a secure key"));
        QCOMPARE(openAI.accessibleName, QStringLiteral("OpenAI, see usage automatically with a secure key"));
        QCOMPARE(openAI.trailingSymbol, QStringLiteral("circle"));
        const OnboardingContent::ChoiceCard& grok = content.provider->cards.at(2);
        QVERIFY(grok.isSelected);
        QCOMPARE(grok.trailingSymbol, QStringLiteral("checkmark.circle.fill"));
        QCOMPARE(grok.accessibleName, QStringLiteral("Grok, enter the limits shown in your plan"));
        QCOMPARE(titles(content.footer.trailing), QStringList{QStringLiteral("Continue")});
        QCOMPARE(content.footer.back->title, QStringLiteral("Back"));
        QCOMPARE(content.footer.saveForLater->title, QStringLiteral("Save for later"));
        QCOMPARE(content.provider->disclosureTitle, QStringLiteral("I’m not sure"));
    }

    void namePage() {
        Flow f;
        f.flow->begin();
        f.flow->selectProvider(AIProvider::anthropic);
        f.flow->next();
        OnboardingContent content = f.content();
        QCOMPARE(content.name->placeholder, QStringLiteral("For example, Claude · Work"));
        QCOMPARE(content.name->hint,
                 QStringLiteral("Good names include Claude · Personal, Claude · Work, or Claude · Team."));
        QCOMPARE(content.name->preview,
                 AIProvider(AIProvider::anthropic).displayName() + QStringLiteral(" · Your new account"));
        QVERIFY(!content.name->duplicateText);
        f.flow->setLabel(QStringLiteral("taken"));
        f.flow->next();
        content = f.content();
        QCOMPARE(content.name->duplicateText,
                 std::optional<QString>(QStringLiteral("You already have an account with this name.")));
        QVERIFY(content.name->validation);
        // The block stays after "Use anyway".
        f.flow->setDuplicateNameConfirmed(true);
        QVERIFY(f.content().name->duplicateText);
        QCOMPARE(OnboardingContent::labelPlaceholder(AIProvider::openAI),
                 QStringLiteral("For example, OpenAI · Team API"));
    }

    void connectionCardsByProvider() {
        Flow f;
        f.flow->begin();
        f.flow->next();
        f.flow->setLabel(QStringLiteral("Work"));
        f.flow->next();
        OnboardingContent content = f.content();
        QCOMPARE(content.connection->cards.size(), 3);
        QCOMPARE(content.connection->cards.at(0).badge,
                 std::optional<QString>(QStringLiteral("Recommended")));
        QCOMPARE(content.connection->cards.at(1).subtitle,
                 QStringLiteral("Useful for a private or custom allowance."));
        QCOMPARE(content.connection->cards.at(2).title, QStringLiteral("Connect OpenAI automatically"));
        QCOMPARE(content.connection->cards.at(2).badge, std::optional<QString>(QStringLiteral("Admin key")));
        QCOMPARE(content.connection->sampleLine,
                 std::optional<QString>(QStringLiteral(
                     "No network calls are made in sample mode. The dashboard marks sample data clearly.")));
        QCOMPARE(titles(content.footer.trailing), QStringList{QStringLiteral("Add subscription")});

        Flow other;
        other.flow->begin();
        other.flow->selectProvider(AIProvider::gemini);
        other.flow->next();
        other.flow->setLabel(QStringLiteral("Gem"));
        other.flow->next();
        content = other.content();
        QCOMPARE(content.connection->cards.size(), 2);
        QCOMPARE(content.connection->cards.at(1).subtitle,
                 QStringLiteral("Best for consumer plans without a documented usage API."));
    }

    void duringATestTheWayOnIsClosedButBackIsNot() {
        Flow f;
        f.flow->begin();
        f.flow->next();
        f.flow->setLabel(QStringLiteral("Work"));
        f.flow->next();
        f.flow->selectConnectionMode(ConnectionMode::apiKey);
        OnboardingContent content = f.content();
        QCOMPARE(content.connection->keyFields->test.title, QStringLiteral("Test connection"));
        QVERIFY(!content.connection->keyFields->test.enabled); // nothing typed
        QCOMPARE(
            content.connection->keyFields->keychainLabel,
            QStringLiteral("We’ll save it in the system keychain and use it only when you press Refresh."));
        f.flow->setAPIKey(QStringLiteral("sk-admin"));
        QVERIFY(f.content().connection->keyFields->test.enabled);
        // A server that never answers keeps the test running long enough to look at.
        SilentServer silent;
        ProviderFactory::setOpenAIBase(silent.base());
        f.flow->testConnection();
        content = f.content();
        QCOMPARE(content.connection->keyFields->test.title, QStringLiteral("Checking…"));
        QVERIFY(!content.connection->keyFields->test.enabled);
        QVERIFY(content.connection->keyFields->showsProgress);
        QCOMPARE(content.connection->keyFields->cancelTitle,
                 std::optional<QString>(QStringLiteral("Cancel")));
        QVERIFY(!content.footer.trailing.first().enabled);
        QVERIFY(!content.footer.saveForLater->enabled);
        QVERIFY(content.footer.back->enabled);
        f.flow->cancelConnectionTest();
        ProviderFactory::setOpenAIBase(QUrl());
    }

    void manualPreviewsAndToggles() {
        QCOMPARE(OnboardingContent::manualRemainingPreview(QStringLiteral("12"), QStringLiteral("10"),
                                                           UsageUnit::requests),
                 std::optional<QString>(QStringLiteral("over by 2 requests left")));
        QCOMPARE(OnboardingContent::manualRemainingPreview(QStringLiteral("10"), QStringLiteral("10"),
                                                           UsageUnit::requests),
                 std::optional<QString>(QStringLiteral("0 requests left")));
        QVERIFY(!OnboardingContent::manualRemainingPreview(QStringLiteral("0"), QStringLiteral("0"),
                                                           UsageUnit::requests));
        QVERIFY(
            !OnboardingContent::manualRemainingPreview(QString(), QStringLiteral("10"), UsageUnit::requests));

        Flow f;
        f.flow->begin();
        f.flow->next();
        f.flow->setLabel(QStringLiteral("Work"));
        f.flow->next();
        f.flow->selectConnectionMode(ConnectionMode::manual);
        f.flow->setShortUsed(QStringLiteral("12"));
        f.flow->setShortLimit(QStringLiteral("10"));
        OnboardingContent content = f.content();
        QCOMPARE(content.connection->manualFields->previews,
                 QStringList{QStringLiteral("Current window: over by 2 requests left")});
        QCOMPARE(content.connection->manualFields->overageToggle,
                 std::optional<QString>(QStringLiteral("These numbers include an overage")));
        QVERIFY(!content.connection->manualFields->units.contains(UsageUnit::items));
        f.flow->setShortUsed(QStringLiteral("10"));
        content = f.content();
        QVERIFY(!content.connection->manualFields->overageToggle);
        QCOMPARE(content.connection->manualFields->previews,
                 QStringList{QStringLiteral("Current window: 0 requests left")});
        f.flow->setWeeklyResetMode(OnboardingResetMode::setTime);
        f.flow->setWeeklyResetDate(kNow.addingSeconds(-60));
        content = f.content();
        QCOMPARE(content.connection->manualFields->weekly.resetsTitle,
                 std::optional<QString>(QStringLiteral("Resets")));
        QVERIFY(!content.connection->manualFields->shortTerm.resetsTitle);
        QCOMPARE(content.connection->manualFields->overdueToggle,
                 std::optional<QString>(QStringLiteral("This reset has already happened")));
    }

    void detectedSummary() {
        const UsageWindow limited{
            .id = QStringLiteral("a"), .title = QStringLiteral("a"), .unit = UsageUnit::tokens, .limit = 10};
        UsageWindow open = limited;
        open.limit.reset();
        QCOMPARE(OnboardingContent::detectedMetadataSummary(ProviderConnectionMetadata{.windows = {open}})
                     .signalLine,
                 QStringLiteral("No quota ceiling was exposed by the provider yet."));
        QCOMPARE(
            OnboardingContent::detectedMetadataSummary(ProviderConnectionMetadata{.windows = {limited, open}})
                .signalLine,
            QStringLiteral("1 quota signal detected. Refresh will fill in current usage."));
        const OnboardingContent::Detected two =
            OnboardingContent::detectedMetadataSummary(ProviderConnectionMetadata{
                .displayName = QStringLiteral("Research"), .windows = {limited, limited}});
        QCOMPARE(two.signalLine,
                 QStringLiteral("2 quota signals detected. Refresh will fill in current usage."));
        QCOMPARE(two.name, std::optional<QString>(QStringLiteral("Research")));
        QCOMPARE(two.label, QStringLiteral("Automatically detected"));
    }

    void readyPage() {
        Flow f;
        f.flow->begin();
        f.flow->selectProvider(AIProvider::xAI);
        f.flow->next();
        f.flow->setLabel(QStringLiteral("Grok"));
        f.flow->next();
        f.flow->next();
        OnboardingContent content = f.content();
        QCOMPARE(content.page, OnboardingPage::ready);
        QCOMPARE(content.ready->heading, QStringLiteral("Nice — your account is ready."));
        QCOMPARE(content.ready->summary, QStringLiteral("Sample dashboard data · no network calls"));
        QCOMPARE(content.ready->tag, QStringLiteral("Ready"));
        QCOMPARE(titles(content.footer.trailing),
                 (QStringList{"Add another subscription", "Open dashboard"}));
        QVERIFY(content.footer.trailing.last().isDefault);
        // A blank name reads as the provider's.
        f.flow->setLabel(QStringLiteral("  "));
        QCOMPARE(f.content().ready->name, QStringLiteral("Grok · Personal"));
    }

    void connectionSummaries() {
        QCOMPARE(OnboardingContent::connectionSummary(ConnectionMode::manual, true, false),
                 QStringLiteral("Operator-entered limits"));
        QCOMPARE(OnboardingContent::connectionSummary(ConnectionMode::manual, false, false),
                 QStringLiteral("Manual limits can be added later"));
        QCOMPARE(OnboardingContent::connectionSummary(ConnectionMode::apiKey, false, false),
                 QStringLiteral("Key verified · press Refresh for your first usage signal"));
        QCOMPARE(OnboardingContent::connectionSummary(ConnectionMode::apiKey, false, true),
                 QStringLiteral("Key verified · provider metadata and caps detected"));
        QCOMPARE(OnboardingContent::connectionSummary(ConnectionMode::browser, false, false),
                 QStringLiteral("Reference page only; choose manual setup to track provider limits"));
    }
};

QTEST_GUILESS_MAIN(TestOnboardingContent)
#include "tst_onboardingcontent.moc"
