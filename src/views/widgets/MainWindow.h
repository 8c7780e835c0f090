#pragma once

#include <QMainWindow>
#include <QSet>
#include <QUuid>

class ContentView;
class ProviderAccount;
class QLabel;
class QMessageBox;
class QModelIndex;
class QPushButton;
class QStackedWidget;
class QSplitter;
class QTreeView;
class SettingsWindow;
class SidebarModel;
class TrackerCommands;

// The main window: the sidebar beside the detail area, the menu commands, and the
// Settings window. It draws the controller's state and forwards what the operator does.
// The sidebar draws a SidebarModel; the detail area redraws for the selection, the
// list, and the fields of the accounts it shows; dialogs follow presentationChanged.
class MainWindow final : public QMainWindow {
    Q_OBJECT

public:
    static constexpr int kMinimumWidth = 980;
    static constexpr int kMinimumHeight = 650;
    static constexpr int kSidebarMinimumWidth = 230;
    static constexpr int kSidebarIdealWidth = 270;

    explicit MainWindow(ContentView* content, QWidget* parent = nullptr);
    ~MainWindow() override;

    SettingsWindow* settingsWindow() const noexcept { return m_settings; }
    // The confirmation dialogs, while one is up.
    QMessageBox* deleteDialog() const noexcept { return m_deleteDialog; }
    QMessageBox* sampleClearDialog() const noexcept { return m_sampleClearDialog; }
    TrackerCommands* commands() const noexcept { return m_commands; }

signals:
    // Emitted once, after the window was first shown.
    void firstShown();

protected:
    void showEvent(QShowEvent* event) override;

private:
    // Fields of one account changed: the detail redraws if it shows that account.
    void accountChanged(ProviderAccount* account);
    // Redraws the detail once the present turn of the event loop is over.
    void scheduleDetailUpdate();
    bool detailShows(const QUuid& id) const;
    void syncSidebarSelection();
    void updateDetail();
    void onSidebarCurrentChanged(const QModelIndex& current);
    void presentOnboarding();
    void showSettings();
    QWidget* buildWelcome();
    void presentDialogs();
    QMessageBox* confirmation(const QString& objectName, const QString& title, const QString& message,
                              const QString& destructiveButton);

    ContentView* m_content;
    QSplitter* m_splitter = nullptr;
    SidebarModel* m_sidebarModel = nullptr;
    QTreeView* m_sidebar = nullptr;
    QStackedWidget* m_detailStack = nullptr;
    QWidget* m_welcome = nullptr;
    QLabel* m_detailTitle = nullptr;
    QLabel* m_detail = nullptr;
    QPushButton* m_addButton = nullptr;
    QPushButton* m_deleteButton = nullptr;
    QPushButton* m_clearSamplesButton = nullptr;
    QPushButton* m_backButton = nullptr;
    QMessageBox* m_deleteDialog = nullptr;
    QMessageBox* m_sampleClearDialog = nullptr;
    TrackerCommands* m_commands = nullptr;
    SettingsWindow* m_settings = nullptr;
    bool m_appeared = false;
    bool m_syncingSelection = false;
    bool m_detailUpdateScheduled = false;
    // The accounts the detail area shows now.
    QSet<QUuid> m_shownIDs;
};
