#include "views/widgets/AccountDetailScreen.h"

#include "model/Clock.h"
#include "store/ProviderAccount.h"
#include "ui/BadgeWidget.h"
#include "ui/BlockParts.h"
#include "ui/CardGrid.h"
#include "ui/MetricCardWidget.h"
#include "ui/ProviderLogoWidget.h"
#include "ui/StatusCardWidget.h"
#include "ui/SymbolIcon.h"
#include "ui/Theme.h"
#include "ui/TrendChartWidget.h"
#include "views/AgentBudgetPanelContent.h"
#include "views/MetricCardContent.h"
#include "views/ModelBreakdownContent.h"
#include "views/TrendChartContent.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QPainter>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

namespace {
using Ink = ElidedLabel::Ink;

// A rounded tile in a tone's faint fill with its symbol in the tone.
class IconTile final : public QWidget {
public:
    IconTile(const QString& symbol, Tone tone, QWidget* parent)
        : QWidget(parent)
        , m_symbol(symbol)
        , m_tone(tone) {
        setFixedSize(36, 36);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const Theme::ToneColors colors = Theme::colors(m_tone, Theme::appearance(palette()));
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors.fill);
        painter.drawRoundedRect(QRectF(rect()), Theme::kRadiusSmall + 2, Theme::kRadiusSmall + 2);
        painter.drawPixmap(8, 8, SymbolIcon::pixmap(m_symbol, colors.foreground, 20, devicePixelRatioF()));
    }

private:
    QString m_symbol;
    Tone m_tone;
};

QVBoxLayout* column(QWidget* card) {
    return static_cast<QVBoxLayout*>(card->layout());
}

// A section: its heading, then its body.
QWidget* section(const AccountDetailView::SectionHeading& heading, QWidget* body, QWidget* parent) {
    auto* box = new QWidget(parent);
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Theme::kSpaceM);
    layout->addWidget(BlockParts::heading(heading.title, heading.subtitle, box));
    body->setParent(box);
    layout->addWidget(body);
    return box;
}

// A history box: its first line (leading and trailing) above a trend chart.
QWidget* historyBox(const AccountDetailView::History& history, QWidget* parent) {
    QWidget* card = BlockParts::card(parent);
    auto* top = BlockParts::row(Theme::kSpaceM);
    top->addWidget(BlockParts::text(history.leading, Theme::kFootnote, QFont::DemiBold, Ink::primary, card),
                   1);
    top->addWidget(BlockParts::value(history.trailing, Theme::kCaption, QFont::Normal, Ink::secondary, card));
    column(card)->addLayout(top);
    column(card)->addWidget(new TrendChartWidget(TrendChartContent::trend(history.points), card));
    return card;
}

// What the snapshot warns of, in a caution callout.
QWidget* warningsCallout(const AccountDetailView::WarningCallout& warnings, QWidget* page) {
    QWidget* callout = BlockParts::card(page, Tone::caution);
    callout->setObjectName(QStringLiteral("partialDataCallout"));
    callout->setAccessibleName(warnings.label);
    column(callout)->addLayout(BlockParts::symbolHeading(warnings.symbol, warnings.label, callout));
    for (const QString& warning : warnings.lines) {
        column(callout)->addWidget(BlockParts::text(warning, Theme::kFootnote, QFont::Normal, Ink::primary,
                                                    callout, Tone::muted, 4));
    }
    return callout;
}

// An account whose provider reports only what it cost.
QWidget* billingOnlyCallout(const AccountDetailView::BillingOnlyCallout& billingOnly, QWidget* page) {
    QWidget* callout = BlockParts::card(page, billingOnly.tone);
    callout->setObjectName(QStringLiteral("billingOnlyCallout"));
    callout->setAccessibleName(billingOnly.title);
    auto* row = BlockParts::row(Theme::kSpaceM);
    row->addWidget(BlockParts::icon(billingOnly.symbol, 18, callout, billingOnly.tone), 0, Qt::AlignTop);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addWidget(
        BlockParts::text(billingOnly.title, Theme::kBody, QFont::DemiBold, Ink::primary, callout));
    texts->addWidget(BlockParts::text(billingOnly.message, Theme::kFootnote, QFont::Normal, Ink::secondary,
                                      callout, Tone::muted, 3));
    row->addLayout(texts, 1);
    row->addWidget(new BadgeWidget(billingOnly.pulse, callout), 0, Qt::AlignTop);
    column(callout)->addLayout(row);
    return callout;
}

