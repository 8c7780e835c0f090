#include <libsecret/secret.h>

#include "services/CredentialLifecycle.h"
#include "services/KeychainStore.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

namespace {
QString freshKey() {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

GHashTable* attributesFor(const QString& key) {
    GHashTable* attributes = g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free);
    g_hash_table_insert(attributes, g_strdup("service"), g_strdup("Tallyfen.credentials"));
    g_hash_table_insert(attributes, g_strdup("account"), g_strdup(key.toUtf8().constData()));
    return attributes;
}

// What the Secret Service itself holds for a key, looked at with libsecret directly.
struct StoredItems {
    int count = 0;
    QByteArray firstSecret;
    QStringList firstAttributeNames;
};

StoredItems inspect(const QString& key) {
    StoredItems stored;
    GError* error = nullptr;
    SecretService* service = secret_service_get_sync(SECRET_SERVICE_OPEN_SESSION, nullptr, &error);
    if (!service) {
        g_clear_error(&error);
        return stored;
    }
    GHashTable* attributes = attributesFor(key);
    GList* items = secret_service_search_sync(
        service, nullptr, attributes,
        static_cast<SecretSearchFlags>(SECRET_SEARCH_ALL | SECRET_SEARCH_LOAD_SECRETS), nullptr, &error);
    g_clear_error(&error);
    for (GList* node = items; node; node = node->next) {
        auto* item = SECRET_ITEM(node->data);
        if (stored.count++ == 0) {
            if (SecretValue* value = secret_item_get_secret(item)) {
                gsize length = 0;
                const gchar* bytes = secret_value_get(value, &length);
                stored.firstSecret = QByteArray(bytes, static_cast<qsizetype>(length));
                secret_value_unref(value);
            }
            GHashTable* itemAttributes = secret_item_get_attributes(item);
            GHashTableIter iter;
            gpointer name = nullptr;
            g_hash_table_iter_init(&iter, itemAttributes);
            while (g_hash_table_iter_next(&iter, &name, nullptr)) {
                stored.firstAttributeNames.append(QString::fromUtf8(static_cast<const char*>(name)));
            }
            g_hash_table_unref(itemAttributes);
            stored.firstAttributeNames.sort();
        }
    }
    g_list_free_full(items, g_object_unref);
    g_hash_table_unref(attributes);
    g_object_unref(service);
    return stored;
}

// Stores raw bytes under the key the way another program might.
bool storeRaw(const QString& key, const QByteArray& bytes) {
    GError* error = nullptr;
    SecretService* service = secret_service_get_sync(SECRET_SERVICE_OPEN_SESSION, nullptr, &error);
    if (!service) {
        g_clear_error(&error);
        return false;
    }
    SecretValue* value = secret_value_new(bytes.constData(), bytes.size(), "application/octet-stream");
    GHashTable* attributes = attributesFor(key);
    const bool stored = secret_service_store_sync(service, nullptr, attributes, SECRET_COLLECTION_DEFAULT,
                                                  "raw", value, nullptr, &error);
    g_clear_error(&error);
    g_hash_table_unref(attributes);
    secret_value_unref(value);
    g_object_unref(service);
    return stored;
}

struct ProbeLine {
    QString operation;
    QString outcome;
    qint64 milliseconds = 0;
};

QList<ProbeLine> parseProbe(const QByteArray& output) {
    QList<ProbeLine> lines;
    for (const QByteArray& line : output.split('\n')) {
        const QList<QByteArray> parts = line.split(' ');
        if (parts.size() == 3) {
            lines.append({QString::fromUtf8(parts[0]), QString::fromUtf8(parts[1]), parts[2].toLongLong()});
        }
    }
    return lines;
}

} // namespace

