// The window follows the desktop's appearance through the XDG settings portal: a stand-in
// portal (tests/app/portal_standin.cpp) owns its name on the tests' private session bus.
#include "ScreenScenario.h"
#include "app/MainWindow.h"
#include "core/EditorState.h"
#include "editor/widgets/AccountEditorView.h"
#include "model/Clock.h"
#include "onboarding/widgets/OnboardingOrbit.h"
#include "onboarding/widgets/OnboardingView.h"
#include "services/DesktopSettings.h"
#include "ui/AppResources.h"
#include "ui/AppStyle.h"
#include "ui/DesktopLook.h"
#include "ui/Theme.h"
#include "views/widgets/SidebarView.h"

#include <QDBusVariant>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>

#include <memory>

namespace {
// A stand-in portal for the length of a test.
class Portal final {
public:
    explicit Portal(const QStringList& arguments) {
        m_process.setProgram(QStringLiteral(PORTAL_STANDIN));
        m_process.setArguments(arguments);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start();
        m_process.waitForStarted();
        // Ready once it owns the name.
        while (m_process.state() == QProcess::Running && !m_process.canReadLine()) {
            m_process.waitForReadyRead(5000);
        }
        m_ready = m_process.readLine().trimmed() == "ready";
    }
    ~Portal() {
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(2000)) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }
    bool ready() const { return m_ready; }
    // Changes one setting: the portal emits SettingChanged.
    void change(const QString& group, const QString& key, const QString& type, const QString& value) {
        m_process.write(QStringList{group, key, type, value}.join(u' ').toUtf8() + '\n');
        m_process.waitForBytesWritten();
    }

private:
    QProcess m_process;
    bool m_ready = false;
};

QStringList scheme(uint value) {
    return {QStringLiteral("--set"), QStringLiteral("org.freedesktop.appearance"),
            QStringLiteral("color-scheme"), QStringLiteral("u"), QString::number(value)};
}

const QString kAppearance = QStringLiteral("org.freedesktop.appearance");

// The colour of a symbol's most opaque pixel, as opaque.
QColor inkOf(const QIcon& icon) {
    const QImage image = icon.pixmap(QSize(16, 16), 2.0).toImage();
    QColor ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (!ink.isValid() || pixel.alpha() > ink.alpha()) {
                ink = pixel;
            }
        }
    }
    ink.setAlpha(255);
    return ink;
}
} // namespace

