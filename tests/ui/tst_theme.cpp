#include "ui/Theme.h"

#include "ui/AppResources.h"
#include "ui/AppStyle.h"
#include "ui/BlockParts.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QFontInfo>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QStyleOptionButton>
#include <QTest>

#include <array>
#include <cmath>

namespace {
// The CIE 1976 colour difference of two opaque sRGB colours (D65).
double labDistance(const QColor& first, const QColor& second) {
    const auto lab = [](const QColor& color) {
        const auto linear = [](double c) {
            return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
        };
        const double r = linear(color.redF());
        const double g = linear(color.greenF());
        const double b = linear(color.blueF());
        const double x = (0.4124 * r + 0.3576 * g + 0.1805 * b) / 0.95047;
        const double y = 0.2126 * r + 0.7152 * g + 0.0722 * b;
        const double z = (0.0193 * r + 0.1192 * g + 0.9505 * b) / 1.08883;
        const auto f = [](double t) { return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116.0; };
        return std::array<double, 3>{116 * f(y) - 16, 500 * (f(x) - f(y)), 200 * (f(y) - f(z))};
    };
    const auto one = lab(first);
    const auto two = lab(second);
    return std::hypot(one[0] - two[0], one[1] - two[1], one[2] - two[2]);
}
} // namespace