class TestKeychainStore final : public QObject {
    Q_OBJECT

private:
    // Runs the probe through `command` (a shell line with $PROBE) in a scratch home.
    QList<ProbeLine> runProbe(const QString& command, QProcessEnvironment environment) {
        QProcess process;
        environment.insert(QStringLiteral("PROBE"), QStringLiteral(KEYCHAIN_PROBE));
        environment.insert(QStringLiteral("HOME"), m_scratch.path());
        environment.insert(QStringLiteral("XDG_DATA_HOME"), m_scratch.filePath(QStringLiteral("data")));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_scratch.path());
        environment.remove(QStringLiteral("GNOME_KEYRING_CONTROL"));
        // Settings of their own, unless the test shares them between probes on purpose.
        if (environment.value(QStringLiteral("XDG_CONFIG_HOME")) == qEnvironmentVariable("XDG_CONFIG_HOME")) {
            environment.insert(QStringLiteral("XDG_CONFIG_HOME"),
                               m_scratch.filePath(QStringLiteral("config-%1").arg(++m_probeRuns)));
        }
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), command});
        if (!process.waitForFinished(30000)) {
            process.kill();
            process.waitForFinished();
            qWarning("probe did not finish");
            return {};
        }
        const QByteArray output = process.readAllStandardOutput();
        if (process.exitCode() != 0) {
            qWarning("probe failed: %s %s", output.constData(), process.readAllStandardError().constData());
        }
        return parseProbe(output);
    }

    // save threw, read found nothing, delete stayed quiet, each within two seconds.
    static void expectPromptFailure(const QList<ProbeLine>& lines) {
        QCOMPARE(lines.size(), 3);
        QVERIFY2(lines[0].outcome.startsWith(u"threw:"), qPrintable(lines[0].outcome));
        QCOMPARE(lines[1].outcome, QStringLiteral("absent"));
        for (const ProbeLine& line : lines) {
            QVERIFY2(line.milliseconds < 2000,
                     qPrintable(QStringLiteral("%1 took %2 ms").arg(line.operation).arg(line.milliseconds)));
        }
    }

    QTemporaryDir m_scratch;
    int m_probeRuns = 0;

