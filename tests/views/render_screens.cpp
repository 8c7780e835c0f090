// Renders the application's screens offscreen into PNG files, for people to look at.
// Usage: render_screens <output folder>
#include "core/ContentView.h"
#include "core/Preferences.h"
#include "views/Badge.h"
#include "views/MetricCardContent.h"
#include "views/TrendChartContent.h"
#include "views/widgets/AppResources.h"
#include "views/widgets/BadgeWidget.h"
#include "views/widgets/MainWindow.h"
#include "views/widgets/MetricCardWidget.h"
#include "views/widgets/SettingsWindow.h"
#include "views/widgets/Theme.h"
#include "views/widgets/TrendChartWidget.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <QApplication>
#include <QDir>
#include <QMessageBox>
#include <QTemporaryDir>

#include <cmath>
#include <cstdio>
#include <memory>

namespace {
void addAccount(AccountStore& store, const QString& label, AIProvider provider, SyncStatus status,
                double createdAt) {
    auto* account = new ProviderAccount(ProviderAccount::Init{.provider = provider,
                                                              .label = label,
                                                              .accountKind = AccountKind::consumer,
                                                              .createdAt = Timestamp(createdAt),
                                                              .syncStatus = status});
    store.insert(account);
}

QPalette paletteFor(Theme::Appearance look) {
    QPalette palette;
    const QColor window = Theme::window(look);
    const QColor text = Theme::primaryText(look);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::Base, Theme::card(look));
    palette.setColor(QPalette::WindowText, text);
    palette.setColor(QPalette::Text, text);
    palette.setColor(QPalette::ButtonText, text);
    palette.setColor(QPalette::Button, Theme::card(look));
    return palette;
}

UsageWindow sampleWindow(const QString& title, std::optional<double> used, std::optional<double> limit,
                         UsageUnit unit, std::optional<double> resetIn, const QString& note, Timestamp now) {
    return UsageWindow{.id = title,
                       .title = title,
                       .unit = unit,
                       .used = used,
                       .limit = limit,
                       .resetAt =
                           resetIn ? std::optional<Timestamp>(now.addingSeconds(*resetIn)) : std::nullopt,
                       .note = note.isEmpty() ? std::nullopt : std::optional<QString>(note)};
}

// Every block in its main states, on one page.
QWidget* blockGallery(Theme::Appearance look) {
    const Timestamp now = Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 2), QTime(9, 30)));
    auto* page = new QWidget;
    page->setPalette(paletteFor(look));
    page->setAutoFillBackground(true);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(Theme::kSpaceXL, Theme::kSpaceXL, Theme::kSpaceXL, Theme::kSpaceXL);
    layout->setSpacing(Theme::kSpaceL);

    auto* badges = new QHBoxLayout;
    badges->setSpacing(Theme::kSpaceS);
    for (const SyncStatus status : SyncStatus::allCases()) {
        badges->addWidget(new BadgeWidget(Badge::status(status)));
    }
    badges->addStretch(1);
    layout->addLayout(badges);
    auto* pulses = new QHBoxLayout;
    pulses->setSpacing(Theme::kSpaceS);
    for (const UsageHealth health : UsageHealth::allCases()) {
        pulses->addWidget(new BadgeWidget(Badge::pulse(health)));
    }
    for (const UsageSource source : UsageSource::allCases()) {
        pulses->addWidget(new BadgeWidget(Badge::source(source)));
    }
    for (const UsageHealth health : UsageHealth::allCases()) {
        pulses->addWidget(new BadgeWidget(Badge::dot(health)));
    }
    pulses->addStretch(1);
    layout->addLayout(pulses);

    const QList<UsageWindow> windows{
        sampleWindow(QStringLiteral("Messages / 5 hours"), 18, 50, UsageUnit::messages, 10800,
                     QStringLiteral("Consumer limit; sample only"), now),
        sampleWindow(QStringLiteral("Requests / minute"), 42, 60, UsageUnit::requests, 2520,
                     QStringLiteral("Rate-limit header when available"), now),
        sampleWindow(QStringLiteral("Tokens / minute"), 162000, 150000, UsageUnit::tokens, 40, QString(),
                     now),
        sampleWindow(QStringLiteral("API spend / 30 days"), 84.32, std::nullopt, UsageUnit::dollars,
                     std::nullopt, QStringLiteral("No spend ceiling reported"), now),
        sampleWindow(QStringLiteral("Credits / billing period"), std::nullopt, std::nullopt,
                     UsageUnit::credits, std::nullopt, QString(), now),
        sampleWindow(
            QString(300, u'W'), 3, 10, UsageUnit::items, 90000,
            QStringLiteral("A label of three hundred characters is cut, never widens the card, and a "
                           "long note wraps to two lines at the most before it is cut as well."),
            now)};
    auto* grid = new QGridLayout;
    grid->setSpacing(Theme::kSpaceL);
    for (qsizetype i = 0; i < windows.size(); ++i) {
        auto* card = new MetricCardWidget(MetricCardContent::make(windows[i], now));
        card->setMinimumWidth(280);
        grid->addWidget(card, static_cast<int>(i / 3), static_cast<int>(i % 3));
    }
    layout->addLayout(grid);

    QList<UsagePoint> history;
    for (int day = 0; day < 14; ++day) {
        history.append(UsagePoint{.date = now.addingSeconds((day - 13) * 86400.0),
                                  .value = 40 + 25 * std::sin(day / 2.0) + day * 3,
                                  .unit = UsageUnit::requests});
    }
    auto* charts = new QHBoxLayout;
    charts->setSpacing(Theme::kSpaceL);
    charts->addWidget(new TrendChartWidget(TrendChartContent::trend(history)), 2);
    charts->addWidget(new TrendChartWidget(TrendChartContent::trend({})), 1);
    auto* sparks = new QVBoxLayout;
    sparks->addWidget(new TrendChartWidget(TrendChartContent::sparkline(history)));
    sparks->addWidget(new TrendChartWidget(TrendChartContent::sparkline({})));
    charts->addLayout(sparks);
    layout->addLayout(charts);
    return page;
}

