#include "ui/ProviderLogoWidget.h"

#include "ui/AccessibleParts.h"
#include "ui/AppResources.h"
#include "ui/SymbolIcon.h"
#include "ui/Theme.h"

#include <QFile>
#include <QHash>
#include <QImage>
#include <QPainter>
#include <QPixmapCache>

ProviderLogoWidget::ProviderLogoWidget(AIProvider provider, int size, QWidget* parent)
    : QWidget(parent)
    , m_provider(provider)
    , m_size(size) {
    AccessibleParts::install();
    setFixedSize(size, size);
}

namespace {
struct Mark {
    QString resource;
    QImage image;
};

// A provider's mark, found and decoded once per process: a resource that exists but does
// not decode counts as missing, and the answer cannot change while the process runs. It is
// handed out as a (shared) copy, since the table may grow under a reference.
Mark markOf(AIProvider provider) {
    static QHash<QString, Mark> marks;
    const auto found = marks.constFind(provider.rawValue());
    if (found != marks.cend()) {
        return *found;
    }
    Mark mark;
    for (const QString& path : {QStringLiteral(":/%1.png"), QStringLiteral(":/ProviderIcons/%1.png")}) {
        const QString resource = path.arg(provider.rawValue());
        if (!QFile::exists(resource)) {
            continue;
        }
        if (QImage image = AppResources::png(resource); !image.isNull()) {
            mark = {resource, image.convertToFormat(QImage::Format_ARGB32_Premultiplied)};
            break;
        }
    }
    return *marks.insert(provider.rawValue(), mark);
}
} // namespace

QString ProviderLogoWidget::logoResource(AIProvider provider) {
    return markOf(provider).resource;
}

QPixmap ProviderLogoWidget::logo(AIProvider provider, int size, const QColor& ink, qreal ratio) {
    const Mark mark = markOf(provider);
    if (mark.image.isNull()) {
        // The symbol, inset by 12 per cent on each side, on a transparent square.
        QPixmap square(QSize(size, size) * ratio);
        square.setDevicePixelRatio(ratio);
        square.fill(Qt::transparent);
        const int inset = qRound(size * 0.12);
        QPainter(&square).drawPixmap(
            inset, inset, SymbolIcon::pixmap(provider.systemImage(), ink, size - 2 * inset, ratio));
        return square;
    }
    const QString key =
        QStringLiteral("logo:%1:%2:%3:%4").arg(provider.rawValue()).arg(size).arg(ratio).arg(ink.rgba());
    QPixmap cached;
    if (QPixmapCache::find(key, &cached)) {
        return cached;
    }
    // Scaling keeps the mark's premultiplied format, which the tint below paints into.
    QImage image =
        mark.image.scaled(QSize(size, size) * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    if (isTemplate(provider)) {
        QPainter tint(&image);
        tint.setCompositionMode(QPainter::CompositionMode_SourceIn);
        tint.fillRect(image.rect(), ink);
    }
    // A mark that keeps its own (dark) colours stands on a light tile in a dark window,
    // so that it stays visible without being recoloured.
    if (!isTemplate(provider) && ink.lightness() > 128) {
        QImage tile(image.size(), QImage::Format_ARGB32_Premultiplied);
        tile.fill(Qt::transparent);
        QPainter painter(&tile);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.setPen(Qt::NoPen);
        painter.setBrush(ink);
        painter.drawRoundedRect(QRectF(tile.rect()), tile.width() * 0.22, tile.height() * 0.22);
        const QRectF inner = QRectF(tile.rect())
                                 .adjusted(tile.width() * 0.16, tile.height() * 0.16, -tile.width() * 0.16,
                                           -tile.height() * 0.16);
        painter.drawImage(inner, image);
        painter.end();
        image = tile;
    }
    QPixmap result = QPixmap::fromImage(image);
    result.setDevicePixelRatio(ratio);
    QPixmapCache::insert(key, result);
    return result;
}

void ProviderLogoWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QColor ink = Theme::primaryText(Theme::appearance(window()->palette()));
    painter.drawPixmap(QPointF(0, 0), logo(m_provider, m_size, ink, devicePixelRatioF()));
}
