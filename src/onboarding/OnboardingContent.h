#pragma once

#include "model/AIProvider.h"
#include "model/ConnectionMode.h"
#include "model/OnboardingResetMode.h"
#include "model/ProviderConnectionMetadata.h"
#include "model/UsageUnit.h"
#include "onboarding/OnboardingPage.h"

#include <QList>
#include <QString>

#include <optional>

class OnboardingFlow;

// What the guided flow's sheet shows for the flow as it stands: the header, the page's
// own content and the footer, every text and which choices are selected or enabled.
// The sheet only draws it.
struct OnboardingContent {
    struct Button {
        QString title;
        bool enabled = true;
        // The prominent button, which Return presses.
        bool isDefault = false;
        friend bool operator==(const Button&, const Button&) = default;
    };
    struct Header {
        QString brand;
        QString tagline;
        QString step;
        int filledCapsules = 1; // of five
        QString capsulesLabel;
        friend bool operator==(const Header&, const Header&) = default;
    };
    struct Footer {
        std::optional<Button> back;
        std::optional<Button> saveForLater;
        QList<Button> trailing;
        friend bool operator==(const Footer&, const Footer&) = default;
    };
    struct Welcome {
        QString heading;
        QString text;
        QString privacyLabel;
        QString privacySymbol;
        QString privacyLine;
        QList<Button> buttons; // the main button first; "I’ll do this later" last, as a link
        friend bool operator==(const Welcome&, const Welcome&) = default;
    };
    struct ChoiceCard {
        QString title;
        QString subtitle;
        QString symbol; // a provider card draws the provider's logo instead
        std::optional<QString> badge;
        bool isSelected = false;
        QString trailingSymbol; // "checkmark.circle.fill" or "circle"
        QString accessibleName;
        friend bool operator==(const ChoiceCard&, const ChoiceCard&) = default;
    };
    struct ProviderPage {
        QString title;
        QString subtitle;
        QList<ChoiceCard> cards; // one per provider, in case order
        QString line;
        QString disclosureTitle;
        QString disclosureText;
        friend bool operator==(const ProviderPage&, const ProviderPage&) = default;
    };
    struct NamePage {
        QString title;
        QString subtitle;
        QString fieldLabel;
        QString placeholder;
        QString hint;
        std::optional<QString> validation;
        // While the name is taken: the warning and "Use anyway".
        std::optional<QString> duplicateText;
        QString useAnywayTitle;
        QString preview;
        friend bool operator==(const NamePage&, const NamePage&) = default;
    };
    struct ManualPair {
        QString title;
        QString usedTitle;
        QString limitTitle;
        QString resetTitle;
        QList<OnboardingResetMode> resetModes;
        // The date picker shows only for a known reset time.
        std::optional<QString> resetsTitle;
        friend bool operator==(const ManualPair&, const ManualPair&) = default;
    };
    struct ManualFields {
        QString title;
        QString unitTitle;
        QList<UsageUnit> units;
        QString line;
        ManualPair shortTerm;
        ManualPair weekly;
        QStringList previews;
        std::optional<QString> overageToggle;
        QString overageHint;
        std::optional<QString> overdueToggle;
        QString overdueHint;
        QString footnote;
        friend bool operator==(const ManualFields&, const ManualFields&) = default;
    };
    struct KeyFields {
        QString fieldLabel;
        QString placeholder;
        QString keychainLabel;
        QString pasteTitle;
        Button test;
        bool showsProgress = false;
        std::optional<QString> cancelTitle;
        std::optional<QString> message;
        bool messageIsPositive = false;
        QString note;
        QString manualLink;
        friend bool operator==(const KeyFields&, const KeyFields&) = default;
    };
    struct Detected {
        QString label;
        std::optional<QString> name;
        QString signalLine;
        friend bool operator==(const Detected&, const Detected&) = default;
    };
    struct ConnectionPage {
        QString title;
        QString subtitle;
        QList<ChoiceCard> cards;
        QList<ConnectionMode> cardModes; // the mode of each card, in order
        std::optional<KeyFields> keyFields;
        std::optional<ManualFields> manualFields;
        std::optional<QString> sampleLine;
        std::optional<Detected> detected;
        std::optional<QString> validation;
        friend bool operator==(const ConnectionPage&, const ConnectionPage&) = default;
    };
    struct ReadyPage {
        QString heading;
        QString text;
        QString name;
        QString summary;
        QString tag;
        friend bool operator==(const ReadyPage&, const ReadyPage&) = default;
    };

    OnboardingPage page = OnboardingPage::welcome;
    Header header;
    Footer footer;
    std::optional<Welcome> welcome;
    std::optional<ProviderPage> provider;
    std::optional<NamePage> name;
    std::optional<ConnectionPage> connection;
    std::optional<ReadyPage> ready;

    static OnboardingContent make(const OnboardingFlow& flow);
    // Single parts of a page for the flow as it stands, whatever page it is on: the sheet
    // builds each page's controls once from them.
    static ProviderPage providerPage(const OnboardingFlow& flow);
    static KeyFields keyFields(const OnboardingFlow& flow);
    static ManualFields manualFields(const OnboardingFlow& flow);

    static QString labelPlaceholder(AIProvider provider);
    // "12 requests left", "over by 2 requests left"; absent without two numbers and a limit above 0.
    static std::optional<QString> manualRemainingPreview(const QString& used, const QString& limit,
                                                         UsageUnit unit);
    static Detected detectedMetadataSummary(const ProviderConnectionMetadata& metadata);
    static QString connectionSummary(ConnectionMode mode, bool hasManualAllowance, bool hasMetadata);
};
