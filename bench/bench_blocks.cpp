// Painting the monitoring blocks after the first layout: 50 metric cards, and one trend
// chart of 90 points. Offscreen, into a pixmap of the window's size.
#include "views/MetricCardContent.h"
#include "views/TrendChartContent.h"
#include "views/widgets/AppResources.h"
#include "views/widgets/MetricCardWidget.h"
#include "views/widgets/TrendChartWidget.h"

#include <QApplication>
#include <QGridLayout>
#include <QPixmap>

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>

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
