#pragma once

#include "views/OverviewView.h"

#include <QWidget>

class ElidedLabel;
class QWidget;

// One summary tile of the overview: an icon in its accent, the title, the value large
// and the detail below. Its accessible name is its title; it updates in place.
class SummaryTileWidget final : public QWidget {
    Q_OBJECT

public:
    // Narrower than this, a tile's parts would wrap: the tiles take a second row instead.
    static constexpr int kMinimumWidth = 168;

    explicit SummaryTileWidget(const OverviewView::SummaryTile& tile, QWidget* parent = nullptr);

    void setTile(const OverviewView::SummaryTile& tile);
    const OverviewView::SummaryTile& tile() const noexcept { return m_tile; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    // The value in the title size, or a step smaller when that would cut it.
    void fitValue();

    OverviewView::SummaryTile m_tile;

    int m_largeValueWidth = -1;
    QWidget* m_icon = nullptr;
    ElidedLabel* m_title;
    ElidedLabel* m_value;
    ElidedLabel* m_detail;
};
