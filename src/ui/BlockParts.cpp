#include "ui/BlockParts.h"

#include "ui/AccessibleParts.h"
#include "ui/BadgeWidget.h"
#include "ui/SymbolIcon.h"
#include "ui/Theme.h"

#include <QButtonGroup>
#include <QEvent>
#include <QHBoxLayout>
#include <QIcon>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

#include <functional>

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
                              QWidget* parent, Tone tone) {
    auto* label = new ElidedLabel(QString(), parent);
    label->setStyle(pixels, weight, ink, tone);
    label->setFullText(text);
    return label;
}

ElidedLabel* BlockParts::value(const QString& text, int pixels, QFont::Weight weight, ElidedLabel::Ink ink,
                               QWidget* parent, Tone tone) {
    ElidedLabel* label = BlockParts::text(text, pixels, weight, ink, parent, tone);
    label->setTabularFigures(true);
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

QWidget* BlockParts::heading(const QString& title, const QString& subtitle, QWidget* parent) {
    auto* box = new QWidget(parent);
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    ElidedLabel* titleLabel = text(title, Theme::kHeadline, QFont::DemiBold, ElidedLabel::Ink::primary, box);
    titleLabel->setAccessibleDescription(subtitle);
    layout->addWidget(titleLabel);
    if (!subtitle.isEmpty()) {
        layout->addWidget(
            text(subtitle, Theme::kFootnote, QFont::Normal, ElidedLabel::Ink::secondary, box, Tone::muted));
    }
    return box;
}

QPushButton* BlockParts::button(const QString& text, Theme::ButtonRole role, QWidget* parent,
                                const QString& symbol) {
    auto* button = new QPushButton(text, parent);
    button->setAccessibleName(text);
    button->setCursor(Qt::PointingHandCursor);
    Theme::setButtonRole(button, role);
    if (!symbol.isEmpty()) {
        button->setIcon(SymbolIcon::icon(symbol, 14, [role] {
            const Theme::Appearance look = Theme::current();
            return role == Theme::ButtonRole::primary       ? Theme::onAccent(look)
                   : role == Theme::ButtonRole::destructive ? Theme::colors(Tone::critical, look).foreground
                                                            : Theme::primaryText(look);
        }));
        button->setIconSize(QSize(14, 14));
    }
    return button;
}

namespace {
// Calls `redraw` when its parent's palette changes (the desktop turned light or dark).
class PaletteFollower final : public QObject {
public:
    PaletteFollower(QObject* parent, std::function<void()> redraw)
        : QObject(parent)
        , m_redraw(std::move(redraw)) {}

protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::PaletteChange) {
            m_redraw();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void()> m_redraw;
};

class CardSurface final : public QWidget {
public:
    CardSurface(QWidget* parent, std::optional<Tone> tint)
        : QWidget(parent)
        , m_tint(tint) {}

protected:
    void paintEvent(QPaintEvent*) override {
        if (!m_tint) {
            Theme::paintCard(this);
            return;
        }
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Theme::colors(*m_tint, Theme::appearance(palette())).fill);
        painter.drawRoundedRect(QRectF(rect()), Theme::kRadiusCard, Theme::kRadiusCard);
    }

private:
    std::optional<Tone> m_tint;
};
} // namespace

QWidget* BlockParts::card(QWidget* parent, std::optional<Tone> tint) {
    auto* surface = new CardSurface(parent, tint);
    auto* layout = new QVBoxLayout(surface);
    layout->setContentsMargins(Theme::kSpaceL, Theme::kSpaceL, Theme::kSpaceL, Theme::kSpaceL);
    layout->setSpacing(Theme::kSpaceS);
    return surface;
}

QHBoxLayout* BlockParts::symbolHeading(const QString& symbol, const QString& title, QWidget* parent) {
    QHBoxLayout* layout = row(Theme::kSpaceXS);
    layout->addWidget(icon(symbol, 14, parent));
    layout->addWidget(text(title, Theme::kFootnote, QFont::DemiBold, ElidedLabel::Ink::secondary, parent), 1);
    return layout;
}

void BlockParts::addModelBreakdown(QVBoxLayout* layout, const ModelBreakdownContent& models,
                                   QWidget* parent) {
    using Ink = ElidedLabel::Ink;
    layout->addLayout(symbolHeading(models.symbol, models.label, parent));
    for (const ModelBreakdownContent::Row& model : models.rows) {
        QHBoxLayout* line = row(Theme::kSpaceXS);
        if (!model.symbol.isEmpty()) {
            QWidget* chart = icon(model.symbol, 12, parent);
            chart->setAccessibleName(model.symbolName);
            line->addWidget(chart);
        } else {
            line->addWidget(new BadgeWidget(model.dot, parent));
        }
        line->addWidget(text(model.modelName, Theme::kCaption, QFont::Medium, Ink::primary, parent), 1);
        for (const QString& figure : model.historical) {
            line->addWidget(value(figure, Theme::kCaption, QFont::Normal, Ink::secondary, parent));
        }
        layout->addLayout(line);
    }
    layout->addWidget(
        text(models.attributionNote, Theme::kCaption, QFont::Normal, Ink::secondary, parent, Tone::muted));
}

