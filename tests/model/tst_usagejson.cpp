#include "model/UsageJson.h"

#include "ModelFixtures.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <limits>

namespace {

const QByteArray kWindow =
    R"({"id":"w","title":"Requests","unit":"requests","horizon":"shortTerm","modelName":"gpt","agentLabel":"bot",)"
    R"("used":1,"limit":2,"reportedRemaining":1,"resetAt":3.5,"note":"n"})";
const QByteArray kPoint = R"({"date":1.5,"value":2,"unit":"tokens","modelName":"m","agentLabel":"a"})";
const QByteArray kSummary = R"({"modelName":"m","windows":[)" + kWindow + "]}";
const QByteArray kBudget =
    R"({"id":"b","name":"B","unit":"credits","shortUsed":1,"shortLimit":2,"weeklyUsed":3,"weeklyLimit":4})";
const QByteArray kSnapshot = R"({"source":"officialAPI","capturedAt":10.25,"windows":[)" + kWindow +
                             R"(],"history":[)" + kPoint + R"(],"billingHistory":[)" + kPoint +
                             R"(],"warnings":["x"],"modelSummaries":[)" + kSummary + "]}";
const QByteArray kMetadata =
    R"({"displayName":"d","identityDetail":"i","connectionIdentifier":"c","modelScope":"m",)"
    R"("windows":[)" +
    kWindow + R"(],"sourceDescription":"s","notes":["n"],"capturedAt":5})";

QByteArray baseFor(const QString& record) {
    if (record == u"UsageWindow") {
        return kWindow;
    }
    if (record == u"UsagePoint") {
        return kPoint;
    }
    if (record == u"UsageModelSummary") {
        return kSummary;
    }
    if (record == u"AgentBudget") {
        return kBudget;
    }
    if (record == u"UsageSnapshot") {
        return kSnapshot;
    }
    return kMetadata;
}

// Decodes as the named record and writes it again; the failure reason on failure.
JsonResult<QByteArray> reencode(const QString& record, QByteArrayView json) {
    const auto again = [](auto decoded) {
        if (!decoded) {
            return JsonResult<QByteArray>::failure(decoded.error());
        }
        return UsageJson::encode(decoded.value());
    };
    if (record == u"UsageWindow") {
        return again(UsageJson::decode<UsageWindow>(json));
    }
    if (record == u"UsagePoint") {
        return again(UsageJson::decode<UsagePoint>(json));
    }
    if (record == u"UsageModelSummary") {
        return again(UsageJson::decode<UsageModelSummary>(json));
    }
    if (record == u"AgentBudget") {
        return again(UsageJson::decode<AgentBudget>(json));
    }
    if (record == u"UsageSnapshot") {
        return again(UsageJson::decode<UsageSnapshot>(json));
    }
    return again(UsageJson::decode<ProviderConnectionMetadata>(json));
}

QByteArray withKey(const QByteArray& json, const QString& key, const QJsonValue& value, bool remove) {
    QJsonObject object = QJsonDocument::fromJson(json).object();
    if (remove) {
        object.remove(key);
    } else {
        object.insert(key, value);
    }
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

UsageWindow fullWindow() {
    return UsageWindow{.id = QStringLiteral("requests-rate-window"),
                       .title = QStringLiteral("Requests per minute"),
                       .unit = UsageUnit::requests,
                       .horizon = UsageHorizon::shortTerm,
                       .modelName = QStringLiteral("gpt-4o-mini"),
                       .agentLabel = QStringLiteral("crawler"),
                       .used = 12,
                       .limit = 60,
                       .reportedRemaining = 48,
                       .resetAt = Timestamp(785000000.125),
                       .note = QStringLiteral("From x-ratelimit headers")};
}

} // namespace

class TestUsageJson final : public QObject {
    Q_OBJECT

private slots:
    // ---- key by key: what a missing or null key does ----
    void missingOrNullKey_data() {
        QTest::addColumn<QString>("record");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("outcome"); // error, absent, inferred, empty
        const auto rows = [](const char* record,
                             std::initializer_list<std::pair<const char*, const char*>> keys) {
            for (const auto& [key, outcome] : keys) {
                for (const char* form : {"missing", "null"}) {
                    QTest::addRow("%s.%s %s", record, key, form)
                        << QString::fromLatin1(record) << QString::fromLatin1(key)
                        << QString::fromLatin1(outcome);
                }
            }
        };
        rows("UsageWindow", {{"id", "error"},
                             {"title", "error"},
                             {"unit", "error"},
                             {"horizon", "inferred"},
                             {"modelName", "absent"},
                             {"agentLabel", "absent"},
                             {"used", "absent"},
                             {"limit", "absent"},
                             {"reportedRemaining", "absent"},
                             {"resetAt", "absent"},
                             {"note", "absent"}});
        rows("UsagePoint", {{"date", "error"},
                            {"value", "error"},
                            {"unit", "error"},
                            {"modelName", "absent"},
                            {"agentLabel", "absent"}});
        rows("UsageModelSummary", {{"modelName", "error"}, {"windows", "error"}});
        rows("AgentBudget", {{"id", "error"},
                             {"name", "error"},
                             {"unit", "error"},
                             {"shortUsed", "absent"},
                             {"shortLimit", "absent"},
                             {"weeklyUsed", "absent"},
                             {"weeklyLimit", "absent"}});
        rows("UsageSnapshot", {{"source", "error"},
                               {"capturedAt", "error"},
                               {"windows", "error"},
                               {"history", "error"},
                               {"billingHistory", "empty"},
                               {"warnings", "error"},
                               {"modelSummaries", "empty"}});
        rows("ProviderConnectionMetadata", {{"displayName", "absent"},
                                            {"identityDetail", "absent"},
                                            {"connectionIdentifier", "absent"},
                                            {"modelScope", "absent"},
                                            {"windows", "error"},
                                            {"sourceDescription", "error"},
                                            {"notes", "error"},
                                            {"capturedAt", "error"}});
    }
    void missingOrNullKey() {
        QFETCH(QString, record);
        QFETCH(QString, key);
        QFETCH(QString, outcome);
        const bool remove = QByteArray(QTest::currentDataTag()).endsWith("missing");
        const QByteArray json = withKey(baseFor(record), key, QJsonValue::Null, remove);
        const JsonResult<QByteArray> result = reencode(record, json);

        if (outcome == u"error") {
            QVERIFY2(!result.ok(), json.constData());
            QVERIFY2(result.error().contains(key), qPrintable(result.error()));
            return;
        }
        QVERIFY2(result.ok(), qPrintable(result.error()));
        const QJsonObject written = QJsonDocument::fromJson(result.value()).object();
        if (outcome == u"absent") {
            QVERIFY(!written.contains(key)); // optional keys are written only when present
        } else if (outcome == u"empty") {
            QCOMPARE(written.value(key).toArray().size(), 0);
        } else if (outcome == u"inferred") {
            // "w Requests" names no horizon word.
            QCOMPARE(written.value(key).toString(), QStringLiteral("unspecified"));
        }
    }

