#pragma once

#include <QProxyStyle>

// The application's style: Qt's Fusion style, with the bundled icons where Qt would read
// its own image files (which ask every installed image plugin about them first).
class AppStyle final : public QProxyStyle {
    Q_OBJECT

public:
    AppStyle();

    QIcon standardIcon(StandardPixmap standardIcon, const QStyleOption* option = nullptr,
                       const QWidget* widget = nullptr) const override;
};