private slots:
    void initTestCase() {
        // The test harness starts an unlocked throw-away keyring on a private bus.
        QVERIFY2(qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS"), "run through scripts/test.sh");
        const QString key = freshKey();
        KeychainStore::save(QStringLiteral("ready"), key);
        QCOMPARE(KeychainStore::read(key), std::optional<QString>(QStringLiteral("ready")));
        KeychainStore::deleteItem(key);
    }

    void saveReadDelete() {
        const QString key = freshKey();
        KeychainStore::save(QStringLiteral("sk-admin-abc123"), key);
        QCOMPARE(KeychainStore::read(key), std::optional<QString>(QStringLiteral("sk-admin-abc123")));
        const StoredItems stored = inspect(key);
        QCOMPARE(stored.count, 1);
        QCOMPARE(stored.firstSecret, QByteArray("sk-admin-abc123")); // the UTF-8 bytes, nothing added
        QCOMPARE(stored.firstAttributeNames, QStringList({"account", "service"}));
        KeychainStore::deleteItem(key);
        QVERIFY(!KeychainStore::read(key));
        QCOMPARE(inspect(key).count, 0);
    }

    void savingTwiceLeavesOneItemWithTheSecondValue() {
        const QString key = freshKey();
        KeychainStore::save(QStringLiteral("first"), key);
        KeychainStore::save(QStringLiteral("second"), key);
        QCOMPARE(inspect(key).count, 1);
        QCOMPARE(KeychainStore::read(key), std::optional<QString>(QStringLiteral("second")));
        KeychainStore::deleteItem(key);
    }

    void emptyStringIsAStoredValue() {
        const QString key = freshKey();
        KeychainStore::save(QString(), key);
        QCOMPARE(inspect(key).count, 1);
        QCOMPARE(inspect(key).firstSecret, QByteArray());
        const auto value = KeychainStore::read(key);
        QVERIFY(value.has_value());
        QVERIFY(value->isEmpty());
        KeychainStore::deleteItem(key);
    }

    void missingKeysAreQuiet() {
        const QString key = freshKey();
        QVERIFY(!KeychainStore::read(key));
        KeychainStore::deleteItem(key); // no error, nothing thrown
        QCOMPARE(inspect(key).count, 0);
    }

    void bytesThatAreNotUtf8ReadAsAbsentAndAreUpdatedInPlace() {
        const QString key = freshKey();
        QVERIFY(storeRaw(key, QByteArray("\xff\xfe\x80 broken", 10)));
        QCOMPARE(inspect(key).count, 1);
        QVERIFY(!KeychainStore::read(key));
        KeychainStore::save(QStringLiteral("repaired"), key);
        QCOMPARE(inspect(key).count, 1);
        QCOMPARE(KeychainStore::read(key), std::optional<QString>(QStringLiteral("repaired")));
        KeychainStore::deleteItem(key);
    }

    void nonAsciiSecretsReadBackExactly_data() {
        QTest::addColumn<QString>("secret");
        QTest::newRow("accents") << QStringLiteral("pässwörd-ÿ");
        QTest::newRow("CJK") << QStringLiteral("鍵🔑キー");
        QTest::newRow("leading byte-order mark") << (QChar(0xFEFF) + QStringLiteral("bom"));
        QTest::newRow("NUL inside") << QString(QStringLiteral("a") + QChar(0) + QStringLiteral("b"));
        QTest::newRow("blanks kept") << QStringLiteral("  padded\n");
    }
    void nonAsciiSecretsReadBackExactly() {
        QFETCH(QString, secret);
        const QString key = freshKey();
        KeychainStore::save(secret, key);
        QCOMPARE(KeychainStore::read(key), std::optional<QString>(secret));
        QCOMPARE(inspect(key).firstSecret, secret.toUtf8());
        KeychainStore::deleteItem(key);
    }

    void twoAccountsUnderOneService() {
        const QString first = freshKey();
        const QString second = freshKey();
        KeychainStore::save(QStringLiteral("one"), first);
        KeychainStore::save(QStringLiteral("two"), second);
        KeychainStore::deleteItem(first);
        QVERIFY(!KeychainStore::read(first));
        QCOMPARE(KeychainStore::read(second), std::optional<QString>(QStringLiteral("two")));
        KeychainStore::deleteItem(second);
    }

    void secretOf64KiB() {
        const QString key = freshKey();
        QString big;
        for (int i = 0; i < 64 * 1024; ++i) {
            big.append(QChar(u'a' + i % 26));
        }
        KeychainStore::save(big, key);
        QCOMPARE(KeychainStore::read(key), std::optional<QString>(big));
        KeychainStore::deleteItem(key);
    }

    void keychainErrorSaysOneThing() {
        const KeychainError error(-25308);
        QCOMPARE(error.status(), -25308);
        QCOMPARE(error.errorDescription(), QStringLiteral("Keychain operation failed."));
        QCOMPARE(KeychainError(-1).errorDescription(), QStringLiteral("Keychain operation failed."));
        QCOMPARE(KeychainStore::service, QStringLiteral("Tallyfen.credentials"));
    }

    // ---- failure is prompt ----
    void noSessionBusAtAll() {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                           QStringLiteral("unix:path=/nonexistent/bus"));
        const QList<ProbeLine> lines = runProbe(QStringLiteral("exec \"$PROBE\" plain"), environment);
        expectPromptFailure(lines);
    }

    void busWithoutASecretService() {
        const QList<ProbeLine> lines =
            runProbe(QStringLiteral("exec dbus-run-session --config-file=\"%1\" -- \"$PROBE\" plain")
                         .arg(QStringLiteral(BARE_BUS_CONFIG)),
                     QProcessEnvironment::systemEnvironment());
        expectPromptFailure(lines);
    }

    void serviceThatNeverAnswers() {
        const QList<ProbeLine> lines =
            runProbe(QStringLiteral("exec dbus-run-session --config-file=\"%1\" -- \"$PROBE\" hang")
                         .arg(QStringLiteral(BARE_BUS_CONFIG)),
                     QProcessEnvironment::systemEnvironment());
        expectPromptFailure(lines);
        QCOMPARE(lines[0].outcome, QStringLiteral("threw:%1").arg(-25291)); // not available
    }

    void lockedCollection() {
        const QString command = QStringLiteral("exec dbus-run-session -- sh -c '"
                                               "eval \"$(printf tallyfen-probe | gnome-keyring-daemon "
                                               "--unlock --components=secrets --daemonize)\"; "
                                               "exec \"$PROBE\" locked'");
        const QList<ProbeLine> lines = runProbe(command, QProcessEnvironment::systemEnvironment());
        QCOMPARE(lines.size(), 5);
        QCOMPARE(lines[0].outcome, QStringLiteral("ok"));                   // stored before the lock
        QCOMPARE(lines[1].outcome, QStringLiteral("threw:%1").arg(-25308)); // update of a locked item
        QCOMPARE(lines[2].outcome, QStringLiteral("threw:%1").arg(-25308)); // add to a locked collection
        QCOMPARE(lines[3].outcome, QStringLiteral("absent"));
        for (const ProbeLine& line : lines) {
            QVERIFY2(line.milliseconds < 2000, qPrintable(line.operation));
        }
    }

    void aDeletionTheLockedKeyringRefusedHappensLater() {
        // One keyring on disk, unlocked by two daemons in turn: a session that locks it,
        // then a later start of the application.
        const QString held = QStringLiteral("5D1E0A77-0000-4000-8000-000000000001");
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), m_scratch.filePath(QStringLiteral("config")));
        const auto session = [&held](const char* mode) {
            return QStringLiteral("exec dbus-run-session -- sh -c '"
                                  "eval \"$(printf tallyfen-probe | gnome-keyring-daemon "
                                  "--unlock --components=secrets --daemonize)\"; "
                                  "exec \"$PROBE\" %1 %2'")
                .arg(QLatin1StringView(mode), held);
        };
        const QList<ProbeLine> locked = runProbe(session("lockeddelete"), environment);
        QCOMPARE(locked.size(), 5);
        QCOMPARE(locked[0].outcome, QStringLiteral("ok"));     // stored
        QCOMPARE(locked[2].outcome, QStringLiteral("absent")); // reads as deleted
        QCOMPARE(locked[3].outcome, held);                     // remembered, and no secret with it
        QCOMPARE(locked[4].outcome, QStringLiteral("yes"));    // the locked keyring still holds it
        QVERIFY2(locked[1].milliseconds < 2000, "the delete did not wait for an unlock");

        const QList<ProbeLine> later = runProbe(session("restart"), environment);
        QCOMPARE(later.size(), 4);
        QCOMPARE(later[0].outcome, held);
        QCOMPARE(later[2].outcome, QString());            // nothing left to do
        QCOMPARE(later[3].outcome, QStringLiteral("no")); // the key is gone for good
        QFile settings(m_scratch.filePath(QStringLiteral("config/Tallyfen/Tallyfen.conf")));
        QVERIFY(!settings.open(QIODevice::ReadOnly) || !settings.readAll().contains("sk-admin"));
    }

    // ---- credential lifecycle ----
    void shouldDeleteCredential_data() {
        QTest::addColumn<QString>("previous");
        QTest::addColumn<QString>("next");
        QTest::addColumn<bool>("providerChanged");
        QTest::addColumn<bool>("expected");
        for (const ConnectionMode previous : ConnectionMode::allCases()) {
            for (const ConnectionMode next : ConnectionMode::allCases()) {
                for (const bool changed : {false, true}) {
                    const bool expected =
                        changed || (previous == ConnectionMode::apiKey && next != ConnectionMode::apiKey);
                    QTest::addRow("%s to %s%s", qPrintable(previous.rawValue()), qPrintable(next.rawValue()),
                                  changed ? ", provider changed" : "")
                        << previous.rawValue() << next.rawValue() << changed << expected;
                }
            }
        }
    }
    void shouldDeleteCredential() {
        QFETCH(QString, previous);
        QFETCH(QString, next);
        QFETCH(bool, providerChanged);
        QFETCH(bool, expected);
        QCOMPARE(CredentialLifecycle::shouldDeleteCredential(*ConnectionMode::fromRawValue(previous),
                                                             *ConnectionMode::fromRawValue(next),
                                                             providerChanged),
                 expected);
    }

    void lifecycleNamedCases() {
        QVERIFY(!CredentialLifecycle::shouldDeleteCredential(ConnectionMode::browser, ConnectionMode::manual,
                                                             false));
        QVERIFY(CredentialLifecycle::shouldDeleteCredential(ConnectionMode::manual, ConnectionMode::apiKey,
                                                            true));
        QVERIFY(!CredentialLifecycle::shouldDeleteCredential(ConnectionMode::apiKey, ConnectionMode::apiKey,
                                                             false));
        QVERIFY(
            CredentialLifecycle::shouldDeleteCredential(ConnectionMode::apiKey, ConnectionMode::mock, false));
    }
};

QTEST_GUILESS_MAIN(TestKeychainStore)
#include "tst_keychainstore.moc"