    // ---- values of the wrong kind ----
    void badValue_data() {
        QTest::addColumn<QString>("record");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QByteArray>("value");
        QTest::newRow("unknown horizon") << "UsageWindow"
                                         << "horizon" << QByteArray(R"("monthly")");
        QTest::newRow("horizon of wrong case") << "UsageWindow"
                                               << "horizon" << QByteArray(R"("ShortTerm")");
        QTest::newRow("horizon as a number") << "UsageWindow"
                                             << "horizon" << QByteArray("1");
        QTest::newRow("unknown unit") << "UsageWindow"
                                      << "unit" << QByteArray(R"("USD")");
        QTest::newRow("id as a number") << "UsageWindow"
                                        << "id" << QByteArray("7");
        QTest::newRow("used as a string") << "UsageWindow"
                                          << "used" << QByteArray(R"("5")");
        QTest::newRow("limit as a bool") << "UsageWindow"
                                         << "limit" << QByteArray("true");
        QTest::newRow("resetAt as date text") << "UsageWindow"
                                              << "resetAt" << QByteArray(R"("2026-01-01")");
        QTest::newRow("note as an object") << "UsageWindow"
                                           << "note" << QByteArray("{}");
        QTest::newRow("point value as a string") << "UsagePoint"
                                                 << "value" << QByteArray(R"("1")");
        QTest::newRow("point unit unknown") << "UsagePoint"
                                            << "unit" << QByteArray(R"("bytes")");
        QTest::newRow("summary windows as an object") << "UsageModelSummary"
                                                      << "windows" << QByteArray("{}");
        QTest::newRow("budget unit unknown") << "AgentBudget"
                                             << "unit" << QByteArray(R"("")");
        QTest::newRow("unknown source") << "UsageSnapshot"
                                        << "source" << QByteArray(R"("scraped")");
        QTest::newRow("warnings as a string") << "UsageSnapshot"
                                              << "warnings" << QByteArray(R"("x")");
        QTest::newRow("warning that is a number") << "UsageSnapshot"
                                                  << "warnings" << QByteArray("[1]");
        QTest::newRow("warning that is null") << "UsageSnapshot"
                                              << "warnings" << QByteArray("[null]");
        QTest::newRow("billingHistory as an object") << "UsageSnapshot"
                                                     << "billingHistory" << QByteArray("{}");
        QTest::newRow("a bad history point")
            << "UsageSnapshot"
            << "history" << QByteArray(R"([{"date":1,"value":1,"unit":"tokens"},{"date":2}])");
        QTest::newRow("a null window") << "UsageSnapshot"
                                       << "windows" << QByteArray("[null]");
        QTest::newRow("a summary with a bad window")
            << "UsageSnapshot"
            << "modelSummaries"
            << QByteArray(R"([{"modelName":"m","windows":[{"id":"a","title":"b","unit":"nope"}]}])");
        QTest::newRow("notes as a string") << "ProviderConnectionMetadata"
                                           << "notes" << QByteArray(R"("n")");
        QTest::newRow("capturedAt as text") << "ProviderConnectionMetadata"
                                            << "capturedAt" << QByteArray(R"("now")");
    }
    void badValue() {
        QFETCH(QString, record);
        QFETCH(QString, key);
        QFETCH(QByteArray, value);
        QJsonParseError error{};
        const QJsonValue replacement = QJsonDocument::fromJson("[" + value + "]", &error).array().at(0);
        QCOMPARE(error.error, QJsonParseError::NoError);
        const QByteArray json = withKey(baseFor(record), key, replacement, false);
        const JsonResult<QByteArray> result = reencode(record, json);
        QVERIFY2(!result.ok(), json.constData());
        QVERIFY(!result.error().isEmpty());
    }

