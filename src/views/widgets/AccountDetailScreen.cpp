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
        column(callout)->addWidget(
            BlockParts::text(warning, Theme::kFootnote, QFont::Normal, Ink::primary, callout, Tone::muted));
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
                                      callout, Tone::muted));
    row->addLayout(texts, 1);
    row->addWidget(new BadgeWidget(billingOnly.pulse, callout), 0, Qt::AlignTop);
    column(callout)->addLayout(row);
    return callout;
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
            BlockParts::text(value, Theme::kFootnote, QFont::Normal, Ink::primary, card, Tone::muted);
        shown->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        row->addWidget(shown, 1);
        column(card)->addLayout(row);
    }
    if (provenance.note) {
        column(card)->addWidget(BlockParts::separator(card));
        column(card)->addWidget(BlockParts::text(*provenance.note, Theme::kFootnote, QFont::Normal,
                                                 Ink::secondary, card, Tone::muted));
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
    const bool same = account == m_account && m_page;
    m_account = account;
    m_refreshing = isRefreshing;
    const Timestamp now = Clock::now();
    const AccountDetailView::Screen screen = AccountDetailView::make(*account, isRefreshing, now);
    if (same) {
        update(screen, now);
    } else {
        build(screen, now);
        verticalScrollBar()->setValue(0);
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
    showRefresh(AccountDetailView::connectionPanel(*m_account, isRefreshing));
    Q_EMIT refreshingShown(AccountDetailView::toolbar(isRefreshing));
}

void AccountDetailScreen::showRefresh(const AccountDetailView::ConnectionPanel& panel) {
    if (m_refresh) {
        m_refresh->setText(panel.refreshTitle);
        m_refresh->setAccessibleName(panel.refreshTitle);
        m_refresh->setEnabled(panel.refreshEnabled);
    }
}

void AccountDetailScreen::build(const AccountDetailView::Screen& screen, Timestamp now) {
    auto* page = new QWidget(this);
    page->setObjectName(QStringLiteral("accountDetailPage"));
    m_layout = new QVBoxLayout(page);
    m_layout->setContentsMargins(Theme::kSpaceXXL, Theme::kSpaceXL, Theme::kSpaceXXL, Theme::kSpaceXXL);
    m_layout->setSpacing(Theme::kSpaceXL);
    m_layout->addStretch(1);
    QWidget* old = takeWidget();
    m_page = page;
    // An empty page that nothing was shown on: every part is made.
    m_parts.fill(nullptr);
    m_shown.reset();
    update(screen, now);
    setWidget(page);
    delete old;
}

void AccountDetailScreen::update(const AccountDetailView::Screen& screen, Timestamp now) {
    int index = 0;
    for (int number = 0; number < kPartCount; ++number) {
        const auto part = static_cast<Part>(number);
        QWidget*& widget = m_parts[static_cast<std::size_t>(number)];
        if (!followInPlace(part, screen, now)) {
            // Made anew where it stood; the focus, if it was inside, goes to the same control.
            QString focused;
            if (QWidget* focus = QApplication::focusWidget(); widget && widget->isAncestorOf(focus)) {
                focused = focus->objectName();
            }
            QWidget* made = makePart(part, screen, now);
            if (widget) {
                m_layout->removeWidget(widget);
                delete widget;
            }
            widget = made;
            if (widget) {
                m_layout->insertWidget(index, widget);
                widget->show();
                if (QWidget* again = focused.isEmpty() ? nullptr : widget->findChild<QWidget*>(focused)) {
                    again->setFocus(Qt::OtherFocusReason);
                }
            }
        }
        index += widget ? 1 : 0;
    }
    m_shown = screen;
    // The page takes the focus for scrolling by keyboard; a screen reader names it by its account.
    setAccessibleName(screen.header.name);
    Q_EMIT refreshingShown(screen.toolbar);
}

QWidget* AccountDetailScreen::makePart(Part part, const AccountDetailView::Screen& screen, Timestamp now) {
    switch (part) {
    case Part::header:
        return buildHeader(screen.header);
    case Part::connection:
        return buildConnection(screen.connection);
    case Part::emptyState:
        if (screen.emptyState) {
            auto* empty = new StatusCardWidget(
                *screen.emptyState, [this] { Q_EMIT refreshRequested(); }, m_page);
            empty->setObjectName(QStringLiteral("detailEmptyState"));
            empty->setMinimumHeight(240);
            return empty;
        }
        return nullptr;
    case Part::warnings:
        return screen.warnings ? warningsCallout(*screen.warnings, m_page) : nullptr;
    case Part::billingOnly:
        return screen.billingOnly ? billingOnlyCallout(*screen.billingOnly, m_page) : nullptr;
    case Part::metrics:
        if (screen.metrics) {
            return section(screen.metrics->heading, buildMetrics(*screen.metrics, now), m_page);
        }
        m_allowances = nullptr;
        return nullptr;
    case Part::history:
        return screen.history ? section(screen.history->heading, historyBox(*screen.history, nullptr), m_page)
                              : nullptr;
    case Part::billingHistory:
        return screen.billingHistory ? section(screen.billingHistory->heading,
                                               historyBox(*screen.billingHistory, nullptr), m_page)
                                     : nullptr;
    case Part::provenance:
        return screen.provenance
                   ? section(screen.provenance->heading, provenanceCard(*screen.provenance, m_page), m_page)
                   : nullptr;
    }
    return nullptr;
}

bool AccountDetailScreen::followInPlace(Part part, const AccountDetailView::Screen& screen, Timestamp now) {
    if (!m_shown) {
        return false;
    }
    const AccountDetailView::Screen& shown = *m_shown;
    switch (part) {
    case Part::header: {
        // The status, the source and the age change with time; they change in place.
        AccountDetailView::Header before = shown.header;
        before.status = screen.header.status;
        before.source = screen.header.source;
        before.updated = screen.header.updated;
        if (!(before == screen.header) ||
            shown.header.source.has_value() != screen.header.source.has_value()) {
            return false;
        }
        m_status->setBadge(screen.header.status);
        if (m_source && screen.header.source) {
            m_source->setBadge(*screen.header.source);
        }
        m_updated->setFullText(screen.header.updated);
        return true;
    }
    case Part::connection: {
        AccountDetailView::ConnectionPanel before = shown.connection;
        before.status = screen.connection.status;
        before.refreshTitle = screen.connection.refreshTitle;
        before.refreshIcon = screen.connection.refreshIcon;
        before.refreshEnabled = screen.connection.refreshEnabled;
        if (!(before == screen.connection)) {
            return false;
        }
        m_connectionStatus->setBadge(screen.connection.status);
        showRefresh(screen.connection);
        return true;
    }
    case Part::emptyState:
        return shown.emptyState == screen.emptyState;
    case Part::warnings:
        return shown.warnings == screen.warnings;
    case Part::billingOnly:
        return shown.billingOnly == screen.billingOnly;
    case Part::metrics: {
        if (!(shown.metrics == screen.metrics)) {
            return false;
        }
        if (!screen.metrics) {
            return true;
        }
        // The same windows: each card follows its countdown, and a card that reads
        // otherwise (its reset passed) is made anew in its place.
        QList<QWidget*> cards = m_allowances->cards();
        bool replaced = false;
        for (qsizetype i = 0; i < cards.size(); ++i) {
            auto* card = static_cast<MetricCardWidget*>(cards[i]);
            const MetricCardContent content = MetricCardContent::make(screen.metrics->windows.at(i), now);
            if (!card->follow(content)) {
                cards[i] = new MetricCardWidget(content);
                replaced = true;
            }
        }
        if (replaced) {
            const QList<QWidget*> before = m_allowances->cards();
            m_allowances->setCards(cards);
            for (QWidget* card : before) {
                if (!cards.contains(card)) {
                    delete card;
                }
            }
        }
        return true;
    }
    case Part::history:
        return shown.history == screen.history;
    case Part::billingHistory:
        return shown.billingHistory == screen.billingHistory;
    case Part::provenance:
        return shown.provenance == screen.provenance;
    }
    return true;
}

// The allowances as metric cards, then the models and the agents' budgets.
QWidget* AccountDetailScreen::buildMetrics(const AccountDetailView::Metrics& metrics, Timestamp now) {
    auto* body = new QWidget;
    auto* stack = new QVBoxLayout(body);
    stack->setContentsMargins(0, 0, 0, 0);
    stack->setSpacing(Theme::kSpaceM);
    m_allowances = new CardGrid(AccountDetailView::Metrics::kMinimumColumnWidth, body);
    m_allowances->setObjectName(QStringLiteral("allowances"));
    QList<QWidget*> cards;
    for (const UsageWindow& window : metrics.windows) {
        cards.append(new MetricCardWidget(MetricCardContent::make(window, now)));
    }
    m_allowances->setCards(cards);
    stack->addWidget(m_allowances);
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

// Logo, name and kind, plan, roster and chips; status, source and age at the right.
QWidget* AccountDetailScreen::buildHeader(const AccountDetailView::Header& header) {
    auto* page = new QWidget(m_page);
    page->setObjectName(QStringLiteral("detailHeader"));
    auto* top = BlockParts::row(Theme::kSpaceM);
    page->setLayout(top);
    top->setContentsMargins(0, 0, 0, 0);
    top->addWidget(new ProviderLogoWidget(header.provider, 40, page), 0, Qt::AlignTop);
    auto* identity = new QVBoxLayout;
    identity->setSpacing(Theme::kSpaceXS);
    ElidedLabel* name =
        BlockParts::text(header.name, Theme::kLargeTitle, QFont::DemiBold, Ink::primary, page);
    name->setObjectName(QStringLiteral("accountName"));
    name->setFreeText(true);
    name->setMaximumLines(2);
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
                                             page, Tone::muted));
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
    m_status = new BadgeWidget(header.status, page);
    badges->addWidget(m_status);
    m_source = header.source ? new BadgeWidget(*header.source, page) : nullptr;
    if (m_source) {
        badges->addWidget(m_source);
    }
    state->addLayout(badges);
    m_updated = BlockParts::value(header.updated, Theme::kFootnote, QFont::Normal, Ink::secondary, page);
    m_updated->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    state->addWidget(m_updated, 0, Qt::AlignRight);
    state->addStretch(1);
    top->addLayout(state);

    return page;
}

QWidget* AccountDetailScreen::buildConnection(const AccountDetailView::ConnectionPanel& panel) {
    QWidget* connection = BlockParts::card(m_page);
    connection->setObjectName(QStringLiteral("connectionPanel"));
    auto* line = BlockParts::row(Theme::kSpaceM);
    line->addWidget(new IconTile(panel.style.icon, panel.style.tone, connection), 0, Qt::AlignTop);
    auto* words = new QVBoxLayout;
    words->setSpacing(2);
    words->addWidget(
        BlockParts::text(panel.style.title, Theme::kHeadline, QFont::DemiBold, Ink::primary, connection));
    words->addWidget(BlockParts::text(panel.style.message, Theme::kFootnote, QFont::Normal, Ink::secondary,
                                      connection, Tone::muted));
    line->addLayout(words, 1);
    m_connectionStatus = new BadgeWidget(panel.status, connection);
    line->addWidget(m_connectionStatus, 0, Qt::AlignTop);
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
