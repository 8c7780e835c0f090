#include "model/ProviderConnectionMetadata.h"
#include "store/ProviderAuthentication.h"

#include <QTest>

namespace {
UsageWindow window(const QString& id, std::optional<double> used, std::optional<double> limit,
                   std::optional<QString> model = std::nullopt) {
    return UsageWindow{.id = id,
                       .title = id,
                       .unit = UsageUnit::requests,
                       .horizon = UsageHorizon::shortTerm,
                       .modelName = std::move(model),
                       .used = used,
                       .limit = limit};
}

UsageSnapshot snapshotOf(QList<UsageWindow> windows, Timestamp capturedAt = Timestamp(500)) {
    return UsageSnapshot{.source = UsageSource::officialAPI,
                         .capturedAt = capturedAt,
                         .windows = std::move(windows),
                         .history = {},
                         .warnings = {}};
}

ProviderConnectionMetadata metadataWith(QList<UsageWindow> windows) {
    return ProviderConnectionMetadata{.windows = std::move(windows),
                                      .sourceDescription = QStringLiteral("OpenAI organization API"),
                                      .notes = {QStringLiteral("3 projects")},
                                      .capturedAt = Timestamp(100)};
}
} // namespace

class TestConnectionMetadata final : public QObject {
    Q_OBJECT

private slots:
    void browserURLs_data() {
        QTest::addColumn<QString>("provider");
        QTest::addColumn<QString>("url");
        QTest::newRow("openai") << "openai"
                                << "https://platform.openai.com/settings/organization/api-keys";
        QTest::newRow("anthropic") << "anthropic"
                                   << "https://claude.ai/";
        QTest::newRow("xai") << "xai"
                             << "https://grok.com/";
        QTest::newRow("gemini") << "gemini"
                                << "https://gemini.google.com/";
    }
    void browserURLs() {
        QFETCH(QString, provider);
        QFETCH(QString, url);
        const auto found = ProviderAuthentication::browserURL(*AIProvider::fromRawValue(provider));
        QVERIFY(found.has_value());
        QVERIFY(found->isValid());
        QCOMPARE(found->scheme(), QStringLiteral("https"));
        QCOMPARE(found->toString(), url);
    }

    void openAIPageIsTheKeySettings() {
        QCOMPARE(ProviderAuthentication::browserURL(AIProvider::openAI)->path(),
                 QStringLiteral("/settings/organization/api-keys"));
    }

    void securityNote() {
        QCOMPARE(ProviderAuthentication::securityNote,
                 QStringLiteral(
                     "For security, the app never reads browser cookies, copies hidden tokens, or treats a "
                     "provider website visit as a live connection. This build has a supported live "
                     "connector only for OpenAI Platform API keys; other providers use manual tracking "
                     "until a vendor-approved integration is available."));
    }

    void noWindowsNoInitialSnapshot() {
        ProviderConnectionMetadata metadata = metadataWith({});
        metadata.displayName = QStringLiteral("Acme");
        metadata.modelScope = QStringLiteral("gpt-4o");
        QVERIFY(!metadata.initialSnapshot());
    }

    void initialSnapshotCarriesTheDetectedLimits() {
        const ProviderConnectionMetadata metadata = metadataWith(
            {window(QStringLiteral("gpt-4o-requests"), std::nullopt, 500, QStringLiteral("gpt-4o"))});
        const auto snapshot = metadata.initialSnapshot();
        QVERIFY(snapshot);
        QCOMPARE(snapshot->source, UsageSource(UsageSource::officialAPI));
        QCOMPARE(snapshot->capturedAt, Timestamp(100));
        QCOMPARE(snapshot->windows, metadata.windows);
        QVERIFY(snapshot->history.isEmpty() && snapshot->billingHistory.isEmpty() &&
                snapshot->modelSummaries.isEmpty());
        QCOMPARE(snapshot->warnings, QStringList{QStringLiteral(
                                         "Limits detected during connection. Refresh for current usage.")});
        QVERIFY(snapshot->isPartial());
    }

    void mergeWithoutLimitedWindowsKeepsWindowsAndTakesTheTime() {
        const ProviderConnectionMetadata metadata = metadataWith({window(QStringLiteral("a"), 1, 10)});
        const ProviderConnectionMetadata merged = metadata.merging(
            snapshotOf({window(QStringLiteral("b"), 5, std::nullopt)}, Timestamp(900)), AIProvider::openAI);
        QCOMPARE(merged.windows, metadata.windows);
        QCOMPARE(merged.capturedAt, Timestamp(900));
        QCOMPARE(metadata.capturedAt, Timestamp(100)); // the receiver is unchanged
    }