class DesktopAppearanceTest final : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        AppResources::load();
        Clock::setFixedNow(Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 2), QTime(9, 30))));
        m_platform = Theme::appearance(QApplication::palette());
    }

    void cleanup() { AppStyle::apply(m_platform); }

    // What each value the portal can send asks for.
    void readingsGiveTheState_data() {
        QTest::addColumn<QString>("group");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<int>("scheme");
        QTest::addColumn<bool>("highContrast");
        QTest::addColumn<bool>("reduceMotion");
        using Scheme = DesktopSettings::ColorScheme;
        const auto row = [](const char* name, const QString& group, const char* key, const QVariant& value,
                            Scheme scheme, bool contrast, bool motion) {
            QTest::newRow(name) << group << QString::fromLatin1(key) << value << static_cast<int>(scheme)
                                << contrast << motion;
        };
        row("dark", kAppearance, "color-scheme", QVariant(1U), Scheme::dark, false, false);
        row("light", kAppearance, "color-scheme", QVariant(2U), Scheme::light, false, false);
        row("no preference", kAppearance, "color-scheme", QVariant(0U), Scheme::noPreference, false, false);
        row("a value nobody defined", kAppearance, "color-scheme", QVariant(7U), Scheme::noPreference, false,
            false);
        row("dark, wrapped twice (Read)", kAppearance, "color-scheme",
            QVariant::fromValue(QDBusVariant(QVariant::fromValue(QDBusVariant(QVariant(1U))))), Scheme::dark,
            false, false);
        row("a string is not a scheme", kAppearance, "color-scheme", QVariant(QStringLiteral("1")),
            Scheme::noPreference, false, false);
        row("high contrast", kAppearance, "contrast", QVariant(1U), Scheme::noPreference, true, false);
        row("reduced motion", kAppearance, "reduced-motion", QVariant(1U), Scheme::noPreference, false, true);
        row("GNOME's animations off", QStringLiteral("org.gnome.desktop.interface"), "enable-animations",
            QVariant(false), Scheme::noPreference, false, true);
        row("GNOME's animations on", QStringLiteral("org.gnome.desktop.interface"), "enable-animations",
            QVariant(true), Scheme::noPreference, false, false);
        row("KDE's animation speed 0", QStringLiteral("org.kde.kdeglobals.KDE"), "AnimationDurationFactor",
            QVariant(0.0), Scheme::noPreference, false, true);
        row("KDE's animation speed 1", QStringLiteral("org.kde.kdeglobals.KDE"), "AnimationDurationFactor",
            QVariant(1.0), Scheme::noPreference, false, false);
    }

    void readingsGiveTheState() {
        QFETCH(QString, group);
        QFETCH(QString, key);
        QFETCH(QVariant, value);
        QFETCH(int, scheme);
        QFETCH(bool, highContrast);
        QFETCH(bool, reduceMotion);
        DesktopSettings::Readings readings;
        DesktopSettings::take(readings, group, key, value);
        const DesktopSettings::State state = DesktopSettings::stateOf(readings);
        QCOMPARE(static_cast<int>(state.colorScheme), scheme);
        QCOMPARE(state.highContrast, highContrast);
        QCOMPARE(state.reduceMotion, reduceMotion);
    }

    void noPortalKeepsThePlatformsLook() {
        DesktopSettings desktop;
        desktop.waitForFirstAnswers();
        QVERIFY(desktop.settled());
        QCOMPARE(desktop.state(), DesktopSettings::State{});
        DesktopLook look(&desktop);
        look.apply();
        QCOMPARE(Theme::current(), m_platform);
        QCOMPARE(Theme::contrast(), Theme::Contrast::standard);
        QCOMPARE(
            DesktopLook::appearanceFor(DesktopSettings::ColorScheme::noPreference, Theme::Appearance::dark),
            Theme::Appearance::dark);
    }

    // Dark at start, light without a restart: the same window, selection and half-typed
    // editor, in the new colours within a second.
    void opensDarkAndTurnsLightLive() {
        Portal portal(scheme(1));
        QVERIFY(portal.ready());
        DesktopSettings desktop;
        desktop.waitForFirstAnswers();
        QCOMPARE(desktop.state().colorScheme, DesktopSettings::ColorScheme::dark);
        DesktopLook look(&desktop);
        look.apply();
        QCOMPARE(Theme::current(), Theme::Appearance::dark);

        Scenario scenario;
        const Timestamp now = Clock::now();
        ProviderAccount* account =
            refreshedAccount(*scenario.store, QStringLiteral("Claude · Work"), AIProvider::anthropic,
                             ConnectionMode::mock, UsageSource::mock, 1, now);
        refreshedAccount(*scenario.store, QStringLiteral("OpenAI · Team"), AIProvider::openAI,
                         ConnectionMode::mock, UsageSource::mock, 2, now);
        MainWindow window(scenario.content.get());
        window.resize(1240, 820);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        scenario.content->setSelection(SidebarSelection::account(account->id()));
        scenario.content->setEditorState(EditorState::newAccount());
        QTRY_VERIFY(window.editor());
        AccountEditorView* editor = window.editor();
        auto* label = editor->findChild<QLineEdit*>(QStringLiteral("accountLabel"));
        label->setFocus();
        QTest::keyClicks(label, QStringLiteral("Research org"));
        const QModelIndex current = window.sidebar()->list()->currentIndex();
        auto* add = window.toolbar()->findChild<QToolButton*>(QStringLiteral("addAccountButton"));
        QVERIFY(add);
        QCOMPARE(inkOf(add->icon()), Theme::primaryText(Theme::Appearance::dark));
        const QColor darkSidebar = window.sidebar()->grab().toImage().pixelColor(2, 2);
        QCOMPARE(darkSidebar, Theme::sidebar(Theme::Appearance::dark));

        QSignalSpy changed(&desktop, &DesktopSettings::changed);
        portal.change(kAppearance, QStringLiteral("color-scheme"), QStringLiteral("u"), QStringLiteral("2"));
        QTRY_VERIFY_WITH_TIMEOUT(Theme::current() == Theme::Appearance::light, 1000);
        QCOMPARE(changed.size(), 1);
        // Drawn anew: the sidebar's surface, the editor sheet's window, an icon.
        QCOMPARE(window.sidebar()->grab().toImage().pixelColor(2, 2),
                 Theme::sidebar(Theme::Appearance::light));
        QCOMPARE(editor->palette().color(QPalette::Window), Theme::window(Theme::Appearance::light));
        QCOMPARE(inkOf(add->icon()), Theme::primaryText(Theme::Appearance::light));
        // Nothing lost.
        QCOMPARE(window.editor(), editor);
        QVERIFY(editor->isVisible());
        QCOMPARE(label->text(), QStringLiteral("Research org"));
        QCOMPARE(label->hasFocus(), true);
        QCOMPARE(scenario.content->selection(), SidebarSelection::account(account->id()));
        QCOMPARE(window.sidebar()->list()->currentIndex(), current);

        // "No preference" again: the platform's own look.
        portal.change(kAppearance, QStringLiteral("color-scheme"), QStringLiteral("u"), QStringLiteral("0"));
        QTRY_COMPARE_WITH_TIMEOUT(desktop.state().colorScheme, DesktopSettings::ColorScheme::noPreference,
                                  1000);
        QCOMPARE(Theme::current(), m_platform);
    }

    // A portal older than ReadOne answers through Read, one variant deeper.
    void anOlderPortalIsReadThroughRead() {
        Portal portal(scheme(1) + QStringList{QStringLiteral("--no-readone"), QStringLiteral("--set"),
                                              kAppearance, QStringLiteral("contrast"), QStringLiteral("u"),
                                              QStringLiteral("1")});
        QVERIFY(portal.ready());
        DesktopSettings desktop;
        desktop.waitForFirstAnswers();
        QVERIFY(desktop.settled());
        QCOMPARE(desktop.state().colorScheme, DesktopSettings::ColorScheme::dark);
        QVERIFY(desktop.state().highContrast);
    }

    // A portal that takes the question and never answers holds the start no longer than
    // the first answers' limit (the motion question it replaces waited up to 300 ms); an
    // answer that comes later still counts.
    void aSilentPortalCostsLittle() {
        Portal portal(scheme(1) + QStringList{QStringLiteral("--silent")});
        QVERIFY(portal.ready());
        QElapsedTimer clock;
        clock.start();
        DesktopSettings desktop;
        desktop.waitForFirstAnswers();
        const qint64 waited = clock.elapsed();
        QVERIFY2(waited < 300, qPrintable(QString::number(waited)));
        QCOMPARE(desktop.state(), DesktopSettings::State{});
        // Its changes are still followed.
        portal.change(kAppearance, QStringLiteral("color-scheme"), QStringLiteral("u"), QStringLiteral("1"));
        QTRY_COMPARE(desktop.state().colorScheme, DesktopSettings::ColorScheme::dark);
    }

    void highContrastFromThePortal() {
        Portal portal({QStringLiteral("--set"), kAppearance, QStringLiteral("contrast"), QStringLiteral("u"),
                       QStringLiteral("1")});
        QVERIFY(portal.ready());
        DesktopSettings desktop;
        desktop.waitForFirstAnswers();
        DesktopLook look(&desktop);
        look.apply();
        QCOMPARE(Theme::contrast(), Theme::Contrast::high);
        const Theme::Appearance current = Theme::current();
        QCOMPARE(QApplication::palette().color(QPalette::WindowText),
                 Theme::primaryText(current, Theme::Contrast::high));
        QCOMPARE(QApplication::palette().color(QPalette::Mid),
                 Theme::separator(current, Theme::Contrast::high));
        portal.change(kAppearance, QStringLiteral("contrast"), QStringLiteral("u"), QStringLiteral("0"));
        QTRY_COMPARE_WITH_TIMEOUT(Theme::contrast(), Theme::Contrast::standard, 1000);
        QCOMPARE(QApplication::palette().color(QPalette::WindowText), Theme::primaryText(current));
    }

    // Less motion, asked for while the guided flow is open: its ring stops at once, and
    // turns again when motion is fine again.
    void motionIsFollowedLive() {
        Portal portal({});
        QVERIFY(portal.ready());
        DesktopSettings desktop;
        desktop.waitForFirstAnswers();
        DesktopLook look(&desktop);
        look.apply();
        Scenario scenario(false);
        MainWindow window(scenario.content.get());
        window.setReduceMotion(look.reduceMotion());
        connect(&look, &DesktopLook::reduceMotionChanged, &window, &MainWindow::setReduceMotion);
        window.resize(1240, 820);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QTRY_VERIFY(window.onboarding() && window.onboarding()->isVisible());
        auto* orbit = window.onboarding()->findChild<OnboardingOrbit*>();
        QVERIFY(orbit);
        QTRY_VERIFY(orbit->isTurning());
        portal.change(QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("enable-animations"),
                      QStringLiteral("b"), QStringLiteral("false"));
        QTRY_VERIFY_WITH_TIMEOUT(!orbit->isTurning(), 1000);
        QVERIFY(window.onboarding()->reduceMotion());
        portal.change(QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("enable-animations"),
                      QStringLiteral("b"), QStringLiteral("true"));
        QTRY_VERIFY_WITH_TIMEOUT(orbit->isTurning(), 1000);
        QVERIFY(!window.onboarding()->reduceMotion());
    }

private:
    Theme::Appearance m_platform = Theme::Appearance::light;
};

QTEST_MAIN(DesktopAppearanceTest)
#include "tst_desktopappearance.moc"