// The allowances as metric cards, then the models and the agents' budgets.
QWidget* metricsBody(const AccountDetailView::Metrics& metrics) {
    const Timestamp now = Clock::now();
    auto* body = new QWidget;
    auto* stack = new QVBoxLayout(body);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(Theme::kSpaceM);
    auto* grid = new CardGrid(AccountDetailView::Metrics::kMinimumColumnWidth, body);
    grid->setObjectName(QStringLiteral("allowances"));
    QList<QWidget*> cards;
    for (const UsageWindow& window : metrics.windows) {
        cards.append(new MetricCardWidget(MetricCardContent::make(window, now)));
    }
    grid->setCards(cards);
    stack->addWidget(grid);
    if (!metrics.models.isEmpty()) {
        QWidget* card = BlockParts::card(body);
        BlockParts::addModelBreakdown(column(card), ModelBreakdownContent::make(metrics.models), card);
        stack->addWidget(card);
    }
    if (!metrics.budgets.isEmpty()) {
        QWidget* card = BlockParts::card(body);
        BlockParts::addAgentBudgets(column(card), AgentBudgetPanelContent::make(metrics.budgets), card);
        stack->addWidget(card);
    }
    return body;
}

// Where the numbers come from, a row each.
QWidget* provenanceCard(const AccountDetailView::Provenance& provenance, QWidget* page) {
    QWidget* card = BlockParts::card(page);
    card->setObjectName(QStringLiteral("provenance"));
    for (const auto& [label, value] : provenance.rows) {
        if (column(card)->count() > 0) {
            column(card)->addWidget(BlockParts::separator(card));
        }
        auto* row = BlockParts::row(Theme::kSpaceL);
        row->addWidget(BlockParts::value(label, Theme::kFootnote, QFont::Medium, Ink::secondary, card));
        ElidedLabel* shown =
            BlockParts::text(value, Theme::kFootnote, QFont::Normal, Ink::primary, card, Tone::muted, 3);
        shown->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        row->addWidget(shown, 1);
        column(card)->addLayout(row);
    }
    if (provenance.note) {
        column(card)->addWidget(BlockParts::separator(card));
        column(card)->addWidget(BlockParts::text(*provenance.note, Theme::kFootnote, QFont::Normal,
                                                 Ink::secondary, card, Tone::muted, 2));
    }
    return card;
}
} // namespace