    void usedOnlyWindowDoesNotReplace() {
        const ProviderConnectionMetadata metadata = metadataWith({window(QStringLiteral("a"), 1, 10)});
        const ProviderConnectionMetadata merged =
            metadata.merging(snapshotOf({window(QStringLiteral("a"), 9, std::nullopt)}), AIProvider::openAI);
        QCOMPARE(merged.windows, metadata.windows);
    }

    void limitedWindowsReplaceInPlaceOrJoin() {
        const ProviderConnectionMetadata metadata =
            metadataWith({window(QStringLiteral("a"), 1, 10), window(QStringLiteral("b"), 2, 20),
                          window(QStringLiteral("a"), 3, 30)});
        const ProviderConnectionMetadata merged = metadata.merging(
            snapshotOf({window(QStringLiteral("c"), 7, 70), window(QStringLiteral("a"), 5, 50)}),
            AIProvider::openAI);
        QCOMPARE(merged.windows.size(), 4);
        QCOMPARE(merged.windows[0], window(QStringLiteral("a"), 5, 50)); // the first "a" replaced
        QCOMPARE(merged.windows[1],
                 window(QStringLiteral("b"), 2, 20)); // not reported: kept with old numbers
        QCOMPARE(merged.windows[2], window(QStringLiteral("a"), 3, 30));
        QCOMPARE(merged.windows[3], window(QStringLiteral("c"), 7, 70));
    }

    void modelScopeFromAllWindows() {
        const ProviderConnectionMetadata metadata = metadataWith({});
        const UsageSnapshot snapshot =
            snapshotOf({window(QStringLiteral("1"), 1, std::nullopt, QStringLiteral("o3-mini")),
                        window(QStringLiteral("2"), 1, 10, QStringLiteral("gpt-4o")),
                        window(QStringLiteral("3"), 1, 10, QStringLiteral("o3-mini")),
                        window(QStringLiteral("4"), 1, 10, QString())});
        QCOMPARE(metadata.merging(snapshot, AIProvider::openAI).modelScope,
                 std::optional<QString>(QStringLiteral("gpt-4o, o3-mini")));

        ProviderConnectionMetadata emptyScope = metadataWith({});
        emptyScope.modelScope = QString();
        QCOMPARE(emptyScope.merging(snapshot, AIProvider::openAI).modelScope,
                 std::optional<QString>(QString()));

        QVERIFY(!metadata.merging(snapshotOf({window(QStringLiteral("x"), 1, 2)}), AIProvider::openAI)
                     .modelScope);
    }

    void displayNameFallsBackOnlyForOpenAI() {
        const ProviderConnectionMetadata metadata = metadataWith({});
        QCOMPARE(metadata.merging(snapshotOf({}), AIProvider::openAI).displayName,
                 std::optional<QString>(QStringLiteral("OpenAI API organization")));
        QVERIFY(!metadata.merging(snapshotOf({}), AIProvider::anthropic).displayName);
        ProviderConnectionMetadata named = metadataWith({});
        named.displayName = QStringLiteral("Acme Research");
        QCOMPARE(named.merging(snapshotOf({}), AIProvider::openAI).displayName,
                 std::optional<QString>(QStringLiteral("Acme Research")));
    }

    void mergeKeepsKnownFacts() {
        ProviderConnectionMetadata metadata = metadataWith({});
        metadata.identityDetail = QStringLiteral("org-1");
        metadata.connectionIdentifier = QStringLiteral("proj_1");
        metadata.modelScope = QStringLiteral("gpt-4o");
        const ProviderConnectionMetadata merged = metadata.merging(
            snapshotOf({window(QStringLiteral("w"), 1, 2, QStringLiteral("o3"))}), AIProvider::openAI);
        QCOMPARE(merged.identityDetail, metadata.identityDetail);
        QCOMPARE(merged.connectionIdentifier, metadata.connectionIdentifier);
        QCOMPARE(merged.modelScope, metadata.modelScope);
        QCOMPARE(merged.sourceDescription, metadata.sourceDescription);
        QCOMPARE(merged.notes, metadata.notes);
    }
};

QTEST_GUILESS_MAIN(TestConnectionMetadata)
#include "tst_connectionmetadata.moc"
