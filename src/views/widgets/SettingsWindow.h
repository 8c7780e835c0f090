#pragma once

#include <QWidget>

// The Settings window. Its controls arrive with the settings screen.
class SettingsWindow final : public QWidget {
    Q_OBJECT

public:
    explicit SettingsWindow(QWidget* parent = nullptr);
};
