#include "ui/Theme.h"

#include "ui/AppResources.h"

#include <QApplication>
#include <QPainter>
#include <QWidget>

#include <cmath>

namespace {
QColor hex(const char* text) {
    return QColor(QLatin1StringView(text));
}

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

Theme::Contrast g_contrast = Theme::Contrast::standard;

// One colour for each of the four looks: light, dark, light and dark in high contrast.
QColor pick(Theme::Appearance appearance, Theme::Contrast contrast, const char* light, const char* dark,
            const char* lightHigh, const char* darkHigh) {
    const bool isDark = appearance == Theme::Appearance::dark;
    if (contrast == Theme::Contrast::high) {
        return hex(isDark ? darkHigh : lightHigh);
    }
    return hex(isDark ? dark : light);
}
} // namespace

QFont Theme::font(const QFont& base, int pixels, QFont::Weight weight) {
    QFont sized = base;
    sized.setPixelSize(pixels);
    sized.setWeight(weight);
    return sized;
}

QFont Theme::tabular(const QFont& base) {
    const QString family = AppResources::tabularFontFamily();
    if (family.isEmpty()) {
        return base;
    }
    QFont figures = base;
    figures.setFamilies({family, AppResources::fontFamily()});
    return figures;
}

Theme::Appearance Theme::appearance(const QPalette& palette) {
    QColor window = palette.color(QPalette::Window);
    // A style sheet's transparent background says nothing about light or dark: the
    // application's window colour does.
    if (window.alpha() < 255 || palette.brush(QPalette::Window).style() != Qt::SolidPattern) {
        window = QApplication::palette().color(QPalette::Window);
    }
    return window.lightness() < 128 ? Appearance::dark : Appearance::light;
}

Theme::Appearance Theme::current() {
    return appearance(QApplication::palette());
}

Theme::Contrast Theme::contrast() {
    return g_contrast;
}

void Theme::setContrast(Contrast contrast) {
    g_contrast = contrast;
}

Theme::ToneColors Theme::colors(Tone tone, Appearance appearance, Contrast contrast) {
    const bool dark = appearance == Appearance::dark;
    if (contrast == Contrast::high) {
        switch (tone) {
        case Tone::positive:
            return dark ? ToneColors{hex("#8BEBAD"), hex("#102A19")}
                        : ToneColors{hex("#0A5A22"), hex("#E5F3E9")};
        case Tone::caution:
            return dark ? ToneColors{hex("#FFD08A"), hex("#2E210D")}
                        : ToneColors{hex("#6B3900"), hex("#FCF0DF")};
        case Tone::critical:
            return dark ? ToneColors{hex("#FFB4AD"), hex("#35130F")}
                        : ToneColors{hex("#8E1B14"), hex("#FCE9E7")};
        case Tone::muted:
            return dark ? ToneColors{hex("#D2D7DF"), hex("#24272D")}
                        : ToneColors{hex("#3A404A"), hex("#EEF0F3")};
        case Tone::accent:
            return dark ? ToneColors{hex("#ADC6FF"), hex("#162240")}
                        : ToneColors{hex("#1A3FA6"), hex("#E8EEFC")};
        case Tone::sample:
            return dark ? ToneColors{hex("#E8BFFF"), hex("#281A3E")}
                        : ToneColors{hex("#5A249E"), hex("#F1EBFC")};
        case Tone::reference:
            return dark ? ToneColors{hex("#8FEAE6"), hex("#0F2A28")}
                        : ToneColors{hex("#07514F"), hex("#E3F4F3")};
        }
        return ToneColors{primaryText(appearance, contrast), card(appearance, contrast)};
    }
    switch (tone) {
    case Tone::positive:
        return dark ? ToneColors{hex("#5FD38A"), hex("#17311F")} : ToneColors{hex("#1A7332"), hex("#E5F3E9")};
    case Tone::caution:
        return dark ? ToneColors{hex("#F2B154"), hex("#362812")} : ToneColors{hex("#995200"), hex("#FCF0DF")};
    case Tone::critical:
        return dark ? ToneColors{hex("#FF8F85"), hex("#3B1B19")} : ToneColors{hex("#B3261E"), hex("#FCE9E7")};
    case Tone::muted:
        return dark ? ToneColors{hex("#A7AEBA"), hex("#2A2E35")} : ToneColors{hex("#5B6270"), hex("#EEF0F3")};
    case Tone::accent:
        return dark ? ToneColors{hex("#93B4FF"), hex("#1D2A47")} : ToneColors{hex("#2B55C9"), hex("#E8EEFC")};
    case Tone::sample:
        return dark ? ToneColors{hex("#C5A3FF"), hex("#2E2145")} : ToneColors{hex("#6B3FC4"), hex("#F1EBFC")};
    case Tone::reference:
        return dark ? ToneColors{hex("#6FD3D0"), hex("#15312F")} : ToneColors{hex("#0E6E6B"), hex("#E3F4F3")};
    }
    return ToneColors{primaryText(appearance, contrast), card(appearance, contrast)};
}

