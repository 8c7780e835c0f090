#pragma once

#include "services/DesktopSettings.h"
#include "ui/Theme.h"

#include <QObject>

// Keeps the application looking as the desktop asks: light or dark and the contrast,
// through the theme's palette (every open window, sheet and menu repaints in it), and
// motion, for the few places that move.
class DesktopLook final : public QObject {
    Q_OBJECT

public:
    // Notes light or dark as the platform's palette has it now, for a desktop that has
    // no preference: construct it before the theme's palette is applied.
    explicit DesktopLook(DesktopSettings* settings, QObject* parent = nullptr);

    // What a colour scheme asks for, the platform's own appearance where it asks nothing.
    static Theme::Appearance appearanceFor(DesktopSettings::ColorScheme scheme, Theme::Appearance platform);

    Theme::Appearance appearance() const;
    Theme::Contrast contrast() const;
    bool reduceMotion() const;

    // Sets the application's style and palette for what the desktop asks now; called by
    // itself on every change after the first.
    void apply();

signals:
    void reduceMotionChanged(bool reduce);

private:
    void follow();
    Theme::Appearance platform() const;

    DesktopSettings* m_settings;
    Theme::Appearance m_platform;
    bool m_applied = false;
    bool m_reduceMotion = false;
};