AccountDetailScreen::AccountDetailScreen(QWidget* parent)
    : QScrollArea(parent) {
    setObjectName(QStringLiteral("accountDetail"));
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

void AccountDetailScreen::setAccount(ProviderAccount* account, bool isRefreshing) {
    const bool same = account == m_account;
    m_account = account;
    m_refreshing = isRefreshing;
    const int scrolled = same ? verticalScrollBar()->value() : 0;
    // Drawn again (a change, a minute passing): the keyboard focus stays on its button.
    QString focused;
    if (QWidget* focus = QApplication::focusWidget(); same && m_page && m_page->isAncestorOf(focus)) {
        focused = focus->objectName();
    }
    build(AccountDetailView::make(*account, isRefreshing, Clock::now()));
    verticalScrollBar()->setValue(scrolled);
    if (!focused.isEmpty()) {
        if (QWidget* again = m_page->findChild<QWidget*>(focused)) {
            again->setFocus(Qt::OtherFocusReason);
        }
    }
}

void AccountDetailScreen::redraw() {
    if (m_account) {
        setAccount(m_account, m_refreshing);
    }
}

void AccountDetailScreen::setRefreshing(bool isRefreshing) {
    m_refreshing = isRefreshing;
    if (!m_account) {
        return;
    }
    const AccountDetailView::ConnectionPanel panel =
        AccountDetailView::connectionPanel(*m_account, isRefreshing);
    if (m_refresh) {
        m_refresh->setText(panel.refreshTitle);
        m_refresh->setAccessibleName(panel.refreshTitle);
        m_refresh->setEnabled(panel.refreshEnabled);
    }
    Q_EMIT refreshingShown(AccountDetailView::toolbar(isRefreshing));
}

void AccountDetailScreen::build(const AccountDetailView::Screen& screen) {
    auto* page = new QWidget(this);
    page->setObjectName(QStringLiteral("accountDetailPage"));
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(Theme::kSpaceXXL, Theme::kSpaceXL, Theme::kSpaceXXL, Theme::kSpaceXXL);
    layout->setSpacing(Theme::kSpaceXL);
    layout->addLayout(buildHeader(screen.header, page));
    layout->addWidget(buildConnection(screen.connection, page));
    if (screen.emptyState) {
        auto* empty = new StatusCardWidget(
            *screen.emptyState, [this] { Q_EMIT refreshRequested(); }, page);
        empty->setObjectName(QStringLiteral("detailEmptyState"));
        empty->setMinimumHeight(240);
        layout->addWidget(empty);
    }
    if (screen.warnings) {
        layout->addWidget(warningsCallout(*screen.warnings, page));
    }
    if (screen.billingOnly) {
        layout->addWidget(billingOnlyCallout(*screen.billingOnly, page));
    }
    if (screen.metrics) {
        layout->addWidget(section(screen.metrics->heading, metricsBody(*screen.metrics), page));
    }
    if (screen.history) {
        layout->addWidget(section(screen.history->heading, historyBox(*screen.history, nullptr), page));
    }
    if (screen.billingHistory) {
        layout->addWidget(
            section(screen.billingHistory->heading, historyBox(*screen.billingHistory, nullptr), page));
    }
    if (screen.provenance) {
        layout->addWidget(
            section(screen.provenance->heading, provenanceCard(*screen.provenance, page), page));
    }
    layout->addStretch(1);

    QWidget* old = takeWidget();
    setWidget(page);
    m_page = page;
    delete old;
    Q_EMIT refreshingShown(screen.toolbar);
}

// Logo, name and kind, plan, roster and chips; status, source and age at the right.
QBoxLayout* AccountDetailScreen::buildHeader(const AccountDetailView::Header& header, QWidget* page) {
    auto* top = BlockParts::row(Theme::kSpaceM);
    top->addWidget(new ProviderLogoWidget(header.provider, 40, page), 0, Qt::AlignTop);
    auto* identity = new QVBoxLayout;
    identity->setSpacing(Theme::kSpaceXS);
    ElidedLabel* name =
        BlockParts::text(header.name, Theme::kLargeTitle, QFont::DemiBold, Ink::primary, page);
    name->setObjectName(QStringLiteral("accountName"));
    identity->addWidget(name);
    identity->addWidget(BlockParts::text(header.subtitle, Theme::kBody, QFont::Normal, Ink::secondary, page));
    if (!header.planName.isEmpty()) {
        auto* plan = BlockParts::row(Theme::kSpaceS);
        plan->addWidget(BlockParts::value(header.planName, Theme::kBody, QFont::Medium, Ink::primary, page));
        if (header.planDetected) {
            plan->addWidget(BlockParts::chip(header.planDetected->symbol, header.planDetected->text, page));
        }
        plan->addStretch(1);
        identity->addLayout(plan);
    }
    if (!header.roster.isEmpty()) {
        identity->addWidget(BlockParts::text(header.roster, Theme::kFootnote, QFont::Normal, Ink::secondary,
                                             page, Tone::muted, 3));
    }
    if (!header.chips.isEmpty()) {
        auto* chips = BlockParts::row(Theme::kSpaceXS);
        for (const AccountDetailView::Chip& chip : header.chips) {
            chips->addWidget(BlockParts::chip(chip.symbol, chip.text, page));
        }
        chips->addStretch(1);
        identity->addLayout(chips);
    }
    top->addLayout(identity, 1);
    auto* state = new QVBoxLayout;
    state->setSpacing(Theme::kSpaceXS);
    auto* badges = BlockParts::row(Theme::kSpaceXS);
    badges->addStretch(1);
    badges->addWidget(new BadgeWidget(header.status, page));
    if (header.source) {
        badges->addWidget(new BadgeWidget(*header.source, page));
    }
    state->addLayout(badges);
    ElidedLabel* updated =
        BlockParts::value(header.updated, Theme::kFootnote, QFont::Normal, Ink::secondary, page);
    updated->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    state->addWidget(updated, 0, Qt::AlignRight);
    state->addStretch(1);
    top->addLayout(state);

    return top;
}

QWidget* AccountDetailScreen::buildConnection(const AccountDetailView::ConnectionPanel& panel,
                                              QWidget* page) {
    QWidget* connection = BlockParts::card(page);
    connection->setObjectName(QStringLiteral("connectionPanel"));
    auto* line = BlockParts::row(Theme::kSpaceM);
    line->addWidget(new IconTile(panel.style.icon, panel.style.tone, connection), 0, Qt::AlignTop);
    auto* words = new QVBoxLayout;
    words->setSpacing(2);
    words->addWidget(
        BlockParts::text(panel.style.title, Theme::kHeadline, QFont::DemiBold, Ink::primary, connection));
    words->addWidget(BlockParts::text(panel.style.message, Theme::kFootnote, QFont::Normal, Ink::secondary,
                                      connection, Tone::muted, 3));
    line->addLayout(words, 1);
    line->addWidget(new BadgeWidget(panel.status, connection), 0, Qt::AlignTop);
    column(connection)->addLayout(line);
    auto* buttons = BlockParts::row(Theme::kSpaceS);
    m_refresh =
        BlockParts::button(panel.refreshTitle, Theme::ButtonRole::primary, connection, panel.refreshIcon);
    m_refresh->setObjectName(QStringLiteral("smartRefreshButton"));
    m_refresh->setEnabled(panel.refreshEnabled);
    connect(m_refresh, &QPushButton::clicked, this, &AccountDetailScreen::refreshRequested);
    buttons->addWidget(m_refresh);
    if (panel.editTitle) {
        QPushButton* edit = BlockParts::button(*panel.editTitle, Theme::ButtonRole::standard, connection);
        edit->setObjectName(QStringLiteral("editConnectionButton"));
        connect(edit, &QPushButton::clicked, this, &AccountDetailScreen::editRequested);
        buttons->addWidget(edit);
    }
    if (panel.signOutTitle) {
        QPushButton* signOut =
            BlockParts::button(*panel.signOutTitle, Theme::ButtonRole::destructive, connection);
        signOut->setObjectName(QStringLiteral("signOutButton"));
        connect(signOut, &QPushButton::clicked, this, &AccountDetailScreen::confirmSignOut);
        buttons->addWidget(signOut);
    }
    buttons->addStretch(1);
    column(connection)->addSpacing(Theme::kSpaceXS);
    column(connection)->addLayout(buttons);

    return connection;
}

void AccountDetailScreen::confirmSignOut() {
    if (m_signOutDialog) {
        return;
    }
    const AccountDetailView::SignOutDialog text = AccountDetailView::signOutDialog();
    QMessageBox* dialog = BlockParts::confirmation(this, QStringLiteral("signOutDialog"), text.title,
                                                   text.message, text.confirmTitle, text.cancelTitle);
    connect(dialog, &QMessageBox::finished, this, [this, dialog] {
        if (BlockParts::confirmed(dialog)) {
            Q_EMIT signOutConfirmed();
        }
    });
    m_signOutDialog = dialog;
    dialog->open();
}
