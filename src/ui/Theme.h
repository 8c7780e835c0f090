#pragma once

#include "views/Tone.h"

#include <QColor>
#include <QFont>
#include <QPalette>

class QWidget;

// The visual language in one place (docs/design.md says why): the spacing scale, corner
// radii, type ramp, card surfaces and the colour of every tone in a light and a dark
// window. Widgets take their measures and colours from here and nowhere else.
class Theme final {
public:
    Theme() = delete;

    enum class Appearance { light, dark };
    // High contrast darkens (or, in a dark window, lightens) text, hairlines and tones to
    // 7:1 or more against the surfaces they stand on.
    enum class Contrast { standard, high };

    // Spacing scale, in device-independent pixels.
    static constexpr int kSpaceXS = 4;
    static constexpr int kSpaceS = 8;
    static constexpr int kSpaceM = 12;
    static constexpr int kSpaceL = 16;
    static constexpr int kSpaceXL = 24;
    static constexpr int kSpaceXXL = 32;

    // Corner radii.
    static constexpr int kRadiusSmall = 6;
    static constexpr int kRadiusCard = 12;

    // Type ramp, in device-independent pixels (a desktop point is 4/3 of one): the body
    // size and the steps around it.
    static constexpr int kCaption = 11;
    static constexpr int kFootnote = 12;
    static constexpr int kBody = 13;
    static constexpr int kHeadline = 15;
    static constexpr int kTitle = 20;
    static constexpr int kLargeTitle = 26;

    // The font at one step of the ramp.
    static QFont font(const QFont& base, int pixels, QFont::Weight weight = QFont::Normal);
    // The same font with tabular figures, so a number that changes keeps its width.
    static QFont tabular(const QFont& base);

    // The colours of one tone: its text and icons on a card, and the faint fill of a
    // badge in that tone (its text stays `foreground`).
    struct ToneColors {
        QColor foreground;
        QColor fill;
    };

    // Dark when the desktop's window colour is dark.
    static Appearance appearance(const QPalette& palette);
    // The application's present appearance, from its palette.
    static Appearance current();
    // The application's contrast; set with its palette (AppStyle::apply).
    static Contrast contrast();
    static void setContrast(Contrast contrast);

    static ToneColors colors(Tone tone, Appearance appearance, Contrast contrast = Theme::contrast());
    static QColor window(Appearance appearance, Contrast contrast = Theme::contrast());
    static QColor card(Appearance appearance, Contrast contrast = Theme::contrast());
    static QColor separator(Appearance appearance, Contrast contrast = Theme::contrast());
    static QColor primaryText(Appearance appearance, Contrast contrast = Theme::contrast());
    static QColor secondaryText(Appearance appearance, Contrast contrast = Theme::contrast());
    // Text and icons on the accent's fill (a primary button).
    static QColor onAccent(Appearance appearance);

    // The sidebar's surface: a shade between the window and a card.
    static QColor sidebar(Appearance appearance, Contrast contrast = Theme::contrast());

    // The application's palette for an appearance: window, cards as the base, text,
    // the accent as highlight and link.
    static QPalette palette(Appearance appearance, Contrast contrast = Theme::contrast());

    // The role a push button plays; the application's style draws each differently.
    enum class ButtonRole { standard, primary, destructive, plain, link };
    static void setButtonRole(QWidget* button, ButtonRole role);

    // Paints a card surface over `rect` for the widget's palette: the card colour with a
    // hairline border and the card radius, or a muted panel without a border.
    static void paintCard(QWidget* widget, bool muted = false);

    // The WCAG contrast ratio of two opaque colours, from 1 to 21.
    static double contrastRatio(const QColor& a, const QColor& b);
};