    void baseObjectsDecode_data() {
        QTest::addColumn<QString>("record");
        for (const char* record : {"UsageWindow", "UsagePoint", "UsageModelSummary", "AgentBudget",
                                   "UsageSnapshot", "ProviderConnectionMetadata"}) {
            QTest::newRow(record) << QString::fromLatin1(record);
        }
    }
    void baseObjectsDecode() {
        QFETCH(QString, record);
        const JsonResult<QByteArray> result = reencode(record, baseFor(record));
        QVERIFY2(result.ok(), qPrintable(result.error()));
        // Written back, the same keys and values, in the same order.
        QCOMPARE(result.value(), baseFor(record));
    }

    // ---- the edge cases of the format ----
    void windowWithoutHorizonInfersAndWritesIt() {
        const auto rate = UsageJson::decode<UsageWindow>(
            R"({"id":"requests-rate-window","title":"Requests","unit":"requests"})");
        QVERIFY(rate);
        QCOMPARE(rate->horizon, UsageHorizon(UsageHorizon::shortTerm));
        QCOMPARE(
            UsageJson::encode(rate.value()).value(),
            QByteArray(
                R"({"id":"requests-rate-window","title":"Requests","unit":"requests","horizon":"shortTerm"})"));

        const auto weekHour =
            UsageJson::decode<UsageWindow>(R"({"id":"week-cap","title":"Per hour","unit":"messages"})");
        QVERIFY(weekHour);
        QCOMPARE(weekHour->horizon, UsageHorizon(UsageHorizon::shortTerm));

        const auto nullHorizon = UsageJson::decode<UsageWindow>(
            R"({"id":"weekly","title":"Budget","unit":"credits","horizon":null})");
        QVERIFY(nullHorizon);
        QCOMPARE(nullHorizon->horizon, UsageHorizon(UsageHorizon::weekly));
    }

