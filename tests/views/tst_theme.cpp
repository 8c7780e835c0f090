#include "views/widgets/Theme.h"

#include "views/widgets/AppResources.h"
#include "views/widgets/BlockParts.h"

#include <QApplication>
#include <QFontInfo>
#include <QPushButton>
#include <QStyleOptionButton>
#include <QTest>

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
        Theme::apply(Theme::Appearance::light);
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
