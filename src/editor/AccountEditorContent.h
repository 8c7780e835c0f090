#pragma once

#include "editor/AccountEditorFields.h"
#include "editor/ManualHorizonFields.h"
#include "editor/ProviderAuthTile.h"

#include <QList>
#include <QString>

#include <optional>

// What the account editor sheet shows for the form as it stands: every text, which
// tiles and panels appear and which are selected, in the order of the sheet. The sheet
// only draws it.
struct AccountEditorContent {
    struct TextField {
        QString title;
        QString prompt;
        friend bool operator==(const TextField&, const TextField&) = default;
    };
    struct ProviderTile {
        AIProvider provider;
        QString name;
        bool isSelected = false;
        friend bool operator==(const ProviderTile&, const ProviderTile&) = default;
    };
    struct BrowserPanel {
        QString symbol;
        QString heading;
        QString text;
        QString openTitle;
        bool showsRefresh = false;
        friend bool operator==(const BrowserPanel&, const BrowserPanel&) = default;
    };
    struct KeyPanel {
        QString fieldTitle;
        QString note;
        QString testTitle;
        bool testEnabled = true;
        bool showsRefresh = false;
        bool refreshEnabled = true;
        bool showsLogout = false;
        friend bool operator==(const KeyPanel&, const KeyPanel&) = default;
    };
    struct SamplePanel {
        QString toggleTitle;
        QString text;
        friend bool operator==(const SamplePanel&, const SamplePanel&) = default;
    };
    struct ManualSection {
        QString heading;
        QString unitTitle;
        QList<UsageUnit> units;
        ManualHorizonFields shortTerm;
        ManualHorizonFields weekly;
        QString note;
        friend bool operator==(const ManualSection&, const ManualSection&) = default;
    };
    struct DetectedPanel {
        QString symbol;
        QString heading;
        QString name;
        QString signalLine;
        QString overrideTitle;
        friend bool operator==(const DetectedPanel&, const DetectedPanel&) = default;
    };
    struct Message {
        QString text;
        QString symbol;
        friend bool operator==(const Message&, const Message&) = default;
    };

    QString title;
    QString cancelTitle;
    QString saveTitle;

    QString subscriptionHeading;
    QString subscriptionText;
    TextField label;
    QList<ProviderTile> providers;
    QString selectedSymbol;

    QString authenticationHeading;
    QString authenticationText;
    QList<ProviderAuthTile> authTiles;
    std::optional<BrowserPanel> browserPanel;
    std::optional<KeyPanel> keyPanel;
    std::optional<QString> testMessage;
    std::optional<SamplePanel> samplePanel;
    QString securityNote;

    std::optional<ManualSection> manual;

    QString advancedHeading;
    TextField identity;
    TextField modelScope;
    TextField agentScope;
    TextField agentRoster;
    TextField agentCount;
    QString renewalToggleTitle;
    // The picker shows only while the renewal date is tracked.
    std::optional<QString> renewalPickerTitle;
    std::optional<DetectedPanel> detected;
    // The override field shows only while nothing was detected.
    std::optional<TextField> planOverride;
    QString advancedNote;

    QString budgetsHeading;
    QString budgetsNote;

    std::optional<Message> error;

    // `hasExisting`: the sheet edits a stored account rather than making a new one.
    static AccountEditorContent make(const AccountEditorFields& fields, bool hasExisting);
    // The line about the detected limits: "No quota ceiling…" or "2 provider-reported quota signals".
    static QString detectedSignals(const ProviderConnectionMetadata& metadata);
};
