#include "views/widgets/BlockParts.h"

#include "views/widgets/BadgeWidget.h"
#include "views/widgets/SymbolIcon.h"
#include "views/widgets/Theme.h"

#include <QHBoxLayout>
#include <QPainter>

namespace {
class SymbolWidget final : public QWidget {
public:
    SymbolWidget(QString symbol, int size, std::optional<Tone> tone, QWidget* parent)
        : QWidget(parent)
        , m_symbol(std::move(symbol))
        , m_size(size)
        , m_tone(tone) {
        setFixedSize(size, size);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        const Theme::Appearance look = Theme::appearance(window()->palette());
        const QColor color = m_tone ? Theme::colors(*m_tone, look).foreground : Theme::secondaryText(look);
        QPainter(this).drawPixmap(0, 0, SymbolIcon::pixmap(m_symbol, color, m_size, devicePixelRatioF()));
    }

private:
    QString m_symbol;
    int m_size;
    std::optional<Tone> m_tone;
};

class SeparatorWidget final : public QWidget {
public:
    explicit SeparatorWidget(QWidget* parent)
        : QWidget(parent) {
        setFixedHeight(1);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter(this).fillRect(rect(), Theme::separator(Theme::appearance(window()->palette())));
    }
};
} // namespace

ElidedLabel* BlockParts::text(const QString& text, int pixels, QFont::Weight weight, ElidedLabel::Ink ink,
                              QWidget* parent, Tone tone, int lines) {
    auto* label = new ElidedLabel(QString(), parent);
    label->setStyle(pixels, weight, ink, tone);
    if (lines > 1) {
        label->setMaximumLines(lines);
    }
    label->setFullText(text);
    return label;
}

ElidedLabel* BlockParts::value(const QString& text, int pixels, QFont::Weight weight, ElidedLabel::Ink ink,
                               QWidget* parent, Tone tone) {
    ElidedLabel* label = BlockParts::text(text, pixels, weight, ink, parent, tone);
    label->setTabularFigures(true);
    label->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    return label;
}

QWidget* BlockParts::icon(const QString& symbol, int size, QWidget* parent, std::optional<Tone> tone) {
    return new SymbolWidget(symbol, size, tone, parent);
}

QWidget* BlockParts::chip(const QString& symbol, const QString& text, QWidget* parent) {
    return new BadgeWidget(Badge{.symbol = symbol, .text = text, .tone = Tone::muted, .accessibleName = text},
                           parent);
}

QHBoxLayout* BlockParts::row(int spacing) {
    auto* layout = new QHBoxLayout;
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing);
    return layout;
}

QWidget* BlockParts::separator(QWidget* parent) {
    return new SeparatorWidget(parent);
}
