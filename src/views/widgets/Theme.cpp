#include "views/widgets/Theme.h"

#include "views/widgets/AppResources.h"
#include "views/widgets/AppStyle.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>
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

Theme::ToneColors Theme::colors(Tone tone, Appearance appearance) {
    const bool dark = appearance == Appearance::dark;
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
    return ToneColors{primaryText(appearance), card(appearance)};
}

QColor Theme::window(Appearance appearance) {
    return appearance == Appearance::dark ? hex("#15171A") : hex("#F4F5F7");
}

QColor Theme::sidebar(Appearance appearance) {
    return appearance == Appearance::dark ? hex("#1A1C20") : hex("#ECEEF1");
}

QPalette Theme::palette(Appearance look) {
    QPalette palette;
    const QColor text = primaryText(look);
    const QColor secondary = secondaryText(look);
    const QColor accent = colors(Tone::accent, look).foreground;
    palette.setColor(QPalette::Window, window(look));
    palette.setColor(QPalette::Base, card(look));
    palette.setColor(QPalette::AlternateBase, sidebar(look));
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Button, card(look));
    palette.setColor(QPalette::ToolTipBase, card(look));
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, secondary);
    palette.setColor(QPalette::Highlight, colors(Tone::accent, look).fill);
    palette.setColor(QPalette::HighlightedText, text);
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::Mid, separator(look));
    palette.setColor(QPalette::Midlight, separator(look));
    palette.setColor(QPalette::Dark, separator(look));
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, secondary);
    }
    return palette;
}

