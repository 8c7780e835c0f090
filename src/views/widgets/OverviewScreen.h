#pragma once

#include "views/MatrixRowContent.h"
#include "views/OverviewView.h"
#include "views/SubscriptionCardContent.h"

#include <QHash>
#include <QScrollArea>
#include <QSet>
#include <QUuid>

class AttentionList;
class CardButton;
class CardGrid;
class ElidedLabel;
class QButtonGroup;
class QComboBox;
class QToolButton;
class QVBoxLayout;
class SubscriptionMatrixWidget;
class SummaryTileWidget;

// The dashboard of a sidebar selection, drawn from OverviewView: header, tiles, sample
// notice, then the empty state or the attention list and the monitoring section with
// its pickers. A change to one account redraws the tiles, the attention list when it
// reads differently, and that account's card; the other cards stay as they are.
class OverviewScreen final : public QScrollArea {
    Q_OBJECT

public:
    explicit OverviewScreen(QWidget* parent = nullptr);

    // Shows these accounts under this title, built afresh.
    void setAccounts(const QString& title, const QList<ProviderAccount*>& accounts);
    // Some of the shown accounts changed: redraws what reads them, once for all.
    void accountsChanged(const QList<ProviderAccount*>& accounts);
    // Time moved on: countdowns and ages may read differently.
    void timePassed();

    MonitoringSort sortMode() const noexcept { return m_sort; }
    void setSortMode(MonitoringSort sort);
    MonitoringViewMode viewMode() const noexcept { return m_viewMode; }
    void setViewMode(MonitoringViewMode mode);

    QList<SummaryTileWidget*> tiles() const { return m_tiles; }
    // The cards in the order shown, in cards mode.
    QList<CardButton*> cards() const;
    SubscriptionMatrixWidget* matrix() const { return m_matrix; }

signals:
    void addRequested();
    void selected(const QUuid& id);
    void clearSampleDataRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void buildFixedParts();
    void redrawMatrix(bool rebuild, Timestamp now);
    void buildMonitoringHeader();
    void place(QWidget* slot, QWidget* block);
    // Recomputes the content and brings every part in line with it.
    void redraw(bool rebuildMonitoring);
    void updateAttention(const std::optional<OverviewView::AttentionSection>& section);
    // Lays the cards (or the matrix) out for the present order and grouping; cards
    // that stay are moved, not made anew.
    void rebuildMonitoringBody();
    // Moves the cards into their new order within their provider's grid.
    void reorderCards();
    // The account's card, or a blank one that is drawn when it comes into view.
    CardButton* cardFor(ProviderAccount* account);
    void scheduleMaterialize();
    // Draws the cards in view (and a screenful below) whose account changed since they
    // were drawn; the others wait until they are scrolled to.
    void materializeVisible();
    // The accounts' order and grouping as shown, to tell whether cards must move.
    QList<QList<QUuid>> layoutKey() const;

    QString m_title;
    QList<ProviderAccount*> m_accounts;
    MonitoringSort m_sort = MonitoringSort::attention;
    MonitoringViewMode m_viewMode = MonitoringViewMode::cards;
    OverviewView::Screen m_screen;

    QWidget* m_page = nullptr;
    QVBoxLayout* m_layout = nullptr;
    ElidedLabel* m_heading = nullptr;
    QList<SummaryTileWidget*> m_tiles;
    QWidget* m_noticeSlot = nullptr;
    QWidget* m_emptySlot = nullptr;
    QWidget* m_attentionSlot = nullptr;
    QWidget* m_monitoringSlot = nullptr;
    QWidget* m_sampleNotice = nullptr;
    QWidget* m_emptyState = nullptr;
    AttentionList* m_attention = nullptr;
    QWidget* m_monitoring = nullptr;
    QToolButton* m_cardsButton = nullptr;
    QToolButton* m_matrixButton = nullptr;
    QComboBox* m_sortPicker = nullptr;
    QWidget* m_monitoringBody = nullptr;
    QVBoxLayout* m_monitoringLayout = nullptr;
    SubscriptionMatrixWidget* m_matrix = nullptr;
    QList<MatrixRowContent> m_matrixRows;
    QList<QList<QUuid>> m_shownLayout;
    QList<AIProvider> m_shownProviders;
    QList<CardGrid*> m_groupGrids;
    QList<ElidedLabel*> m_groupCounts;
    QHash<QUuid, CardButton*> m_cards;
    QHash<QUuid, SubscriptionCardContent> m_cardContent;
    // Accounts whose cards, and whose matrix rows, may read differently from what is drawn.
    QSet<QUuid> m_dirty;
    QSet<QUuid> m_dirtyRows;
    bool m_materializeScheduled = false;
};