bool save(QWidget& widget, const QString& path) {
    widget.show();
    QApplication::processEvents();
    const bool ok = widget.grab().save(path);
    std::printf("%s %s\n", ok ? "wrote" : "could not write", qPrintable(path));
    return ok;
}
} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    AppResources::load();
    QApplication::setFont(QFont(AppResources::fontFamily(), 10));
    const QString output = QCoreApplication::arguments().value(1, QStringLiteral("screenshots"));
    QDir().mkpath(output);
    QTemporaryDir scratch;
    QString error;
    auto store = AccountStore::open(scratch.filePath(QStringLiteral("screens.store")), &error);
    if (!store) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return 1;
    }
    Preferences preferences(scratch.filePath(QStringLiteral("preferences.ini")));
    ContentView content(store.get(), &preferences);

    bool ok = true;
    {
        // First launch: the welcome.
        MainWindow window(&content);
        window.resize(MainWindow::kMinimumWidth, MainWindow::kMinimumHeight);
        window.show();
        QApplication::processEvents();
        ok &= save(window, QDir(output).filePath(QStringLiteral("main-welcome.png")));
        content.finishOnboarding();
        ok &= save(window, QDir(output).filePath(QStringLiteral("main-empty.png")));
    }
    addAccount(*store, QStringLiteral("Work org"), AIProvider::openAI, SyncStatus::current, 1);
    addAccount(*store, QStringLiteral(""), AIProvider::anthropic, SyncStatus::needsAttention, 2);
    addAccount(*store, QStringLiteral("Grok Premium+"), AIProvider::xAI, SyncStatus::offline, 3);
    addAccount(*store, QStringLiteral("Gemini Advanced"), AIProvider::gemini, SyncStatus::partial, 4);
    {
        MainWindow window(&content);
        window.resize(MainWindow::kMinimumWidth, MainWindow::kMinimumHeight);
        ok &= save(window, QDir(output).filePath(QStringLiteral("main-overview.png")));
        content.setSelection(SidebarSelection::account(store->accounts().at(1)->id()));
        ok &= save(window, QDir(output).filePath(QStringLiteral("main-account.png")));
        content.requestDelete(store->accounts().at(1)->id());
        QApplication::processEvents();
        if (window.deleteDialog()) {
            ok &= save(*window.deleteDialog(), QDir(output).filePath(QStringLiteral("delete-dialog.png")));
            window.deleteDialog()->reject();
        }
        ok &= save(*window.settingsWindow(), QDir(output).filePath(QStringLiteral("settings.png")));
    }
    for (const auto& [look, name] :
         {std::pair{Theme::Appearance::light, "light"}, std::pair{Theme::Appearance::dark, "dark"}}) {
        for (const qreal scale : {1.0, 2.0}) {
            std::unique_ptr<QWidget> gallery(blockGallery(look));
            gallery->resize(1060, 760);
            gallery->show();
            QApplication::processEvents();
            QPixmap picture(gallery->size() * scale);
            picture.setDevicePixelRatio(scale);
            gallery->render(&picture);
            const QString path = QDir(output).filePath(
                QStringLiteral("blocks-%1@%2x.png").arg(QLatin1StringView(name)).arg(scale));
            const bool written = picture.save(path);
            std::printf("%s %s\n", written ? "wrote" : "could not write", qPrintable(path));
            ok &= written;
        }
    }
    return ok ? 0 : 1;
}
