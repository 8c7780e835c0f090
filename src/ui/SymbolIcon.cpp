#include "ui/SymbolIcon.h"

#include <QApplication>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QStyle>
#include <QStyleOption>
#include <QSvgRenderer>

namespace {
// Symbol name → icon file of the bundled set.
const QHash<QString, QString>& table() {
    static const QHash<QString, QString> icons{
        {QStringLiteral("checkmark.circle.fill"), QStringLiteral("filled-circle-check")},
        {QStringLiteral("clock.badge.exclamationmark"), QStringLiteral("outline-clock-exclamation")},
        {QStringLiteral("circle.lefthalf.filled"), QStringLiteral("outline-circle-half-2")},
        {QStringLiteral("wifi.slash"), QStringLiteral("outline-wifi-off")},
        {QStringLiteral("lock.trianglebadge.exclamationmark"), QStringLiteral("outline-lock-exclamation")},
        {QStringLiteral("questionmark.circle"), QStringLiteral("outline-help-circle")},
        {QStringLiteral("hourglass"), QStringLiteral("outline-hourglass")},
        {QStringLiteral("exclamationmark.triangle"), QStringLiteral("outline-alert-triangle")},
        {QStringLiteral("exclamationmark.triangle.fill"), QStringLiteral("filled-alert-triangle")},
        {QStringLiteral("waveform.path.ecg"), QStringLiteral("outline-activity-heartbeat")},
        {QStringLiteral("eye"), QStringLiteral("outline-eye")},
        {QStringLiteral("minus.circle"), QStringLiteral("outline-circle-minus")},
        {QStringLiteral("wand.and.stars"), QStringLiteral("outline-wand")},
        {QStringLiteral("pencil"), QStringLiteral("outline-pencil")},
        {QStringLiteral("network"), QStringLiteral("outline-network")},
        {QStringLiteral("message.fill"), QStringLiteral("filled-message")},
        {QStringLiteral("arrow.up.right.circle.fill"), QStringLiteral("outline-arrow-up-right-circle")},
        {QStringLiteral("textformat.123"), QStringLiteral("outline-numbers")},
        {QStringLiteral("creditcard.fill"), QStringLiteral("filled-credit-card")},
        {QStringLiteral("dollarsign.circle.fill"), QStringLiteral("outline-currency-dollar")},
        {QStringLiteral("square.grid.2x2.fill"), QStringLiteral("filled-layout-grid")},
        {QStringLiteral("arrow.clockwise"), QStringLiteral("outline-refresh")},
        {QStringLiteral("tray"), QStringLiteral("outline-inbox")},
        {QStringLiteral("rectangle.3.group.fill"), QStringLiteral("filled-layout-dashboard")},
        {QStringLiteral("plus"), QStringLiteral("outline-plus")},
        {QStringLiteral("trash"), QStringLiteral("outline-trash")},
        {QStringLiteral("circle.hexagongrid.fill"), QStringLiteral("outline-hexagons")},
        {QStringLiteral("sparkles"), QStringLiteral("filled-sparkles")},
        {QStringLiteral("bolt.horizontal.circle.fill"), QStringLiteral("filled-bolt")},
        {QStringLiteral("diamond.fill"), QStringLiteral("filled-diamond")},
        {QStringLiteral("cpu"), QStringLiteral("outline-cpu")},
        {QStringLiteral("chart.xyaxis.line"), QStringLiteral("outline-chart-line")},
        {QStringLiteral("person.crop.circle.badge.checkmark"), QStringLiteral("outline-user-check")},
        {QStringLiteral("person.3.fill"), QStringLiteral("outline-users")},
        {QStringLiteral("calendar"), QStringLiteral("outline-calendar")},
        {QStringLiteral("bolt.fill"), QStringLiteral("filled-bolt")},
        {QStringLiteral("exclamationmark.circle"), QStringLiteral("outline-alert-circle")},
        {QStringLiteral("person.2.fill"), QStringLiteral("outline-users")},
        {QStringLiteral("timer"), QStringLiteral("outline-stopwatch")},
        {QStringLiteral("dollarsign.circle"), QStringLiteral("outline-currency-dollar")},
        {QStringLiteral("sparkles.rectangle.stack.fill"), QStringLiteral("filled-sparkles")},
        {QStringLiteral("rectangle.grid.1x2"), QStringLiteral("outline-layout-rows")},
        {QStringLiteral("tablecells"), QStringLiteral("outline-table")},
        {QStringLiteral("pencil.and.outline"), QStringLiteral("outline-pencil")},
        {QStringLiteral("key.fill"), QStringLiteral("outline-key")},
        {QStringLiteral("globe"), QStringLiteral("outline-world")},
        {QStringLiteral("person.crop.circle"), QStringLiteral("outline-user-circle")},
        {QStringLiteral("magnifyingglass"), QStringLiteral("outline-search")},
        {QStringLiteral("xmark.circle.fill"), QStringLiteral("filled-circle-x")},
        {QStringLiteral("safari.fill"), QStringLiteral("filled-compass")},
        {QStringLiteral("exclamationmark.circle.fill"), QStringLiteral("filled-alert-circle")},
        {QStringLiteral("lock.shield.fill"), QStringLiteral("filled-shield-lock")},
        {QStringLiteral("lock.fill"), QStringLiteral("filled-lock")},
        {QStringLiteral("checkmark.shield.fill"), QStringLiteral("filled-shield-check")},
        {QStringLiteral("info.circle"), QStringLiteral("outline-info-circle")},
        {QStringLiteral("pencil.and.list.clipboard"), QStringLiteral("outline-clipboard-list")},
        {QStringLiteral("link"), QStringLiteral("outline-link")},
        {QStringLiteral("checkmark"), QStringLiteral("outline-check")},
        {QStringLiteral("chevron.right"), QStringLiteral("outline-chevron-right")},
        {QStringLiteral("chevron.down"), QStringLiteral("outline-chevron-down")},
    };
    return icons;
}
} // namespace