class TestTheme final : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        AppResources::load();
        QApplication::setFont(QFont(AppResources::fontFamily()));
    }

    void contrastOfKnownPairs() {
        QCOMPARE(Theme::contrastRatio(Qt::black, Qt::white), 21.0);
        QCOMPARE(Theme::contrastRatio(Qt::white, Qt::white), 1.0);
        // WCAG's own example: #777777 on white is just under 4.5.
        QVERIFY(qAbs(Theme::contrastRatio(QColor(0x77, 0x77, 0x77), Qt::white) - 4.48) < 0.01);
    }

    void everyToneIsReadable_data() {
        QTest::addColumn<int>("tone");
        QTest::addColumn<int>("appearance");
        for (const Tone tone : {Tone::positive, Tone::caution, Tone::critical, Tone::muted, Tone::accent,
                                Tone::sample, Tone::reference}) {
            for (const Theme::Appearance appearance : {Theme::Appearance::light, Theme::Appearance::dark}) {
                QTest::addRow("tone %d, %s", int(tone),
                              appearance == Theme::Appearance::dark ? "dark" : "light")
                    << int(tone) << int(appearance);
            }
        }
    }
    void everyToneIsReadable() {
        QFETCH(int, tone);
        QFETCH(int, appearance);
        const auto look = static_cast<Theme::Appearance>(appearance);
        const Theme::ToneColors colors = Theme::colors(static_cast<Tone>(tone), look);
        // Text on its badge's fill, on a card, and on the window: at least 4.5:1.
        QVERIFY2(Theme::contrastRatio(colors.foreground, colors.fill) >= 4.5,
                 qPrintable(QString::number(Theme::contrastRatio(colors.foreground, colors.fill))));
        QVERIFY(Theme::contrastRatio(colors.foreground, Theme::card(look)) >= 4.5);
        QVERIFY(Theme::contrastRatio(colors.foreground, Theme::window(look)) >= 4.5);
    }

    // High contrast: every tone's text at 7:1 or more on its fill and on every surface.
    void everyToneIsReadableInHighContrast_data() { everyToneIsReadable_data(); }
    void everyToneIsReadableInHighContrast() {
        QFETCH(int, tone);
        QFETCH(int, appearance);
        const auto look = static_cast<Theme::Appearance>(appearance);
        constexpr Theme::Contrast high = Theme::Contrast::high;
        const Theme::ToneColors colors = Theme::colors(static_cast<Tone>(tone), look, high);
        for (const QColor& surface :
             {colors.fill, Theme::card(look, high), Theme::window(look, high), Theme::sidebar(look, high)}) {
            QVERIFY2(Theme::contrastRatio(colors.foreground, surface) >= 7.0,
                     qPrintable(QStringLiteral("%1 on %2: %3")
                                    .arg(colors.foreground.name(), surface.name())
                                    .arg(Theme::contrastRatio(colors.foreground, surface))));
        }
        // Its text is not the plain text colour: the tone still says something.
        QVERIFY(colors.foreground != Theme::primaryText(look, high) ||
                static_cast<Tone>(tone) == Tone::muted);
    }

    // Text and hairlines at 7:1 or more on the window, cards and the sidebar.
    void textAndHairlinesInHighContrast() {
        constexpr Theme::Contrast high = Theme::Contrast::high;
        for (const Theme::Appearance look : {Theme::Appearance::light, Theme::Appearance::dark}) {
            for (const QColor& surface :
                 {Theme::card(look, high), Theme::window(look, high), Theme::sidebar(look, high)}) {
                for (const QColor& ink : {Theme::primaryText(look, high), Theme::secondaryText(look, high),
                                          Theme::separator(look, high)}) {
                    QVERIFY2(Theme::contrastRatio(ink, surface) >= 7.0,
                             qPrintable(QStringLiteral("%1 on %2").arg(ink.name(), surface.name())));
                }
            }
            // The palette carries them.
            const QPalette palette = Theme::palette(look, high);
            QCOMPARE(palette.color(QPalette::WindowText), Theme::primaryText(look, high));
            QCOMPARE(palette.color(QPalette::PlaceholderText), Theme::secondaryText(look, high));
            QCOMPARE(palette.color(QPalette::Mid), Theme::separator(look, high));
            QCOMPARE(Theme::appearance(palette), look);
        }
    }

    // No two tones read alike, in any of the four looks: their text colours stand at
    // least 20 apart in CIELAB (the standard palettes' closest pair, accent and sample,
    // are 21 apart).
    void tonesStayDistinguishable() {
        const QList<Tone> tones{Tone::positive, Tone::caution, Tone::critical, Tone::muted,
                                Tone::accent,   Tone::sample,  Tone::reference};
        for (const Theme::Contrast contrast : {Theme::Contrast::standard, Theme::Contrast::high}) {
            for (const Theme::Appearance look : {Theme::Appearance::light, Theme::Appearance::dark}) {
                for (qsizetype a = 0; a < tones.size(); ++a) {
                    for (qsizetype b = a + 1; b < tones.size(); ++b) {
                        const double distance =
                            labDistance(Theme::colors(tones.at(a), look, contrast).foreground,
                                        Theme::colors(tones.at(b), look, contrast).foreground);
                        QVERIFY2(distance >= 20.0, qPrintable(QStringLiteral("tones %1 and %2: %3")
                                                                  .arg(int(tones.at(a)))
                                                                  .arg(int(tones.at(b)))
                                                                  .arg(distance)));
                    }
                }
            }
        }
    }

    void textOnSurfaces() {
        for (const Theme::Appearance look : {Theme::Appearance::light, Theme::Appearance::dark}) {
            QVERIFY(Theme::contrastRatio(Theme::primaryText(look), Theme::card(look)) >= 7.0);
            QVERIFY(Theme::contrastRatio(Theme::secondaryText(look), Theme::card(look)) >= 4.5);
            // Cards stand apart from the window, and separators are quiet.
            QVERIFY(Theme::card(look) != Theme::window(look));
            QVERIFY(Theme::contrastRatio(Theme::separator(look), Theme::card(look)) < 1.6);
        }
    }

    void appearanceFollowsTheDesktop() {
        QPalette light;
        light.setColor(QPalette::Window, QColor(0xF0, 0xF0, 0xF0));
        QCOMPARE(Theme::appearance(light), Theme::Appearance::light);
        QPalette dark;
        dark.setColor(QPalette::Window, QColor(0x20, 0x20, 0x22));
        QCOMPARE(Theme::appearance(dark), Theme::Appearance::dark);
    }

    // Every figure of the tabular face has one width, so a refreshing number keeps its
    // place; the text face keeps its proportional figures.
    void figuresThatChangeKeepTheirWidth() {
        QFont base(AppResources::fontFamily());
        base.setPixelSize(Theme::kLargeTitle);
        const QFont tabular = Theme::tabular(base);
        QCOMPARE(QFontInfo(tabular).family(), QStringLiteral("Inter Tabular"));
        QFontMetricsF figures(tabular);
        for (const QString& text : {QStringLiteral("1,111.11"), QStringLiteral("0,000.00")}) {
            QCOMPARE(figures.horizontalAdvance(text), figures.horizontalAdvance(QStringLiteral("8,888.88")));
        }
        QFontMetricsF proportional(base);
        QVERIFY(proportional.horizontalAdvance(QStringLiteral("1111")) <
                proportional.horizontalAdvance(QStringLiteral("8888")));
    }

    void figureLabelsUseTabularFigures() {
        QWidget parent;
        ElidedLabel* figure = BlockParts::value(QStringLiteral("42 requests"), Theme::kBody, QFont::Normal,
                                                ElidedLabel::Ink::primary, &parent);
        ElidedLabel* words = BlockParts::text(QStringLiteral("Requests"), Theme::kBody, QFont::Normal,
                                              ElidedLabel::Ink::primary, &parent);
        QCOMPARE(QFontInfo(figure->font()).family(), QStringLiteral("Inter Tabular"));
        QCOMPARE(QFontInfo(words->font()).family(), AppResources::fontFamily());
    }

    void buttonsOfEveryRoleLineUp() {
        AppStyle::apply(Theme::Appearance::light);
        QWidget window;
        QList<int> heights;
        for (const Theme::ButtonRole role :
             {Theme::ButtonRole::standard, Theme::ButtonRole::primary, Theme::ButtonRole::destructive,
              Theme::ButtonRole::plain, Theme::ButtonRole::link}) {
            auto* button = new QPushButton(QStringLiteral("Save"), &window);
            Theme::setButtonRole(button, role);
            heights.append(button->sizeHint().height());
        }
        QCOMPARE(heights, QList<int>(5, heights.first()));
        QCOMPARE(heights.first(), QFontMetrics(window.font()).height() + 12);
    }

    void primaryTitlesAreSemibold() {
        QWidget window;
        auto* button = new QPushButton(QStringLiteral("Save"), &window);
        Theme::setButtonRole(button, Theme::ButtonRole::primary);
        QCOMPARE(button->font().weight(), QFont::DemiBold);
        // The rest of the font still comes from the window.
        QCOMPARE(button->font().family(), window.font().family());
        Theme::setButtonRole(button, Theme::ButtonRole::standard);
        QCOMPARE(button->font().weight(), QFont::Normal);
    }

    void controlsAreDrawnInTheThemesColours_data() {
        QTest::addColumn<Theme::Appearance>("look");
        QTest::newRow("light") << Theme::Appearance::light;
        QTest::newRow("dark") << Theme::Appearance::dark;
    }

    void controlsAreDrawnInTheThemesColours() {
        QFETCH(Theme::Appearance, look);
        AppStyle::apply(look);
        // No style sheet: the style draws the controls.
        QVERIFY(qApp->styleSheet().isEmpty());
        QWidget window;
        auto* standard = new QPushButton(QStringLiteral("Cancel"), &window);
        Theme::setButtonRole(standard, Theme::ButtonRole::standard);
        auto* primary = new QPushButton(QStringLiteral("Save"), &window);
        Theme::setButtonRole(primary, Theme::ButtonRole::primary);
        auto* field = new QLineEdit(&window);
        for (QWidget* control : {static_cast<QWidget*>(standard), static_cast<QWidget*>(primary),
                                 static_cast<QWidget*>(field)}) {
            control->resize(control->sizeHint());
        }
        // Inside the border, left of any text.
        const auto fill = [](QWidget* control) {
            return control->grab().toImage().pixelColor(4, control->height() / 2);
        };
        QCOMPARE(fill(standard), Theme::card(look));
        QCOMPARE(fill(primary), Theme::colors(Tone::accent, look).foreground);
        QCOMPARE(fill(field), Theme::card(look));
        // The border is a hairline in the separator colour, not the toolkit's grey bevel.
        const QImage edge = standard->grab().toImage();
        QCOMPARE(edge.pixelColor(standard->width() / 2, 0), Theme::separator(look));
        QCOMPARE(edge.pixelColor(standard->width() / 2, standard->height() - 1), Theme::separator(look));
    }

    void scrollBarsAreThinWithoutArrows() {
        AppStyle::apply(Theme::Appearance::light);
        QScrollBar bar(Qt::Vertical);
        bar.setRange(0, 1000);
        bar.setPageStep(10);
        bar.resize(bar.sizeHint().width(), 400);
        QCOMPARE(bar.width(), 10);
        QStyleOptionSlider option;
        option.initFrom(&bar);
        option.orientation = Qt::Vertical;
        option.minimum = bar.minimum();
        option.maximum = bar.maximum();
        option.pageStep = bar.pageStep();
        option.sliderPosition = 0;
        QStyle* style = bar.style();
        QVERIFY(style->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarAddLine, &bar)
                    .isEmpty());
        QVERIFY(style->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSubLine, &bar)
                    .isEmpty());
        // A long list keeps a handle big enough to grab, at the top of its track.
        const QRect handle =
            style->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, &bar);
        QCOMPARE(handle.height(), 32);
        QCOMPARE(handle.top(), 2);
        option.sliderPosition = bar.maximum();
        QCOMPARE(
            style->subControlRect(QStyle::CC_ScrollBar, &option, QStyle::SC_ScrollBarSlider, &bar).bottom(),
            400 - 1 - 2);
    }

    void menuAndPickerLinesHaveRoom() {
        AppStyle::apply(Theme::Appearance::light);
        const int line = QFontMetrics(QApplication::font()).height() + 10;
        QMenu menu;
        menu.addAction(QStringLiteral("Refresh All"));
        menu.addAction(QStringLiteral("Settings…"));
        QCOMPARE(menu.actionGeometry(menu.actions().first()).height(), line);
        // A picker's list hands its own size to the style, not its text's: its lines are
        // measured from the text all the same.
        QComboBox picker;
        picker.addItems({QStringLiteral("Most used first"), QStringLiteral("Soonest reset")});
        picker.resize(200, picker.sizeHint().height());
        QCOMPARE(picker.view()->sizeHintForRow(0), line);
    }

    void buttonsShowFocusWithoutChangingSize_data() {
        QTest::addColumn<Theme::ButtonRole>("role");
        QTest::newRow("standard") << Theme::ButtonRole::standard;
        QTest::newRow("primary") << Theme::ButtonRole::primary;
        QTest::newRow("destructive") << Theme::ButtonRole::destructive;
        QTest::newRow("plain") << Theme::ButtonRole::plain;
        QTest::newRow("link") << Theme::ButtonRole::link;
    }

    void buttonsShowFocusWithoutChangingSize() {
        QFETCH(Theme::ButtonRole, role);
        AppStyle::apply(Theme::Appearance::light);
        QWidget window;
        auto* other = new QPushButton(QStringLiteral("Other"), &window);
        auto* button = new QPushButton(QStringLiteral("Add Account"), &window);
        Theme::setButtonRole(button, role);
        button->move(0, 40);
        window.resize(300, 120);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        other->setFocus();
        QTRY_VERIFY(other->hasFocus());
        const QSize unfocusedSize = button->sizeHint();
        button->resize(unfocusedSize);
        const QImage unfocused = button->grab().toImage();
        button->setFocus();
        QTRY_VERIFY(button->hasFocus());
        QVERIFY(button->grab().toImage() != unfocused); // focus can be seen
        // The room for the text is the same with focus: a button laid out at its size
        // hint unfocused keeps its whole text when it takes focus.
        const auto contents = [button](bool focused) {
            QStyleOptionButton option;
            option.initFrom(button);
            option.text = button->text();
            option.state.setFlag(QStyle::State_HasFocus, focused);
            return button->style()->subElementRect(QStyle::SE_PushButtonContents, &option, button);
        };
        QCOMPARE(contents(true), contents(false));
        QCOMPARE(button->sizeHint(), unfocusedSize);
    }
};

QTEST_MAIN(TestTheme)
#include "tst_theme.moc"
