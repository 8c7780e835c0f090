#pragma once

#include "views/AccountDetailView.h"

#include <QMessageBox>
#include <QPointer>
#include <QScrollArea>

#include <array>
#include <optional>

class BadgeWidget;
class CardGrid;
class ElidedLabel;
class MetricCardWidget;
class QPushButton;
class QVBoxLayout;

// One account in full, drawn from AccountDetailView: header, connection panel, then the
// empty state or the callouts, allowances, histories and provenance. It performs
// nothing itself; it asks for a refresh, an edit or a sign-out (after its dialog).
class AccountDetailScreen final : public QScrollArea {
    Q_OBJECT

public:
    explicit AccountDetailScreen(QWidget* parent = nullptr);

    // Shows this account, built afresh for another account.
    void setAccount(ProviderAccount* account, bool isRefreshing);
    ProviderAccount* account() const noexcept { return m_account; }
    // The account's fields changed, or time passed: what reads differently is drawn again
    // in place, the rest (and with it hover, pressed buttons and the focus) stays.
    void redraw();
    // A refresh began or ended: only the two refresh buttons change.
    void setRefreshing(bool isRefreshing);

    // The sign-out confirmation, while it is up.
    QMessageBox* signOutDialog() const { return m_signOutDialog; }
    QPushButton* refreshButton() const noexcept { return m_refresh; }

signals:
    void refreshRequested();
    void editRequested();
    void signOutConfirmed();
    // The toolbar's refresh reads this, too.
    void refreshingShown(const AccountDetailView::Toolbar& toolbar);

private:
    // The page's parts, top to bottom; a part that is absent has no widget.
    enum class Part {
        header,
        connection,
        emptyState,
        warnings,
        billingOnly,
        metrics,
        history,
        billingHistory,
        provenance,
    };
    static constexpr int kPartCount = 9;

    // A new page for another account; update() makes its parts.
    void build(const AccountDetailView::Screen& screen, Timestamp now);
    void update(const AccountDetailView::Screen& screen, Timestamp now);
    // The part's widget for `screen`, or null when the screen has no such part.
    QWidget* makePart(Part part, const AccountDetailView::Screen& screen, Timestamp now);
    // Brings a part that changed up to date without making it anew, where it can.
    bool followInPlace(Part part, const AccountDetailView::Screen& screen, Timestamp now);
    // The refresh button as the panel says.
    void showRefresh(const AccountDetailView::ConnectionPanel& panel);
    QWidget* buildHeader(const AccountDetailView::Header& header);
    QWidget* buildConnection(const AccountDetailView::ConnectionPanel& panel);
    QWidget* buildMetrics(const AccountDetailView::Metrics& metrics, Timestamp now);
    void confirmSignOut();

    ProviderAccount* m_account = nullptr;
    bool m_refreshing = false;
    QWidget* m_page = nullptr;
    QVBoxLayout* m_layout = nullptr;
    std::array<QWidget*, kPartCount> m_parts{};
    std::optional<AccountDetailView::Screen> m_shown;
    // What changes with time, kept to be changed in place.
    BadgeWidget* m_status = nullptr;
    BadgeWidget* m_source = nullptr;
    ElidedLabel* m_updated = nullptr;
    BadgeWidget* m_connectionStatus = nullptr;
    CardGrid* m_allowances = nullptr;
    QPushButton* m_refresh = nullptr;
    QPointer<QMessageBox> m_signOutDialog;
};
