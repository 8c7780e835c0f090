#include "ui/DesktopLook.h"

#include "ui/AppStyle.h"

#include <QGuiApplication>
#include <QStyleHints>

DesktopLook::DesktopLook(DesktopSettings* settings, QObject* parent)
    : QObject(parent)
    , m_settings(settings)
    , m_platform(Theme::appearance(QGuiApplication::palette()))
    , m_reduceMotion(settings->state().reduceMotion) {
    connect(m_settings, &DesktopSettings::changed, this, &DesktopLook::follow);
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    // Where Qt itself learns the system's scheme (macOS, and some Linux platform themes).
    connect(QGuiApplication::styleHints(), &QStyleHints::colorSchemeChanged, this, &DesktopLook::follow);
#endif
}

Theme::Appearance DesktopLook::appearanceFor(DesktopSettings::ColorScheme scheme,
                                             Theme::Appearance platform) {
    switch (scheme) {
    case DesktopSettings::ColorScheme::dark:
        return Theme::Appearance::dark;
    case DesktopSettings::ColorScheme::light:
        return Theme::Appearance::light;
    case DesktopSettings::ColorScheme::noPreference:
        break;
    }
    return platform;
}

Theme::Appearance DesktopLook::platform() const {
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    switch (QGuiApplication::styleHints()->colorScheme()) {
    case Qt::ColorScheme::Dark:
        return Theme::Appearance::dark;
    case Qt::ColorScheme::Light:
        return Theme::Appearance::light;
    default:
        break;
    }
#endif
    return m_platform;
}

Theme::Appearance DesktopLook::appearance() const {
    return appearanceFor(m_settings->state().colorScheme, platform());
}

Theme::Contrast DesktopLook::contrast() const {
    return m_settings->state().highContrast ? Theme::Contrast::high : Theme::Contrast::standard;
}

bool DesktopLook::reduceMotion() const {
    return m_settings->state().reduceMotion;
}

void DesktopLook::apply() {
    const Theme::Appearance look = appearance();
    const Theme::Contrast contrast = this->contrast();
    // The palette on the application says what was applied last.
    if (m_applied && look == Theme::current() && contrast == Theme::contrast()) {
        return;
    }
    m_applied = true;
    AppStyle::apply(look, contrast);
}

void DesktopLook::follow() {
    // Before the first apply() the start-up sets the look; only changes after it are followed here.
    if (m_applied) {
        apply();
    }
    if (const bool reduce = reduceMotion(); reduce != m_reduceMotion) {
        m_reduceMotion = reduce;
        Q_EMIT reduceMotionChanged(reduce);
    }
}