    void presentHorizonIsNeverInferred() {
        // The stored horizon wins even when the words say otherwise.
        const auto w = UsageJson::decode<UsageWindow>(
            R"({"id":"requests-rate-window","title":"Requests","unit":"requests","horizon":"billing"})");
        QVERIFY(w);
        QCOMPARE(w->horizon, UsageHorizon(UsageHorizon::billing));
    }

    void snapshotWithoutTheTwoToleratedLists() {
        const auto s = UsageJson::decode<UsageSnapshot>(
            R"({"source":"manual","capturedAt":0,"windows":[],"history":[],"warnings":[]})");
        QVERIFY2(s, qPrintable(s.error()));
        QVERIFY(s->billingHistory.isEmpty());
        QVERIFY(s->modelSummaries.isEmpty());
        const auto withoutWarnings = UsageJson::decode<UsageSnapshot>(
            R"({"source":"manual","capturedAt":0,"windows":[],"history":[]})");
        QVERIFY(!withoutWarnings);
    }

    void unknownKeysAreIgnored() {
        const auto w = UsageJson::decode<UsageWindow>(
            R"({"id":"a","title":"b","unit":"items","extra":{"deep":[1,2,{"x":null}]},"used":3,"Used":"no"})");
        QVERIFY2(w, qPrintable(w.error()));
        QCOMPARE(w->used, std::optional<double>(3));
        QVERIFY(!UsageJson::encode(w.value()).value().contains("extra"));
    }

    void listFailsWholeWhenOneElementFails() {
        const QByteArray good = R"({"id":"a","title":"b","unit":"items"})";
        const QByteArray bad = R"({"id":"a","title":"b","unit":"gallons"})";
        QVERIFY(UsageJson::decode<QList<UsageWindow>>(QByteArray("[" + good + "," + good + "]")));
        const auto mixed =
            UsageJson::decode<QList<UsageWindow>>(QByteArray("[" + good + "," + bad + "," + good + "]"));
        QVERIFY(!mixed);
        QVERIFY2(mixed.error().contains(u"[1]"), qPrintable(mixed.error()));

        const auto snapshot = UsageJson::decode<UsageSnapshot>(
            QByteArray(R"({"source":"mock","capturedAt":0,"windows":[)" + good + "," + bad +
                       R"(],"history":[],"warnings":[]})"));
        QVERIFY(!snapshot);
    }

    void metadataWithoutRequiredKeysFails() {
        for (const char* key : {"windows", "sourceDescription", "notes", "capturedAt"}) {
            const QByteArray json = withKey(kMetadata, QString::fromLatin1(key), QJsonValue(), true);
            QVERIFY2(!UsageJson::decode<ProviderConnectionMetadata>(json), key);
        }
    }

