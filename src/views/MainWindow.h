#pragma once

#include <QMainWindow>

// The main window that holds the sidebar and the detail area.
class MainWindow final : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
};
