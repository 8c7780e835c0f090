#include "WidgetTree.h"
#include "providers/MockDataFactory.h"
#include "store/ProviderAccount.h"
#include "ui/AppResources.h"
#include "ui/BadgeWidget.h"
#include "ui/ElidedLabel.h"
#include "ui/MetricCardWidget.h"
#include "ui/ProviderLogoWidget.h"
#include "ui/StatusCardWidget.h"
#include "ui/SubscriptionCardWidget.h"
#include "ui/SubscriptionMatrixWidget.h"
#include "views/MatrixRowContent.h"
#include "views/SubscriptionCardContent.h"

#include "ui/SymbolIcon.h"
#include "ui/TrendChartWidget.h"
#include <QPushButton>

#include <QSignalSpy>

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QMouseEvent>
#include <QTest>

#include <algorithm>

namespace {
const QLocale kEnglish(QStringLiteral("en_US"));
const QTimeZone kUTC(QByteArrayLiteral("UTC"));
const Timestamp kNow = Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 2), QTime(9, 30), kUTC));

} // namespace

class TestBlockWidgets final : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { AppResources::load(); }

    void everySymbolHasAnIcon() {
        const QStringList symbols{"checkmark.circle.fill",
                                  "clock.badge.exclamationmark",
                                  "circle.lefthalf.filled",
                                  "wifi.slash",
                                  "lock.trianglebadge.exclamationmark",
                                  "questionmark.circle",
                                  "hourglass",
                                  "exclamationmark.triangle",
                                  "waveform.path.ecg",
                                  "eye",
                                  "exclamationmark.triangle.fill",
                                  "minus.circle",
                                  "wand.and.stars",
                                  "pencil",
                                  "network",
                                  "message.fill",
                                  "arrow.up.right.circle.fill",
                                  "textformat.123",
                                  "creditcard.fill",
                                  "dollarsign.circle.fill",
                                  "square.grid.2x2.fill",
                                  "arrow.clockwise",
                                  "tray",
                                  "rectangle.3.group.fill",
                                  "plus",
                                  "trash",
                                  "circle.hexagongrid.fill",
                                  "sparkles",
                                  "bolt.horizontal.circle.fill",
                                  "diamond.fill",
                                  "cpu",
                                  "chart.xyaxis.line"};
        for (const QString& symbol : symbols) {
            const QString resource = SymbolIcon::resource(symbol);
            QVERIFY2(QFile::exists(resource), qPrintable(symbol));
            // Drawn, tinted, and not blank.
            const QImage image = SymbolIcon::pixmap(symbol, Qt::red, 16, 2.0).toImage();
            QCOMPARE(image.size(), QSize(32, 32));
            int inked = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    inked += qAlpha(image.pixel(x, y)) > 0 ? 1 : 0;
                }
            }
            QVERIFY2(inked > 10, qPrintable(symbol));
        }
        QVERIFY(SymbolIcon::resource(QStringLiteral("no.such.symbol")).isEmpty());
        QVERIFY(
            !SymbolIcon::pixmap(QStringLiteral("no.such.symbol"), Qt::red, 16, 1.0).isNull()); // a fallback
    }

    void providerLogosAreBundled() {
        for (const char* raw : {"openai", "anthropic", "xai", "gemini"}) {
            const QImage logo(QStringLiteral(":/ProviderIcons/%1.png").arg(QLatin1StringView(raw)));
            QVERIFY2(!logo.isNull(), raw);
            QCOMPARE(logo.size(), QSize(128, 128));
        }
        QVERIFY(!AppResources::fontFamily().isEmpty());
        QCOMPARE(AppResources::fontFamily(), QStringLiteral("Inter"));
    }

    void badgesAreNamedAsTheyRead() {
        const BadgeWidget pulse(Badge::pulse(UsageHealth::urgent));
        QCOMPARE(pulse.accessibleName(),
                 QStringLiteral("Usage pulse: ") + UsageHealth(UsageHealth::urgent).title());
        const BadgeWidget source(Badge::source(UsageSource::officialAPI));
        QCOMPARE(source.accessibleName(),
                 QStringLiteral("Data source: ") + UsageSource(UsageSource::officialAPI).title());
        const BadgeWidget dot(Badge::dot(UsageHealth::watch));
        QCOMPARE(dot.accessibleName(), UsageHealth(UsageHealth::watch).title());
        QVERIFY(dot.sizeHint().width() < pulse.sizeHint().width());
    }

    void metricCardShowsItsContent() {
        UsageWindow window{.id = QStringLiteral("w"),
                           .title = QStringLiteral("Requests / minute"),
                           .unit = UsageUnit::requests,
                           .used = 120,
                           .limit = 100,
                           .resetAt = kNow.addingSeconds(2520),
                           .note = QStringLiteral("Rate-limit header when available")};
        MetricCardWidget card(MetricCardContent::make(window, kNow, kEnglish, kUTC));
        card.resize(360, 220);
        card.show();
        const QStringList texts = childAccessibleNames(card);
        for (const QString& expected :
             {QStringLiteral("Requests / minute"), QStringLiteral("120 requests"),
              QStringLiteral("of 100 requests"), QStringLiteral("20 requests over"), QStringLiteral("in 42m"),
              QStringLiteral("Rate-limit header when available")}) {
            QVERIFY2(texts.contains(expected), qPrintable(expected + u" in " + texts.join(u'|')));
        }
        QVERIFY(card.findChild<QWidget*>(QStringLiteral("metricBar"))->isVisibleTo(&card));
    }

    void metricCardWithNothingReported() {
        const UsageWindow window{
            .id = QStringLiteral("w"), .title = QStringLiteral("Credits"), .unit = UsageUnit::credits};
        MetricCardWidget card(MetricCardContent::make(window, kNow, kEnglish, kUTC));
        card.show();
        const QStringList texts = childAccessibleNames(card);
        QVERIFY(texts.contains(QStringLiteral("Not available from provider")));
        QVERIFY(texts.contains(QStringLiteral("Limit not reported")));
        QVERIFY(!card.findChild<QWidget*>(QStringLiteral("metricBar"))->isVisibleTo(&card));
        for (const QString& text : texts) {
            QVERIFY2(!text.contains(u'0'), qPrintable(text));
        }
    }

    void aLongLabelNeitherWidensNorLosesItsName() {
        const QString label(300, u'W');
        const UsageWindow window{
            .id = QStringLiteral("w"), .title = label, .unit = UsageUnit::items, .used = 1};
        MetricCardWidget card(MetricCardContent::make(window, kNow, kEnglish, kUTC));
        QVERIFY(card.sizeHint().width() < 600);
        card.resize(300, 200);
        card.show();
        const auto* title = card.findChild<ElidedLabel*>(QStringLiteral("metricTitle"));
        QCOMPARE(title->accessibleName(), label); // the whole text for a screen reader
        // A window's title carries meaning: it wraps onto more lines, whole, and the card
        // grows downwards, not sideways.
        QCOMPARE(title->text(), label);
        QVERIFY(title->height() > 3 * title->fontMetrics().height());
        QVERIFY(!title->isCut());
        QCOMPARE(card.width(), 300);
    }

    void subscriptionCardShowsItsPartsByName() {
        ProviderAccount account(ProviderAccount::Init{.provider = AIProvider::xAI,
                                                      .label = QStringLiteral("Grok · Labs"),
                                                      .accountKind = AccountKind::api,
                                                      .connectionMode = ConnectionMode::mock});
        account.setSnapshot(MockDataFactory::snapshot(account, kNow));
        account.setAgentCount(1);
        SubscriptionCardWidget card(SubscriptionCardContent::make(account, kNow, kEnglish, kUTC), {});
        card.resize(560, 700);
        card.show();
        const QStringList texts = childAccessibleNames(card);
        for (const QString& expected :
             {QStringLiteral("Grok · Labs"), QStringLiteral("1 agents"), QStringLiteral("Short term"),
              QStringLiteral("Weekly"), QStringLiteral("Not available from provider"),
              QStringLiteral("Billing-only signal — no short-term or weekly quota is published"),
              QStringLiteral("Other tracked signals"), QStringLiteral("Historical model usage"),
              QStringLiteral("Daily trend"), QStringLiteral("Next reset"),
              QStringLiteral("Recent usage trend")}) {
            QVERIFY2(texts.contains(expected), qPrintable(expected + u" in " + texts.join(u'|')));
        }
        // The logo is decoration: the provider's name is in the line under the account's.
        QVERIFY(std::any_of(texts.cbegin(), texts.cend(), [](const QString& text) {
            return text.startsWith(QStringLiteral("xAI / Grok · #"));
        }));
        QVERIFY(std::any_of(texts.cbegin(), texts.cend(), [](const QString& text) {
            return text.startsWith(QStringLiteral("Usage pulse: "));
        }));
    }

    void matrixRowsSelectTheirAccount() {
        ProviderAccount first(ProviderAccount::Init{.provider = AIProvider::openAI,
                                                    .label = QStringLiteral("First"),
                                                    .accountKind = AccountKind::api});
        ProviderAccount second(ProviderAccount::Init{.provider = AIProvider::gemini,
                                                     .label = QStringLiteral("Second"),
                                                     .accountKind = AccountKind::api});
        SubscriptionMatrixWidget matrix(
            {MatrixRowContent::make(first, kNow, kEnglish), MatrixRowContent::make(second, kNow, kEnglish)});
        matrix.resize(900, 300);
        matrix.show();
        const QStringList texts = childAccessibleNames(matrix);
        for (const QString& column : MatrixRowContent::kColumns) {
            QVERIFY(texts.contains(column));
        }
        QSignalSpy selected(&matrix, &SubscriptionMatrixWidget::selected);
        QWidget* row = nullptr;
        for (QWidget* child : matrix.findChildren<QWidget*>()) {
            if (child->accessibleName() == QStringLiteral("Second") &&
                child->focusPolicy() == Qt::StrongFocus) {
                row = child;
            }
        }
        QVERIFY(row);
        QTest::mouseClick(row, Qt::LeftButton, {}, QPoint(10, 10));
        QCOMPARE(selected.count(), 1);
        QCOMPARE(selected.first().first().toUuid(), second.id());
        QTest::keyClick(row, Qt::Key_Return);
        QCOMPARE(selected.count(), 2);
        QTest::keyClick(row, Qt::Key_Space);
        QCOMPARE(selected.count(), 3);
        // A press that began elsewhere and merely ends on the row opens nothing.
        QWidget* firstRow = nullptr;
        for (QWidget* child : matrix.findChildren<QWidget*>()) {
            if (child->accessibleName() == QStringLiteral("First") &&
                child->focusPolicy() == Qt::StrongFocus) {
                firstRow = child;
            }
        }
        QTest::mousePress(firstRow, Qt::LeftButton, {}, QPoint(10, 10));
        QMouseEvent release(QEvent::MouseButtonRelease, QPointF(10, 10), row->mapToGlobal(QPointF(10, 10)),
                            Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(row, &release);
        QCOMPARE(selected.count(), 3);
        // A screen reader meets a button named by the account, its status line as description,
        // and presses it.
        QAccessibleInterface* node = QAccessible::queryAccessibleInterface(row);
        QCOMPARE(node->role(), QAccessible::Button);
        QCOMPARE(node->text(QAccessible::Name), QStringLiteral("Second"));
        QCOMPARE(node->text(QAccessible::Description),
                 MatrixRowContent::make(second, kNow, kEnglish).statusLine());
        QVERIFY(node->text(QAccessible::Description).startsWith(QStringLiteral("Gemini · #")));
        QVERIFY(node->actionInterface()->actionNames().contains(QAccessibleActionInterface::pressAction()));
        node->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QTRY_COMPARE(selected.count(), 4);
        QCOMPARE(selected.last().first().toUuid(), second.id());
    }

    void logosAreDecorationUnlessNamedAndXAIKeepsItsColours() {
        ProviderLogoWidget logo(AIProvider::anthropic, 22);
        logo.show();
        QAccessibleInterface* node = QAccessible::queryAccessibleInterface(&logo);
        QCOMPARE(node->role(), QAccessible::Graphic);
        QVERIFY(node->state().invisible); // beside the provider's name, it says nothing
        logo.setAccessibleName(QStringLiteral("Anthropic / Claude"));
        QVERIFY(!node->state().invisible); // named, where it stands alone
        QCOMPARE(node->text(QAccessible::Name), QStringLiteral("Anthropic / Claude"));
        QCOMPARE(logo.sizeHint(), QSize(22, 22));
        QVERIFY(ProviderLogoWidget::isTemplate(AIProvider::openAI));
        QVERIFY(!ProviderLogoWidget::isTemplate(AIProvider::xAI));
        QCOMPARE(ProviderLogoWidget::logoResource(AIProvider::gemini),
                 QStringLiteral(":/ProviderIcons/gemini.png"));
    }

    void emptyStateButtonOnlyWithTitleAndAction() {
        int pressed = 0;
        StatusCardWidget both(StatusCardsContent::emptyState(QStringLiteral("No accounts yet"),
                                                             QStringLiteral("Add one."),
                                                             QStringLiteral("Add Account"), true),
                              [&pressed] { ++pressed; });
        QVERIFY(both.actionButton());
        QCOMPARE(both.actionButton()->text(), QStringLiteral("Add Account"));
        QTest::mouseClick(both.actionButton(), Qt::LeftButton);
        QCOMPARE(pressed, 1);
        const StatusCardWidget titleOnly(StatusCardsContent::emptyState(QStringLiteral("t"),
                                                                        QStringLiteral("m"),
                                                                        QStringLiteral("Go"), false),
                                         {});
        QVERIFY(!titleOnly.actionButton());
        const StatusCardWidget actionOnly(
            StatusCardsContent::emptyState(QStringLiteral("t"), QStringLiteral("m"), std::nullopt, true),
            [] {});
        QVERIFY(!actionOnly.actionButton());
        both.show();
        QVERIFY(childAccessibleNames(both).contains(QStringLiteral("No accounts yet")));
        QVERIFY(childAccessibleNames(both).contains(QStringLiteral("Add one.")));
    }

    void unplacedCardsShowTheirTexts() {
        ProviderAccount account(ProviderAccount::Init{.provider = AIProvider::anthropic,
                                                      .label = QStringLiteral("Claude"),
                                                      .accountKind = AccountKind::consumer});
        StatusCardWidget summary(StatusCardsContent::accountSummary(account, kNow, kEnglish, kUTC));
        summary.show();
        QVERIFY(childAccessibleNames(summary).contains(
            QStringLiteral("No snapshot yet — refresh or add manual data.")));
        const UsageWindow window{.id = QStringLiteral("w"),
                                 .title = QStringLiteral("Tokens"),
                                 .unit = UsageUnit::tokens,
                                 .used = 3};
        StatusCardWidget cell(StatusCardsContent::metricCell(window, kNow, kEnglish));
        cell.show();
        QVERIFY(childAccessibleNames(cell).contains(QStringLiteral("Limit not reported")));
        QVERIFY(childAccessibleNames(cell).contains(QStringLiteral("3 tokens")));
    }

    void chartsAreNamed() {
        const TrendChartWidget spark(TrendChartContent::sparkline(
            {UsagePoint{.date = kNow, .value = 1, .unit = UsageUnit::requests}}));
        QCOMPARE(spark.accessibleName(), QStringLiteral("Recent usage trend"));
        QCOMPARE(spark.sizeHint(), QSize(150, 44));
        // What it shows is read out after its name.
        const TrendChartWidget trend(TrendChartContent::trend(
            {UsagePoint{.date = kNow.addingSeconds(-86400), .value = 90000, .unit = UsageUnit::tokens},
             UsagePoint{.date = kNow, .value = 100000, .unit = UsageUnit::tokens}},
            QTimeZone(QByteArrayLiteral("UTC")), kEnglish));
        QAccessibleInterface* node =
            QAccessible::queryAccessibleInterface(const_cast<TrendChartWidget*>(&trend));
        QCOMPARE(node->text(QAccessible::Name), QStringLiteral("Usage"));
        QVERIFY(node->text(QAccessible::Description).contains(QStringLiteral("the last value is 100,000")));
        const TrendChartWidget empty(TrendChartContent::trend({}));
        QCOMPARE(empty.accessibleName(), QStringLiteral("No history available"));
        QCOMPARE(empty.height(), 150);
    }
};

QTEST_MAIN(TestBlockWidgets)
#include "tst_blockwidgets.moc"