    void malformedDocuments_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("blank") << QByteArray("  \n");
        QTest::newRow("null") << QByteArray("null");
        QTest::newRow("array instead of object") << QByteArray("[]");
        QTest::newRow("truncated") << kSnapshot.left(kSnapshot.size() / 2);
        QTest::newRow("trailing garbage") << kSnapshot + "}";
        QTest::newRow("two documents") << kSnapshot + kSnapshot;
        QTest::newRow("single quotes") << QByteArray("{'source':'mock'}");
        QTest::newRow("invalid UTF-8")
            << QByteArray(R"({"source":"mock","capturedAt":0,"windows":[],"history":[],)"
                          R"("warnings":["\xff\xfe"]})");
        QTest::newRow("NaN literal") << QByteArray(
            R"({"source":"mock","capturedAt":NaN,"windows":[],"history":[],)"
            R"("warnings":[]})");
        QTest::newRow("number out of range")
            << QByteArray(R"({"source":"mock","capturedAt":1e400,"windows":[],)"
                          R"("history":[],"warnings":[]})");
    }
    void malformedDocuments() {
        QFETCH(QByteArray, json);
        const auto result = UsageJson::decode<UsageSnapshot>(json);
        QVERIFY(!result);
        QVERIFY(!result.error().isEmpty());
    }

    // ---- writing ----
    void writesCompactWithOptionalKeysOnlyWhenPresent() {
        const UsageWindow minimal{
            .id = QStringLiteral("a"), .title = QStringLiteral("A"), .unit = UsageUnit::dollars};
        QCOMPARE(UsageJson::encode(minimal).value(),
                 QByteArray(R"({"id":"a","title":"A","unit":"dollars","horizon":"unspecified"})"));

        const UsagePoint point{.date = Timestamp(0.5), .value = 3, .unit = UsageUnit::tokens};
        QCOMPARE(UsageJson::encode(point).value(), QByteArray(R"({"date":0.5,"value":3,"unit":"tokens"})"));

        const UsageSnapshot empty{.source = UsageSource::mock,
                                  .capturedAt = Timestamp(1),
                                  .windows = {},
                                  .history = {},
                                  .warnings = {}};
        QCOMPARE(
            UsageJson::encode(empty).value(),
            QByteArray(R"({"source":"mock","capturedAt":1,"windows":[],"history":[],"billingHistory":[],)"
                       R"("warnings":[],"modelSummaries":[]})"));

        const ProviderConnectionMetadata metadata{
            .sourceDescription = QStringLiteral("OpenAI organization API"), .capturedAt = Timestamp(2)};
        QCOMPARE(UsageJson::encode(metadata).value(),
                 QByteArray(R"({"windows":[],"sourceDescription":"OpenAI organization API","notes":[],)"
                            R"("capturedAt":2})"));
    }

    void zeroAndEmptyAreWrittenAsValues() {
        UsageWindow w{.id = QString(), .title = QString(), .unit = UsageUnit::items};
        w.used = 0.0;
        w.note = QString();
        const QByteArray json = UsageJson::encode(w).value();
        QCOMPARE(
            json,
            QByteArray(R"({"id":"","title":"","unit":"items","horizon":"unspecified","used":0,"note":""})"));
        const auto back = UsageJson::decode<UsageWindow>(json);
        QVERIFY(back);
        QCOMPARE(back->used, std::optional<double>(0.0));
        QCOMPARE(back->note, std::optional<QString>(QString()));
        QVERIFY(!back->limit.has_value());
    }

    void timestampsAreSecondsSince2001() {
        UsageWindow w = fullWindow();
        w.resetAt = Timestamp::fromUnixSeconds(978307200.0 + 86400.25);
        const QJsonObject written = QJsonDocument::fromJson(UsageJson::encode(w).value()).object();
        QCOMPARE(written.value(u"resetAt").toDouble(), 86400.25);

        const auto point = UsageJson::decode<UsagePoint>(R"({"date":-1.5,"value":1,"unit":"tokens"})");
        QVERIFY(point);
        QCOMPARE(point->date.unixSeconds(), 978307198.5);
    }

