#pragma once

#include "ui/ElidedLabel.h"
#include "ui/Theme.h"
#include "views/AgentBudgetPanelContent.h"
#include "views/Badge.h"
#include "views/ModelBreakdownContent.h"

#include <QWidget>

class QHBoxLayout;
class QMessageBox;
class QVBoxLayout;
class QPushButton;
class QToolButton;

// Small builders the monitoring blocks share, so that every card spells a title, a
// secondary line or an icon the same way.
class BlockParts final {
public:
    BlockParts() = delete;

    static ElidedLabel* text(const QString& text, int pixels, QFont::Weight weight, ElidedLabel::Ink ink,
                             QWidget* parent, Tone tone = Tone::muted);
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
    // A small heading of a panel: a symbol and a title in secondary text.
    static QHBoxLayout* symbolHeading(const QString& symbol, const QString& title, QWidget* parent);
    // The model rows of a snapshot, under their heading, with the attribution note.
    static void addModelBreakdown(QVBoxLayout* layout, const ModelBreakdownContent& models, QWidget* parent);
    // The operator's agent budgets, under their heading and note.
    static void addAgentBudgets(QVBoxLayout* layout, const AgentBudgetPanelContent& budgets, QWidget* parent);
    // A section's heading: its title and, below it, the subtitle in secondary text.
    static QWidget* heading(const QString& title, const QString& subtitle, QWidget* parent);
    // A push button in one of the theme's roles, with an optional symbol before its
    // text; its accessible name is its text.
    static QPushButton* button(const QString& text, Theme::ButtonRole role, QWidget* parent,
                               const QString& symbol = QString());
    // A confirmation that opens over `parent`: a warning with a destructive button
    // ("confirmButton") and a cancel button ("cancelButton") that is the default and
    // Escape. It deletes itself when closed.
    static QMessageBox* confirmation(QWidget* parent, const QString& objectName, const QString& title,
                                     const QString& message, const QString& confirmTitle,
                                     const QString& cancelTitle = QStringLiteral("Cancel"));
    // Whether a closed confirmation was closed with its destructive button.
    static bool confirmed(const QMessageBox* dialog);
    // A card surface with a vertical layout inside; `tone` tints it (a callout) instead.
    static QWidget* card(QWidget* parent, std::optional<Tone> tint = std::nullopt);
    // A callout in a tone: its symbol, a title and a message, and one button at the end
    // (`action`, in the given role).
    static QWidget* actionCallout(const QString& symbol, const QString& title, const QString& message,
                                  Tone tone, const QString& actionTitle, Theme::ButtonRole role,
                                  QPushButton*& action, QWidget* parent);
    // Segments side by side in `holder`, of which one is on at a time: each a tool button
    // with its title and symbol. The buttons, in order.
    struct Segment {
        QString title;
        QString symbol;
    };
    static QList<QToolButton*> segments(QWidget* holder, const QList<Segment>& segments, int checked);
};
