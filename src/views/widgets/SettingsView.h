#pragma once

#include <QWidget>

class Preferences;
class QComboBox;
class QLabel;
class QVBoxLayout;
class SectionCard;
class ToggleSwitch;
struct SettingsContent;

// The Settings window: a grouped form of four sections. Every control writes its
// preference at once, and follows it when it changes elsewhere.
class SettingsView final : public QWidget {
    Q_OBJECT

public:
    explicit SettingsView(Preferences* preferences, QWidget* parent = nullptr);

    ToggleSwitch* sampleDataToggle() const noexcept { return m_sampleData; }
    ToggleSwitch* autoRefreshToggle() const noexcept { return m_autoRefresh; }
    ToggleSwitch* notificationsToggle() const noexcept { return m_notifications; }
    QComboBox* intervalPicker() const noexcept { return m_interval; }
    QLabel* link() const noexcept { return m_link; }

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    static SectionCard* addSection(QVBoxLayout* layout, const QString& title, QWidget* page);
    void buildRefresh(SectionCard* refresh, const SettingsContent& content);
    void buildAbout(SectionCard* about, const SettingsContent& content);
    // Shows what the preferences hold now.
    void sync();

    Preferences* m_preferences;
    ToggleSwitch* m_sampleData = nullptr;
    ToggleSwitch* m_autoRefresh = nullptr;
    ToggleSwitch* m_notifications = nullptr;
    QWidget* m_intervalRow = nullptr;
    QComboBox* m_interval = nullptr;
    QLabel* m_link = nullptr;
};
