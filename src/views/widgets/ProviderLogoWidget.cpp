#include "views/widgets/ProviderLogoWidget.h"

#include "views/widgets/SymbolIcon.h"
#include "views/widgets/Theme.h"

#include <QFile>
#include <QImage>
#include <QPainter>

ProviderLogoWidget::ProviderLogoWidget(AIProvider provider, int size, QWidget* parent)
    : QWidget(parent)
    , m_provider(provider)
    , m_size(size) {
    setFixedSize(size, size);
    setAccessibleName(provider.displayName());
}

QString ProviderLogoWidget::logoResource(AIProvider provider) {
    for (const QString& path : {QStringLiteral(":/%1.png"), QStringLiteral(":/ProviderIcons/%1.png")}) {
        const QString resource = path.arg(provider.rawValue());
        if (QFile::exists(resource) && !QImage(resource).isNull()) {
            return resource;
        }
    }
    return QString();
}

void ProviderLogoWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QColor ink = Theme::primaryText(Theme::appearance(window()->palette()));
    const qreal ratio = devicePixelRatioF();
    const QString resource = logoResource(m_provider);
    if (resource.isEmpty()) {
        // The symbol, inset by 12 per cent on each side.
        const int inset = qRound(m_size * 0.12);
        painter.drawPixmap(inset, inset,
                           SymbolIcon::pixmap(m_provider.systemImage(), ink, m_size - 2 * inset, ratio));
        return;
    }
    QImage logo = QImage(resource)
                      .scaled(QSize(m_size, m_size) * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                      .convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (isTemplate(m_provider)) {
        QPainter tint(&logo);
        tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
        tint.fillRect(logo.rect(), ink);
    }
    logo.setDevicePixelRatio(ratio);
    painter.drawImage(QPointF(0, 0), logo);
}