QString SymbolIcon::resource(const QString& symbol) {
    const QString file = table().value(symbol);
    return file.isEmpty() ? QString() : QStringLiteral(":/icons/") + file + QStringLiteral(".svg");
}

QPixmap SymbolIcon::pixmap(const QString& symbol, const QColor& color, int size, qreal devicePixelRatio) {
    const QString key = QStringLiteral("symbol:%1:%2:%3:%4")
                            .arg(symbol, color.name(QColor::HexArgb))
                            .arg(size)
                            .arg(devicePixelRatio);
    QPixmap cached;
    if (QPixmapCache::find(key, &cached)) {
        return cached;
    }
    QString path = resource(symbol);
    if (path.isEmpty()) {
        path = resource(QStringLiteral("questionmark.circle"));
    }
    const int pixels = qMax(1, qRound(size * devicePixelRatio));
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        // The set draws with "currentColor": render the shapes, then paint the colour
        // through them.
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        QSvgRenderer(path).render(&painter, QRectF(0, 0, pixels, pixels));
        painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
        painter.fillRect(image.rect(), color);
    }
    QPixmap result = QPixmap::fromImage(image);
    result.setDevicePixelRatio(devicePixelRatio);
    QPixmapCache::insert(key, result);
    return result;
}

namespace {
class SymbolIconEngine final : public QIconEngine {
public:
    SymbolIconEngine(QString symbol, int size, std::function<QColor()> ink)
        : m_symbol(std::move(symbol))
        , m_size(size)
        , m_ink(std::move(ink)) {}

    QIconEngine* clone() const override { return new SymbolIconEngine(m_symbol, m_size, m_ink); }

    // Like a pixmap's icon: never larger than its own size.
    QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override {
        const int side = qMin(m_size, qMin(size.width(), size.height()));
        return {side, side};
    }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
        const qreal ratio =
            painter->device() ? painter->device()->devicePixelRatio() : qApp->devicePixelRatio();
        const int side = qMin(m_size, qMin(rect.width(), rect.height()));
        const QRect place(rect.x() + (rect.width() - side) / 2, rect.y() + (rect.height() - side) / 2, side,
                          side);
        painter->drawPixmap(place.topLeft(), drawn(side, mode, ratio));
        Q_UNUSED(state)
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State) override {
        return drawn(qMin(m_size, qMin(size.width(), size.height())), mode, 1.0);
    }

    QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State, qreal scale) override {
        // `size` is in device pixels here.
        const qreal ratio = scale > 0 ? scale : 1.0;
        return drawn(qMin(m_size, qRound(qMin(size.width(), size.height()) / ratio)), mode, ratio);
    }

    QString key() const override { return QStringLiteral("tallyfen-symbol"); }

private:
    QPixmap drawn(int size, QIcon::Mode mode, qreal ratio) const {
        const QPixmap plain = SymbolIcon::pixmap(m_symbol, m_ink(), qMax(1, size), ratio);
        if (mode != QIcon::Disabled) {
            return plain;
        }
        QStyleOption option;
        option.palette = QApplication::palette();
        return QApplication::style()->generatedIconPixmap(QIcon::Disabled, plain, &option);
    }

    QString m_symbol;
    int m_size;
    std::function<QColor()> m_ink;
};
} // namespace

QIcon SymbolIcon::icon(const QString& symbol, int size, std::function<QColor()> ink) {
    return QIcon(new SymbolIconEngine(symbol, size, std::move(ink)));
}