QColor Theme::window(Appearance appearance, Contrast contrast) {
    return pick(appearance, contrast, "#F4F5F7", "#15171A", "#F4F5F7", "#0B0C0E");
}

QColor Theme::sidebar(Appearance appearance, Contrast contrast) {
    return pick(appearance, contrast, "#ECEEF1", "#1A1C20", "#ECEEF1", "#101114");
}

QPalette Theme::palette(Appearance look, Contrast contrast) {
    QPalette palette;
    const QColor text = primaryText(look, contrast);
    const QColor secondary = secondaryText(look, contrast);
    const QColor accent = colors(Tone::accent, look, contrast).foreground;
    const QColor line = separator(look, contrast);
    palette.setColor(QPalette::Window, window(look, contrast));
    palette.setColor(QPalette::Base, card(look, contrast));
    palette.setColor(QPalette::AlternateBase, sidebar(look, contrast));
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Button, card(look, contrast));
    palette.setColor(QPalette::ToolTipBase, card(look, contrast));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, secondary);
    palette.setColor(QPalette::Highlight, colors(Tone::accent, look, contrast).fill);
    palette.setColor(QPalette::HighlightedText, text);
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::Mid, line);
    palette.setColor(QPalette::Midlight, line);
    palette.setColor(QPalette::Dark, line);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, secondary);
    }
    return palette;
}

void Theme::setButtonRole(QWidget* button, ButtonRole role) {
    static const char* const names[] = {"standard", "primary", "destructive", "plain", "link"};
    button->setProperty("role", QString::fromLatin1(names[static_cast<int>(role)]));
    // A primary button's title is set in the semibold step; the others keep the body weight.
    // Only the weight is the button's own; the rest of its font follows its parent's.
    QFont weight;
    weight.setWeight(role == ButtonRole::primary ? QFont::DemiBold : QFont::Normal);
    weight.setResolveMask(QFont::WeightResolved);
    button->setFont(weight);
    // The role changes the button's margins: it measures itself again.
    QEvent change(QEvent::StyleChange);
    QApplication::sendEvent(button, &change);
    button->update();
}

QColor Theme::card(Appearance appearance, Contrast contrast) {
    return pick(appearance, contrast, "#FFFFFF", "#1F2227", "#FFFFFF", "#17191D");
}

QColor Theme::separator(Appearance appearance, Contrast contrast) {
    return pick(appearance, contrast, "#E3E5E9", "#2E3238", "#474D57", "#A3AAB6");
}

QColor Theme::primaryText(Appearance appearance, Contrast contrast) {
    return pick(appearance, contrast, "#1B1F24", "#ECEEF1", "#000000", "#FFFFFF");
}

QColor Theme::secondaryText(Appearance appearance, Contrast contrast) {
    return colors(Tone::muted, appearance, contrast).foreground;
}

QColor Theme::onAccent(Appearance appearance) {
    return appearance == Appearance::dark ? QColor(0x10, 0x13, 0x1A) : QColor(Qt::white);
}

void Theme::paintCard(QWidget* widget, bool muted) {
    QPainter painter(widget);
    painter.setRenderHint(QPainter::Antialiasing);
    const Appearance look = appearance(widget->palette());
    painter.setPen(muted ? QPen(Qt::NoPen) : QPen(separator(look), 1));
    painter.setBrush(muted ? colors(Tone::muted, look).fill : card(look));
    painter.drawRoundedRect(QRectF(widget->rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadiusCard, kRadiusCard);
}

double Theme::contrastRatio(const QColor& a, const QColor& b) {
    const double first = luminance(a);
    const double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}