    void numbersKeepEveryBit() {
        const QList<double> values{0.1,
                                   1.0 / 3.0,
                                   -0.0,
                                   1e-300,
                                   123456789.123456789,
                                   std::numeric_limits<double>::max(),
                                   std::numeric_limits<double>::denorm_min(),
                                   9007199254740993.0,
                                   -9007199254740993.0,
                                   9.2e18,
                                   18446744073709551616.0,
                                   -1e19,
                                   1e21,
                                   123.0};
        for (const double value : values) {
            UsageWindow w = fullWindow();
            w.used = value;
            w.resetAt = Timestamp(value);
            const auto back = UsageJson::decode<UsageWindow>(UsageJson::encode(w).value());
            QVERIFY(back);
            QCOMPARE(std::bit_cast<quint64>(*back->used), std::bit_cast<quint64>(value));
            QCOMPARE(std::bit_cast<quint64>(back->resetAt->secondsSinceReference()),
                     std::bit_cast<quint64>(value));
        }
    }

    void integersDecodeAsFloats() {
        const auto w = UsageJson::decode<UsageWindow>(
            R"({"id":"a","title":"b","unit":"tokens","used":18446744073709551615,"limit":-9223372036854775808})");
        QVERIFY2(w, qPrintable(w.error()));
        QCOMPARE(*w->used, 18446744073709551615.0);
        QCOMPARE(*w->limit, -9223372036854775808.0);
    }

    void nonFiniteNumbersCannotBeWritten() {
        UsageWindow w = fullWindow();
        w.used = std::numeric_limits<double>::quiet_NaN();
        QVERIFY(!UsageJson::encode(w));
        w.used = std::numeric_limits<double>::infinity();
        QVERIFY(!UsageJson::encode(QList<UsageWindow>{fullWindow(), w}));
    }

