#include "onboarding/OnboardingSavedDraft.h"

const QString OnboardingSavedDraft::kLabel = QStringLiteral("onboardingDraftLabel");
const QString OnboardingSavedDraft::kProvider = QStringLiteral("onboardingDraftProvider");
const QString OnboardingSavedDraft::kMode = QStringLiteral("onboardingDraftMode");
const QString OnboardingSavedDraft::kShortUsed = QStringLiteral("onboardingDraftShortUsed");
const QString OnboardingSavedDraft::kShortLimit = QStringLiteral("onboardingDraftShortLimit");
const QString OnboardingSavedDraft::kWeeklyUsed = QStringLiteral("onboardingDraftWeeklyUsed");
const QString OnboardingSavedDraft::kWeeklyLimit = QStringLiteral("onboardingDraftWeeklyLimit");
const QString OnboardingSavedDraft::kManualUnit = QStringLiteral("onboardingDraftManualUnit");
const QString OnboardingSavedDraft::kShortResetMode = QStringLiteral("onboardingDraftShortResetMode");
const QString OnboardingSavedDraft::kWeeklyResetMode = QStringLiteral("onboardingDraftWeeklyResetMode");
const QString OnboardingSavedDraft::kShortResetTime = QStringLiteral("onboardingDraftShortResetTime");
const QString OnboardingSavedDraft::kWeeklyResetTime = QStringLiteral("onboardingDraftWeeklyResetTime");
const QString OnboardingSavedDraft::kPage = QStringLiteral("onboardingDraftPage");

QStringList OnboardingSavedDraft::keys() {
    return {kLabel,          kProvider,        kMode,       kShortUsed,      kShortLimit,
            kWeeklyUsed,     kWeeklyLimit,     kManualUnit, kShortResetMode, kWeeklyResetMode,
            kShortResetTime, kWeeklyResetTime, kPage};
}

OnboardingSavedDraft OnboardingSavedDraft::load(const QSettings& settings) {
    const auto text = [&settings](const QString& key) { return settings.value(key).toString(); };
    const auto number = [&settings](const QString& key) {
        bool ok = false;
        const double value = settings.value(key).toDouble(&ok);
        return ok ? value : 0.0;
    };
    bool pageOK = false;
    const int page = settings.value(kPage).toInt(&pageOK);
    return OnboardingSavedDraft{.label = text(kLabel),
                                .provider = text(kProvider),
                                .mode = text(kMode),
                                .shortUsed = text(kShortUsed),
                                .shortLimit = text(kShortLimit),
                                .weeklyUsed = text(kWeeklyUsed),
                                .weeklyLimit = text(kWeeklyLimit),
                                .manualUnit = text(kManualUnit),
                                .shortResetMode = text(kShortResetMode),
                                .weeklyResetMode = text(kWeeklyResetMode),
                                .shortResetTime = number(kShortResetTime),
                                .weeklyResetTime = number(kWeeklyResetTime),
                                .page = pageOK ? page : 0};
}

void OnboardingSavedDraft::save(QSettings& settings) const {
    settings.setValue(kLabel, label);
    settings.setValue(kProvider, provider);
    settings.setValue(kMode, mode);
    settings.setValue(kShortUsed, shortUsed);
    settings.setValue(kShortLimit, shortLimit);
    settings.setValue(kWeeklyUsed, weeklyUsed);
    settings.setValue(kWeeklyLimit, weeklyLimit);
    settings.setValue(kManualUnit, manualUnit);
    settings.setValue(kShortResetMode, shortResetMode);
    settings.setValue(kWeeklyResetMode, weeklyResetMode);
    settings.setValue(kShortResetTime, shortResetTime);
    settings.setValue(kWeeklyResetTime, weeklyResetTime);
    settings.setValue(kPage, page);
    settings.sync();
}

void OnboardingSavedDraft::clear(QSettings& settings) {
    OnboardingSavedDraft().save(settings);
}
