// Painting the monitoring blocks after the first layout: 50 metric cards, 50 monitoring
// cards, a matrix of 50 rows, and one trend chart of 90 points. Offscreen, into a pixmap.
//
// Two measures for the cards and the matrix: what a window paints (a 1200 x 900 viewport
// scrolled a screenful at a time, which is what anyone sees), and the whole page at once
// (1200 x ~16,800 pixels for the cards), given for reference with the time it takes only
// to fill a pixmap of that size with one colour.
#include "BenchFixtures.h"
#include "ui/AppResources.h"
#include "ui/MetricCardWidget.h"
#include "ui/SubscriptionCardWidget.h"
#include "ui/SubscriptionMatrixWidget.h"
#include "ui/TrendChartWidget.h"
#include "views/MatrixRowContent.h"
#include "views/MetricCardContent.h"
#include "views/SubscriptionCardContent.h"
#include "views/TrendChartContent.h"

#include <QApplication>
#include <QGridLayout>
#include <QPixmap>
#include <QScrollArea>
#include <QScrollBar>

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <vector>

namespace {
const Timestamp kNow(800'000'000);

std::unique_ptr<QWidget> fiftyCards() {
    auto page = std::make_unique<QWidget>();
    auto* grid = new QGridLayout(page.get());
    for (int i = 0; i < 50; ++i) {
        const UsageWindow window{.id = QStringLiteral("w%1").arg(i),
                                 .title = QStringLiteral("Requests / minute %1").arg(i),
                                 .unit = UsageUnit::requests,
                                 .used = 10.0 + i,
                                 .limit = 60,
                                 .resetAt = kNow.addingSeconds(60.0 * i),
                                 .note = QStringLiteral("Rate-limit header when available")};
        grid->addWidget(new MetricCardWidget(MetricCardContent::make(window, kNow)), i / 5, i % 5);
    }
    page->resize(1400, 2200);
    page->show();
    QApplication::processEvents();
    return page;
}

void paintFiftyMetricCards(benchmark::State& state) {
    const std::unique_ptr<QWidget> page = fiftyCards();
    QPixmap target(page->size());
    for (auto _ : state) {
        page->render(&target);
    }
}
BENCHMARK(paintFiftyMetricCards)->Unit(benchmark::kMillisecond);

// Fifty subscriptions as three months of refreshes leave them.
std::vector<std::unique_ptr<ProviderAccount>> fiftyAccounts() {
    std::vector<std::unique_ptr<ProviderAccount>> accounts;
    for (int i = 0; i < 50; ++i) {
        accounts.push_back(std::make_unique<ProviderAccount>(benchdata::accountRow(i)));
    }
    return accounts;
}

void paint(benchmark::State& state, QWidget& page) {
    page.show();
    QApplication::processEvents();
    QPixmap target(page.size());
    for (auto _ : state) {
        page.render(&target);
    }
}

// `page` in a scrolling area seen through a 1200 x 900 viewport, scrolled a screenful at a
// time from top to bottom and back; each round paints what the window shows.
void paintThroughAWindow(benchmark::State& state, QWidget* page) {
    QScrollArea area;
    area.setWidget(page);
    area.setWidgetResizable(true);
    area.resize(1200, 900);
    area.show();
    QApplication::processEvents();
    QScrollBar* bar = area.verticalScrollBar();
    QPixmap target(area.viewport()->size());
    int step = bar->pageStep();
    for (auto _ : state) {
        if (bar->value() + step > bar->maximum() || bar->value() + step < 0) {
            step = -step;
        }
        bar->setValue(bar->value() + step);
        area.viewport()->render(&target);
    }
}

// Fifty monitoring cards in two columns on `page`, each as of just after its refresh.
void addFiftyCards(QWidget& page, const std::vector<std::unique_ptr<ProviderAccount>>& accounts) {
    auto* grid = new QGridLayout(&page);
    for (int i = 0; i < 50; ++i) {
        const ProviderAccount& account = *accounts[static_cast<size_t>(i)];
        const Timestamp now = account.snapshot()->capturedAt.addingSeconds(30);
        grid->addWidget(new SubscriptionCardWidget(SubscriptionCardContent::make(account, now),
                                                   account.snapshot()->history),
                        i / 2, i % 2, Qt::AlignTop);
    }
}

void paintFiftyMonitoringCards(benchmark::State& state) {
    const auto accounts = fiftyAccounts();
    QWidget page;
    addFiftyCards(page, accounts);
    page.resize(1200, page.sizeHint().height());
    paint(state, page);
}
BENCHMARK(paintFiftyMonitoringCards)->Unit(benchmark::kMillisecond);

// What a window repaints: the same fifty cards.
void paintFiftyMonitoringCardsThroughAWindow(benchmark::State& state) {
    const auto accounts = fiftyAccounts();
    auto* page = new QWidget;
    addFiftyCards(*page, accounts);
    paintThroughAWindow(state, page);
}
BENCHMARK(paintFiftyMonitoringCardsThroughAWindow)->Unit(benchmark::kMillisecond);

// The floor under any drawing of the whole card page: filling its pixels once.
void fillPageOfFiftyMonitoringCards(benchmark::State& state) {
    const auto accounts = fiftyAccounts();
    QWidget page;
    addFiftyCards(page, accounts);
    page.resize(1200, page.sizeHint().height());
    QPixmap target(page.size());
    for (auto _ : state) {
        target.fill(Qt::white);
    }
    state.counters["pixels"] = static_cast<double>(page.width()) * page.height();
}
BENCHMARK(fillPageOfFiftyMonitoringCards)->Unit(benchmark::kMillisecond);

QList<MatrixRowContent> fiftyMatrixRows(const std::vector<std::unique_ptr<ProviderAccount>>& accounts) {
    QList<MatrixRowContent> rows;
    for (const auto& account : accounts) {
        rows.append(MatrixRowContent::make(*account, account->snapshot()->capturedAt.addingSeconds(30)));
    }
    return rows;
}

// What a window repaints: the 50-row matrix.
void paintMatrixOfFiftyRowsThroughAWindow(benchmark::State& state) {
    const auto accounts = fiftyAccounts();
    paintThroughAWindow(state, new SubscriptionMatrixWidget(fiftyMatrixRows(accounts)));
}
BENCHMARK(paintMatrixOfFiftyRowsThroughAWindow)->Unit(benchmark::kMillisecond);

void paintMatrixOfFiftyRows(benchmark::State& state) {
    const auto accounts = fiftyAccounts();
    SubscriptionMatrixWidget matrix(fiftyMatrixRows(accounts));
    matrix.resize(1200, matrix.sizeHint().height());
    paint(state, matrix);
}
BENCHMARK(paintMatrixOfFiftyRows)->Unit(benchmark::kMillisecond);

QList<UsagePoint> ninetyPoints() {
    QList<UsagePoint> points;
    for (int i = 0; i < 90; ++i) {
        points.append(UsagePoint{.date = kNow.addingSeconds((i - 89) * 86400.0),
                                 .value = 100 + 40 * std::sin(i / 5.0),
                                 .unit = UsageUnit::tokens});
    }
    return points;
}

// New data: the whole chart is drawn.
void drawTrendChartOf90Points(benchmark::State& state) {
    const TrendChartContent content = TrendChartContent::trend(ninetyPoints());
    TrendChartWidget chart(content);
    chart.resize(640, 150);
    chart.show();
    QApplication::processEvents();
    QPixmap target(chart.size());
    for (auto _ : state) {
        chart.setContent(content);
        chart.render(&target);
    }
}
BENCHMARK(drawTrendChartOf90Points)->Unit(benchmark::kMicrosecond);

// A repaint with the same data, size and appearance (scrolling, an overlapping window).
void paintTrendChartOf90Points(benchmark::State& state) {
    TrendChartWidget chart(TrendChartContent::trend(ninetyPoints()));
    chart.resize(640, 150);
    chart.show();
    QApplication::processEvents();
    QPixmap target(chart.size());
    for (auto _ : state) {
        chart.render(&target);
    }
}
BENCHMARK(paintTrendChartOf90Points)->Unit(benchmark::kMicrosecond);
} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    AppResources::load();
    QApplication::setFont(QFont(AppResources::fontFamily()));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
