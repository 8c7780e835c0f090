#pragma once

#include "views/Badge.h"
#include "views/widgets/ElidedLabel.h"

#include <QWidget>

class QHBoxLayout;

// Small builders the monitoring blocks share, so that every card spells a title, a
// secondary line or an icon the same way.
class BlockParts final {
public:
    BlockParts() = delete;

    static ElidedLabel* text(const QString& text, int pixels, QFont::Weight weight, ElidedLabel::Ink ink,
                             QWidget* parent, Tone tone = Tone::muted, int lines = 1);
    // The same for a short figure that must show whole ("42 requests", "of 60 requests"):
    // it takes the width its text needs, the labels beside it give way, and its figures
    // are tabular.
    static ElidedLabel* value(const QString& text, int pixels, QFont::Weight weight, ElidedLabel::Ink ink,
                              QWidget* parent, Tone tone = Tone::muted);
    // A symbol in secondary colour (or a tone), redrawn for the window's appearance.
    static QWidget* icon(const QString& symbol, int size, QWidget* parent,
                         std::optional<Tone> tone = std::nullopt);
    // A chip: a muted capsule with a symbol and a text.
    static QWidget* chip(const QString& symbol, const QString& text, QWidget* parent);
    // A horizontal row with no margins of its own.
    static QHBoxLayout* row(int spacing);
    // A thin separator line.
    static QWidget* separator(QWidget* parent);
};
