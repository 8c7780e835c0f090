#pragma once

#include <QHash>
#include <QMainWindow>
#include <QUuid>

class ContentView;
class ProviderAccount;
class QLabel;
class QListWidget;
class QListWidgetItem;
class QMessageBox;
class QPushButton;
class QStackedWidget;
class QSplitter;
class SettingsWindow;
class TrackerCommands;

// The main window: the sidebar beside the detail area, the menu commands, and the
// Settings window. It draws the controller's state and forwards what the operator does.
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
    void rebuildSidebar();
    // A field of one account changed: its row now, the detail once this turn is over.
    void accountChanged(ProviderAccount* account);
    // Redraws the detail once the present turn of the event loop is over.
    void scheduleDetailUpdate();
    void syncSidebarSelection();
    void updateDetail();
    void onSidebarRowChanged(int row);
    void showSettings();
    QWidget* buildWelcome();
    void presentDialogs();
    QMessageBox* confirmation(const QString& objectName, const QString& title, const QString& message,
                              const QString& destructiveButton);

    ContentView* m_content;
    QSplitter* m_splitter = nullptr;
    QListWidget* m_sidebar = nullptr;
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
    bool m_rebuilding = false;
    bool m_detailUpdateScheduled = false;
    QHash<QUuid, QListWidgetItem*> m_sidebarItems;
};