QString Theme::styleSheet(Appearance look) {
    const QString text = primaryText(look).name();
    const QString secondary = secondaryText(look).name();
    const QString surface = card(look).name();
    const QString line = separator(look).name();
    const QString accent = colors(Tone::accent, look).foreground.name();
    const QString accentFill = colors(Tone::accent, look).fill.name();
    const QString onAccent = look == Appearance::dark ? QStringLiteral("#10131A") : QStringLiteral("#FFFFFF");
    const QString critical = colors(Tone::critical, look).foreground.name();
    const QString criticalFill = colors(Tone::critical, look).fill.name();
    const QString muted = colors(Tone::muted, look).fill.name();
    QString sheet = QStringLiteral(R"(
QPushButton { background: @surface; color: @text; border: 1px solid @line; border-radius: @rpx;
              padding: 5px 12px; }
QPushButton:hover { background: @muted; }
QPushButton:focus { border-color: @accent; }
QPushButton:disabled { color: @secondary; }
QPushButton[role="primary"] { background: @accent; color: @onAccent; border: 2px solid @accent; padding: 3px 10px;
                              font-weight: 600; }
QPushButton[role="primary"]:focus { border-color: @accentFill; }
QPushButton[role="primary"]:disabled { background: @muted; border-color: @muted; color: @secondary; }
QPushButton[role="destructive"] { color: @critical; border-color: @line; }
QPushButton[role="destructive"]:hover { background: @criticalFill; }
QPushButton[role="destructive"]:focus { border-color: @accent; }
QPushButton[role="plain"] { border-color: transparent; background: transparent; padding: 4px 11px; }
QPushButton[role="plain"]:hover { background: @muted; }
QPushButton[role="plain"]:focus { border-color: @accent; }
QPushButton[role="link"] { border-color: transparent; background: transparent; color: @accent; padding: 4px 3px; }
QPushButton[role="link"]:hover { text-decoration: underline; }
QPushButton[role="link"]:focus { border-color: @accent; }
QPushButton[role="link"]:disabled { color: @secondary; }
QToolButton { border: 1px solid transparent; border-radius: @rpx; padding: 3px 7px; color: @text; }
QToolButton:hover { background: @muted; }
QToolButton:checked { background: @surface; border-color: @line; }
QToolButton:focus { border-color: @accent; }
QToolButton:disabled { color: @secondary; }
QLineEdit { background: @surface; color: @text; border: 1px solid @line; border-radius: @rpx;
            padding: 5px 8px; selection-background-color: @accentFill; }
QLineEdit:focus { border-color: @accent; }
QComboBox { background: @surface; color: @text; border: 1px solid @line; border-radius: @rpx;
            padding: 4px 10px; }
QComboBox:focus { border-color: @accent; }
QComboBox::drop-down { border: none; width: 22px; }
QComboBox::down-arrow { image: url(:/icons/chevron-down-@look.svg); width: 12px; height: 12px; }
QComboBox QAbstractItemView { background: @surface; color: @text; border: 1px solid @line;
                              selection-background-color: @accentFill; selection-color: @text; outline: none; }
QAbstractSpinBox { background: @surface; color: @text; border: 1px solid @line; border-radius: @rpx;
                   padding: 4px 8px; selection-background-color: @accentFill; }
QAbstractSpinBox:focus { border-color: @accent; }
QDateTimeEdit::drop-down { border: none; width: 22px; }
QDateTimeEdit::down-arrow { image: url(:/icons/chevron-down-@look.svg); width: 12px; height: 12px; }
QPlainTextEdit { background: @surface; color: @text; border: 1px solid @line; border-radius: @rpx;
                 padding: 4px; selection-background-color: @accentFill; }
QPlainTextEdit:focus { border-color: @accent; }
QCalendarWidget QWidget { background: @surface; color: @text; alternate-background-color: @surface; }
QCalendarWidget QAbstractItemView { selection-background-color: @accent; selection-color: white; }
QCalendarWidget QToolButton { color: @text; background: transparent; border: none; padding: 4px 8px; }
#qt_calendar_navigationbar { background: @surface; border-bottom: 1px solid @line; }
QMenu { background: @surface; color: @text; border: 1px solid @line; padding: 4px; }
QMenu::item { padding: 5px 18px; border-radius: 4px; }
QMenu::item:selected { background: @accentFill; }
QMenu::item:disabled { color: @secondary; }
QMenu::separator { height: 1px; background: @line; margin: 4px 6px; }
QMenuBar { background: transparent; color: @text; }
QMenuBar::item:selected { background: @muted; border-radius: 4px; }
QToolBar { background: transparent; border: none; spacing: 6px; padding: 6px 12px; }
QToolBar::separator { width: 1px; background: @line; margin: 4px 6px; }
QScrollArea { background: transparent; border: none; }
QScrollBar:vertical { background: transparent; width: 10px; margin: 2px; }
QScrollBar::handle:vertical { background: @line; border-radius: 3px; min-height: 32px; }
QScrollBar::add-line, QScrollBar::sub-line { height: 0; width: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
QSplitter::handle { background: @line; }
QToolTip { background: @surface; color: @text; border: 1px solid @line; padding: 4px; }
QMessageBox QLabel { color: @text; }
)");
    sheet.replace(QStringLiteral("@onAccent"), onAccent)
        .replace(QStringLiteral("@accentFill"), accentFill)
        .replace(QStringLiteral("@accent"), accent)
        .replace(QStringLiteral("@criticalFill"), criticalFill)
        .replace(QStringLiteral("@critical"), critical)
        .replace(QStringLiteral("@secondary"), secondary)
        .replace(QStringLiteral("@surface"), surface)
        .replace(QStringLiteral("@muted"), muted)
        .replace(QStringLiteral("@line"), line)
        .replace(QStringLiteral("@text"), text)
        .replace(QStringLiteral("@r"), QString::number(kRadiusSmall))
        .replace(QStringLiteral("@look"),
                 look == Appearance::dark ? QStringLiteral("dark") : QStringLiteral("light"));
    return sheet;
}

void Theme::apply(Appearance appearance) {
    QApplication::setStyle(new AppStyle);
    QApplication::setPalette(palette(appearance));
    qApp->setStyleSheet(styleSheet(appearance));
}

void Theme::setButtonRole(QWidget* button, ButtonRole role) {
    static const char* const names[] = {"standard", "primary", "destructive", "plain", "link"};
    button->setProperty("role", QString::fromLatin1(names[static_cast<int>(role)]));
    button->style()->unpolish(button);
    button->style()->polish(button);
}

QColor Theme::card(Appearance appearance) {
    return appearance == Appearance::dark ? hex("#1F2227") : hex("#FFFFFF");
}

QColor Theme::separator(Appearance appearance) {
    return appearance == Appearance::dark ? hex("#2E3238") : hex("#E3E5E9");
}

QColor Theme::primaryText(Appearance appearance) {
    return appearance == Appearance::dark ? hex("#ECEEF1") : hex("#1B1F24");
}

QColor Theme::secondaryText(Appearance appearance) {
    return colors(Tone::muted, appearance).foreground;
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
