#pragma once

#include "views/AccountDetailView.h"

#include <QPointer>
#include <QScrollArea>

#include <QMessageBox>
class QBoxLayout;
class QPushButton;

// One account in full, drawn from AccountDetailView: header, connection panel, then the
// empty state or the callouts, allowances, histories and provenance. It performs
// nothing itself; it asks for a refresh, an edit or a sign-out (after its dialog).
class AccountDetailScreen final : public QScrollArea {
    Q_OBJECT

public:
    explicit AccountDetailScreen(QWidget* parent = nullptr);

    // Shows this account, built afresh.
    void setAccount(ProviderAccount* account, bool isRefreshing);
    ProviderAccount* account() const noexcept { return m_account; }
    // The account's fields changed, or time passed: draws it again where it was scrolled.
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
    void build(const AccountDetailView::Screen& screen);
    QBoxLayout* buildHeader(const AccountDetailView::Header& header, QWidget* page);
    QWidget* buildConnection(const AccountDetailView::ConnectionPanel& panel, QWidget* page);
    void confirmSignOut();

    ProviderAccount* m_account = nullptr;
    bool m_refreshing = false;
    QWidget* m_page = nullptr;
    QPushButton* m_refresh = nullptr;
    QPointer<QMessageBox> m_signOutDialog;
};