    void textsRoundTrip_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("quotes and backslash") << QStringLiteral("say \"hi\" \\ bye");
        QTest::newRow("control characters") << QStringLiteral("a\nb\tc\rd\be\ff") + QChar(0x01) + QChar(0x1f);
        QTest::newRow("slash") << QStringLiteral("/settings/organization");
        QTest::newRow("non-ASCII") << QStringLiteral("Grüße — “quoted” ✓ 日本語");
        QTest::newRow("outside the BMP") << QString::fromUcs4(U"\U0001F680 rocket");
        QTest::newRow("NUL inside") << QString(QStringLiteral("a") + QChar(0) + QStringLiteral("b"));
        QTest::newRow("unit separator") << QString(QStringLiteral("a") + QChar(0x1f) + QStringLiteral("b"));
    }
    void textsRoundTrip() {
        QFETCH(QString, text);
        UsageSnapshot s{.source = UsageSource::manual,
                        .capturedAt = Timestamp(3),
                        .windows = {fullWindow()},
                        .history = {},
                        .warnings = {text}};
        s.windows[0].title = text;
        s.windows[0].note = text;
        const QByteArray json = UsageJson::encode(s).value();
        QVERIFY(QJsonDocument::fromJson(json).isObject()); // another parser reads it too
        const auto back = UsageJson::decode<UsageSnapshot>(json);
        QVERIFY2(back, qPrintable(back.error()));
        QCOMPARE(back.value(), s);
    }

    void escapedInputDecodes() {
        const auto w = UsageJson::decode<UsageWindow>(
            R"({"id":"a\u00e9\ud83d\ude80","title":"line\nnext \/ slash","unit":"tokens"})");
        QVERIFY2(w, qPrintable(w.error()));
        QCOMPARE(w->id, QStringLiteral("aé") + QString::fromUcs4(U"\U0001F680"));
        QCOMPARE(w->title, QStringLiteral("line\nnext / slash"));
    }

    // ---- round trips of every record ----
    void roundTripEveryRecord() {
        const UsageWindow window = fullWindow();
        QCOMPARE(UsageJson::decode<UsageWindow>(UsageJson::encode(window).value()).value(), window);

        const UsagePoint point{.date = Timestamp(785000000.5),
                               .value = 1234.5,
                               .unit = UsageUnit::dollars,
                               .modelName = QStringLiteral("gpt-4.1"),
                               .agentLabel = QStringLiteral("user-7Qm2")};
        QCOMPARE(UsageJson::decode<UsagePoint>(UsageJson::encode(point).value()).value(), point);

        const UsageModelSummary summary{.modelName = QStringLiteral("gpt-4.1"), .windows = {window, window}};
        QCOMPARE(UsageJson::decode<UsageModelSummary>(UsageJson::encode(summary).value()).value(), summary);

        const AgentBudget budget{.id = QStringLiteral("9F2C"),
                                 .name = QStringLiteral("Docs bot"),
                                 .unit = UsageUnit::messages,
                                 .shortUsed = 3,
                                 .weeklyLimit = 200};
        QCOMPARE(UsageJson::decode<AgentBudget>(UsageJson::encode(budget).value()).value(), budget);

        const UsageSnapshot snapshot{
            .source = UsageSource::officialAPI,
            .capturedAt = Timestamp(785000001.75),
            .windows = {window, makeWindow(QStringLiteral("b"), UsageHorizon::billing, 3, 9)},
            .history = {point, point},
            .billingHistory = {point},
            .warnings = {QStringLiteral("Costs were not available.")},
            .modelSummaries = {summary}};
        QCOMPARE(UsageJson::decode<UsageSnapshot>(UsageJson::encode(snapshot).value()).value(), snapshot);

        const ProviderConnectionMetadata metadata{.displayName = QStringLiteral("Acme"),
                                                  .modelScope = QStringLiteral("3 models"),
                                                  .windows = {window},
                                                  .sourceDescription = QStringLiteral("OpenAI"),
                                                  .notes = {QStringLiteral("a"), QStringLiteral("b")},
                                                  .capturedAt = Timestamp(9)};
        QCOMPARE(UsageJson::decode<ProviderConnectionMetadata>(UsageJson::encode(metadata).value()).value(),
                 metadata);

        const QList<UsageSnapshot> list{snapshot, snapshot};
        QCOMPARE(UsageJson::decode<QList<UsageSnapshot>>(UsageJson::encode(list).value()).value(), list);
        QCOMPARE(UsageJson::decode<QList<UsageSnapshot>>("[]").value(), QList<UsageSnapshot>());
        const QList<AgentBudget> budgets{budget};
        QCOMPARE(UsageJson::decode<QList<AgentBudget>>(UsageJson::encode(budgets).value()).value(), budgets);
        const QList<UsagePoint> points{point};
        QCOMPARE(UsageJson::decode<QList<UsagePoint>>(UsageJson::encode(points).value()).value(), points);
        const QList<UsageModelSummary> summaries{summary};
        QCOMPARE(UsageJson::decode<QList<UsageModelSummary>>(UsageJson::encode(summaries).value()).value(),
                 summaries);
        const QList<ProviderConnectionMetadata> metadatas{metadata};
        QCOMPARE(UsageJson::decode<QList<ProviderConnectionMetadata>>(UsageJson::encode(metadatas).value())
                     .value(),
                 metadatas);
    }

    void metadataCapturedAtDefaultsToNow() {
        Clock::setFixedNow(Timestamp(4242));
        const ProviderConnectionMetadata metadata{.sourceDescription = QStringLiteral("x")};
        Clock::setFixedNow(std::nullopt);
        QCOMPARE(metadata.capturedAt, Timestamp(4242));
        QVERIFY(metadata.windows.isEmpty() && metadata.notes.isEmpty() && !metadata.displayName);
    }

    void decodingIsRepeatable() {
        // The shared parser is reused; one decode must not disturb the next.
        const auto first = UsageJson::decode<UsageSnapshot>(kSnapshot);
        const auto bad = UsageJson::decode<UsageSnapshot>("{");
        const auto second = UsageJson::decode<UsageSnapshot>(kSnapshot);
        QVERIFY(first && !bad && second);
        QCOMPARE(first.value(), second.value());
    }
};

QTEST_GUILESS_MAIN(TestUsageJson)
#include "tst_usagejson.moc"
