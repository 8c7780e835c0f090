#include "onboarding/widgets/OnboardingParts.h"

#include "ui/BlockParts.h"
#include "ui/ProviderLogoWidget.h"
#include "ui/Theme.h"

#include <QScrollArea>
#include <QVBoxLayout>

namespace OnboardingParts {
using Ink = ElidedLabel::Ink;

ElidedLabel* heading(const QString& text, QWidget* parent) {
    return BlockParts::text(text, Theme::kLargeTitle, QFont::DemiBold, Ink::primary, parent, Tone::muted);
}

ElidedLabel* paragraph(const QString& text, QWidget* parent) {
    return BlockParts::text(text, Theme::kBody, QFont::Normal, Ink::secondary, parent, Tone::muted);
}

QWidget* symbolLine(const QString& symbol, const QString& text, Tone tone, Ink ink, QWidget* parent) {
    auto* row = new QWidget(parent);
    auto* layout = BlockParts::row(Theme::kSpaceS);
    row->setLayout(layout);
    layout->addWidget(BlockParts::icon(symbol, 16, row, tone), 0, Qt::AlignTop);
    ElidedLabel* label = BlockParts::text(text, Theme::kBody, QFont::Normal, ink, row, tone);
    label->setObjectName(QStringLiteral("message"));
    layout->addWidget(label, 1);
    return row;
}

void setMessage(QWidget* row, const std::optional<QString>& text) {
    row->setVisible(text.has_value());
    if (text) {
        row->findChild<ElidedLabel*>(QStringLiteral("message"))->setFullText(*text);
    }
}

QVBoxLayout* pageLayout(QWidget* page) {
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(Theme::kSpaceXXL, Theme::kSpaceL, Theme::kSpaceXXL, Theme::kSpaceL);
    layout->setSpacing(Theme::kSpaceM);
    return layout;
}

QWidget* scrollFrame(QWidget* page, OnboardingPage named) {
    auto* scroll = new QScrollArea;
    // It takes the focus for scrolling by keyboard; a screen reader names it by its page.
    scroll->setAccessibleName(named.label());
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setWidget(page);
    return scroll;
}

// The flow's every change redraws the page, and most of them keep the provider.
void showLogo(QWidget* holder, AIProvider provider, int size) {
    const QString raw = provider.rawValue();
    if (holder->property("provider").toString() == raw) {
        return;
    }
    holder->setProperty("provider", raw);
    delete holder->findChild<ProviderLogoWidget*>();
    auto* logo = new ProviderLogoWidget(provider, size, holder);
    holder->layout()->addWidget(logo);
}

QWidget* logoHolder(QWidget* parent, int size) {
    auto* holder = new QWidget(parent);
    auto* layout = new QVBoxLayout(holder);
    layout->setContentsMargins(0, 0, 0, 0);
    holder->setFixedSize(size, size);
    return holder;
}
} // namespace OnboardingParts
