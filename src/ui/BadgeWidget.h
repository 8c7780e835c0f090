#pragma once

#include "views/Badge.h"

#include <QStaticText>
#include <QWidget>

#include "ui/Theme.h"

// A status, pulse or source badge: a capsule with the symbol and the text in the
// badge's tone on a faint fill of it. A badge without text is the pulse dot: a small
// circle in the tone with a soft halo.
class BadgeWidget final : public QWidget {
    Q_OBJECT

public:
    explicit BadgeWidget(const Badge& badge, QWidget* parent = nullptr);

    void setBadge(const Badge& badge);
    const Badge& badge() const noexcept { return m_badge; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    // A capsule badge drawn straight onto a painter, for lists that draw their rows
    // themselves; `base` is the font it is derived from.
    static QSize capsuleSize(const Badge& badge, const QFont& base);
    static void paintCapsule(QPainter& painter, const QRect& rect, const Badge& badge, const QFont& base,
                             Theme::Appearance look);

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    bool isDot() const { return m_badge.text.isEmpty(); }
    QFont badgeFont() const;

    Badge m_badge;
    // The text, laid out once per text and font.
    QStaticText m_laidOut;
    QFont m_laidOutFont;
};