void BlockParts::addAgentBudgets(QVBoxLayout* layout, const AgentBudgetPanelContent& budgets,
                                 QWidget* parent) {
    using Ink = ElidedLabel::Ink;
    layout->addLayout(symbolHeading(budgets.symbol, budgets.label, parent));
    layout->addWidget(text(budgets.note, Theme::kCaption, QFont::Normal, Ink::secondary, parent));
    for (const AgentBudgetPanelContent::Row& budget : budgets.rows) {
        QHBoxLayout* line = row(Theme::kSpaceS);
        line->addWidget(new BadgeWidget(budget.dot, parent));
        ElidedLabel* name = text(budget.name, Theme::kCaption, QFont::Medium, Ink::primary, parent);
        name->setFreeText(true);
        line->addWidget(name, 1);
        line->addWidget(value(budget.shortTitle + QStringLiteral(" ") + budget.shortValue, Theme::kCaption,
                              QFont::Normal, Ink::secondary, parent));
        line->addWidget(value(budget.weekTitle + QStringLiteral(" ") + budget.weekValue, Theme::kCaption,
                              QFont::Normal, Ink::secondary, parent));
        layout->addLayout(line);
    }
}

QMessageBox* BlockParts::confirmation(QWidget* parent, const QString& objectName, const QString& title,
                                      const QString& message, const QString& confirmTitle,
                                      const QString& cancelTitle) {
    auto* dialog = new QMessageBox(QMessageBox::Warning, title, message, QMessageBox::NoButton, parent);
    dialog->setObjectName(objectName);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    // The app's own warning symbol in its caution tone, not the toolkit's stock icon; drawn
    // anew when the desktop's appearance changes while the dialog is up.
    const auto drawIcon = [dialog] {
        const Theme::Appearance look = Theme::appearance(dialog->palette());
        dialog->setIconPixmap(SymbolIcon::pixmap(QStringLiteral("exclamationmark.triangle.fill"),
                                                 Theme::colors(Tone::caution, look).foreground, 32,
                                                 dialog->devicePixelRatioF()));
    };
    drawIcon();
    dialog->installEventFilter(new PaletteFollower(dialog, drawIcon));
    QPushButton* confirm = dialog->addButton(confirmTitle, QMessageBox::DestructiveRole);
    confirm->setObjectName(QStringLiteral("confirmButton"));
    Theme::setButtonRole(confirm, Theme::ButtonRole::destructive);
    QPushButton* cancel = dialog->addButton(cancelTitle, QMessageBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cancelButton"));
    dialog->setDefaultButton(cancel);
    dialog->setEscapeButton(cancel);
    return dialog;
}

bool BlockParts::confirmed(const QMessageBox* dialog) {
    return dialog->buttonRole(dialog->clickedButton()) == QMessageBox::DestructiveRole;
}

QWidget* BlockParts::actionCallout(const QString& symbol, const QString& title, const QString& message,
                                   Tone tone, const QString& actionTitle, Theme::ButtonRole role,
                                   QPushButton*& action, QWidget* parent) {
    QWidget* callout = card(parent, tone);
    callout->setAccessibleName(title);
    auto* line = row(Theme::kSpaceM);
    line->addWidget(icon(symbol, 20, callout, tone), 0, Qt::AlignTop);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addWidget(text(title, Theme::kBody, QFont::DemiBold, ElidedLabel::Ink::primary, callout));
    texts->addWidget(
        text(message, Theme::kFootnote, QFont::Normal, ElidedLabel::Ink::secondary, callout, Tone::muted));
    line->addLayout(texts, 1);
    action = button(actionTitle, role, callout);
    line->addWidget(action, 0, Qt::AlignVCenter);
    static_cast<QVBoxLayout*>(callout->layout())->addLayout(line);
    return callout;
}

QList<QToolButton*> BlockParts::segments(QWidget* holder, const QList<Segment>& segments, int checked) {
    auto* layout = row(2);
    holder->setLayout(layout);
    auto* group = new QButtonGroup(holder);
    group->setExclusive(true);
    QList<QToolButton*> buttons;
    for (const Segment& segment : segments) {
        auto* button = new QToolButton(holder);
        AccessibleParts::markSegment(button);
        button->setText(segment.title);
        button->setAccessibleName(segment.title);
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setIcon(
            SymbolIcon::icon(segment.symbol, 14, [] { return Theme::primaryText(Theme::current()); }));
        button->setIconSize(QSize(14, 14));
        button->setCheckable(true);
        button->setChecked(buttons.size() == checked);
        button->setFocusPolicy(Qt::StrongFocus);
        group->addButton(button);
        layout->addWidget(button);
        buttons.append(button);
    }
    return buttons;
}
