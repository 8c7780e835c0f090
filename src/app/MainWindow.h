#pragma once

#include "core/SidebarSelection.h"
#include "store/ProviderAccount.h"
#include "views/DetailRoute.h"

#include <QColor>
#include <QElapsedTimer>
#include <QMainWindow>
#include <QPointer>
#include <QSet>
#include <QUuid>

class AccountDetailScreen;
class AccountEditorView;
class OnboardingView;
class ContentView;
class OverviewScreen;
class QAction;
#include <QMessageBox>
class QSplitter;
class QStackedWidget;
class QToolBar;
class SettingsView;
class SidebarView;
class StatusCardWidget;
class TrackerCommands;

// The main window: the sidebar beside the detail area, the toolbar, the menu commands
// and the Settings window. The detail area routes the controller's selection to the
// overview, one account, or the notice that it is gone. Each controller signal redraws
// what reads it: a changed account redraws its card (or its detail), the list and the
// selection route again, a refresh starting or ending changes only the refresh buttons.
class MainWindow final : public QMainWindow {
    Q_OBJECT

public:
    static constexpr int kMinimumWidth = 980;
    static constexpr int kMinimumHeight = 650;
    static constexpr int kSidebarMinimumWidth = 230;
    static constexpr int kSidebarIdealWidth = 270;

    explicit MainWindow(ContentView* content, QWidget* parent = nullptr);
    ~MainWindow() override;

    SettingsView* settingsWindow();
    SidebarView* sidebar() const noexcept { return m_sidebar; }
    OverviewScreen* overview() const noexcept { return m_overview; }
    // Built when an account is first shown; null before.
    AccountDetailScreen* detail() const noexcept { return m_detail; }
    QWidget* currentScreen() const;
    QToolBar* toolbar() const noexcept { return m_toolbar; }
    // The confirmation dialogs, while one is up.
    QMessageBox* deleteDialog() const noexcept { return m_deleteDialog; }
    QMessageBox* sampleClearDialog() const noexcept { return m_sampleClearDialog; }
    TrackerCommands* commands() const noexcept { return m_commands; }
    // The account editor sheet, while one is open.
    AccountEditorView* editor() const noexcept { return m_editor; }
    // Writes the recorded history of what the window shows (one account, a provider's
    // accounts or all of them) to `path`; false, with a message over the window, when
    // it could not be written.
    bool exportHistoryTo(const QString& path);
    QMessageBox* exportFailureDialog() const noexcept { return m_exportFailure; }
    // The guided first-account flow, while it is open.
    OnboardingView* onboarding() const noexcept { return m_onboarding; }
    // Whether the desktop asks for less motion: the guided flow open now and any opened
    // later keep still.
    void setReduceMotion(bool reduce);
    bool reduceMotion() const noexcept { return m_reduceMotion; }

signals:
    // Emitted once, after the window was first shown.
    void firstShown();
    // The first frame is drawn (or half a second has passed since the window was shown
    // without one: a window opened on a hidden workspace); what it didn't need can come.
    void firstPainted();
    // The accounts changed since the last redraw have been redrawn.
    void changesDrawn();

protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void showNotice();
    void announceFirstFrame();
    void buildToolbar();
    // Routes the selection to its screen, built afresh.
    void route();
    void accountChanged(ProviderAccount* account);
    // Redraws the accounts that changed in this turn of the event loop, once.
    void flushChangedAccounts();
    void timePassed();
    void showToolbarFor(DetailRoute::Screen screen);
    void presentOnboarding();
    void showSettings();
    // Asks where to put the history, then writes it.
    void exportHistory();
    AccountDetailScreen* detailScreen();
    QWidget* unavailablePage();
    void presentDialogs();
    // Opens the account editor sheet when the controller asks for one, closes it when not.
    void presentEditor();
    void restoreWindowState();
    void saveWindowState();

    ContentView* m_content;
    QSplitter* m_splitter = nullptr;
    SidebarView* m_sidebar = nullptr;
    QStackedWidget* m_detailStack = nullptr;
    // Where the controller's notice shows, above the detail column.
    QWidget* m_noticeSlot = nullptr;
    QWidget* m_notice = nullptr;
    OverviewScreen* m_overview = nullptr;
    AccountDetailScreen* m_detail = nullptr;
    StatusCardWidget* m_unavailable = nullptr;
    OnboardingView* m_onboarding = nullptr;
    bool m_onboardingClosed = false;
    bool m_reduceMotion = false;
    QToolBar* m_toolbar = nullptr;
    QAction* m_addAction = nullptr;
    QAction* m_refreshAction = nullptr;
    QAction* m_editAction = nullptr;
    QAction* m_deleteAction = nullptr;
    QPointer<QMessageBox> m_deleteDialog;
    QPointer<QMessageBox> m_sampleClearDialog;
    QPointer<QMessageBox> m_exportFailure;
    AccountEditorView* m_editor = nullptr;
    TrackerCommands* m_commands = nullptr;
    SettingsView* m_settings = nullptr;
    bool m_appeared = false;
    bool m_painted = false;
    DetailRoute::Screen m_screen = DetailRoute::Screen::overview;
    // The accounts the detail area shows now, and those changed since the last redraw.
    QSet<QUuid> m_shownIDs;
    QSet<QUuid> m_changed;
    bool m_flushScheduled = false;
    QElapsedTimer m_lastFlush;
};
