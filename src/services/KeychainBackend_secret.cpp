// The Secret Service (GNOME Keyring, KWallet, KeePassXC) through libsecret.
//
// libsecret's blocking calls can wait without end: for a service that never answers,
// or for an unlock prompt that nobody sees. So each operation runs libsecret's
// asynchronous calls on a private GLib main context and waits for them there, with
// one deadline for the whole operation; at the deadline the calls are cancelled.
// The caller still sees a plain blocking call on its own thread.
//
// libsecret, with GIO and GObject below it, is loaded on the first keychain operation
// rather than with the program: most starts don't touch the keychain before the window
// is up, and those libraries are a tenth of the start's loading work. Without libsecret
// on the system every operation reports the keychain as not available.

#include <libsecret/secret.h>

#include "services/KeychainBackend.h"

#include <QElapsedTimer>
#include <QLibrary>

#include <optional>

namespace {

// The functions taken from libsecret and the libraries it brings (GLib itself is
// already there: Qt's event loop runs on it).
#define TALLYFEN_SECRET_FUNCTIONS(X)                                                                         \
    X(secret_service_get)                                                                                    \
    X(secret_service_get_finish)                                                                             \
    X(secret_service_search)                                                                                 \
    X(secret_service_search_finish)                                                                          \
    X(secret_service_store)                                                                                  \
    X(secret_service_store_finish)                                                                           \
    X(secret_service_clear)                                                                                  \
    X(secret_service_clear_finish)                                                                           \
    X(secret_item_get_secret)                                                                                \
    X(secret_item_get_locked)                                                                                \
    X(secret_item_set_secret)                                                                                \
    X(secret_item_set_secret_finish)                                                                         \
    X(secret_value_new)                                                                                      \
    X(secret_value_get)                                                                                      \
    X(secret_value_unref)                                                                                    \
    X(secret_collection_for_alias)                                                                           \
    X(secret_collection_for_alias_finish)                                                                    \
    X(secret_collection_get_locked)                                                                          \
    X(g_object_ref)                                                                                          \
    X(g_object_unref)                                                                                        \
    X(g_cancellable_new)                                                                                     \
    X(g_cancellable_cancel)

struct SecretApi {
#define TALLYFEN_DECLARE(name) decltype(&::name) name = nullptr;
    TALLYFEN_SECRET_FUNCTIONS(TALLYFEN_DECLARE)
#undef TALLYFEN_DECLARE
};

// libsecret's functions, loaded once; null when the library or one of them is missing.
const SecretApi* secretApi() {
    static const std::optional<SecretApi> api = []() -> std::optional<SecretApi> {
        QLibrary library(QStringLiteral("secret-1"), 0);
        if (!library.load()) {
            return std::nullopt;
        }
        SecretApi loaded;
        bool complete = true;
#define TALLYFEN_RESOLVE(name)                                                                               \
    loaded.name = reinterpret_cast<decltype(loaded.name)>(library.resolve(#name));                           \
    complete = complete && loaded.name;
        TALLYFEN_SECRET_FUNCTIONS(TALLYFEN_RESOLVE)
#undef TALLYFEN_RESOLVE
        // The library stays loaded for the rest of the process (QLibrary does not unload it).
        return complete ? std::optional<SecretApi>(loaded) : std::nullopt;
    }();
    return api ? &*api : nullptr;
}
#undef TALLYFEN_SECRET_FUNCTIONS

constexpr int kDeadlineMilliseconds = 1500;
constexpr const char* kLabel = "Tallyfen credential";

GMainContext* privateContext() {
    static GMainContext* context = g_main_context_new();
    return context;
}

// One keychain operation: a private context made current, a cancellable that fires
// at the deadline, and a way to wait for each asynchronous step.
class Operation final {
public:
    explicit Operation(const SecretApi& api)
        : m_api(api)
        , m_cancellable(api.g_cancellable_new()) {
        g_main_context_push_thread_default(privateContext());
        m_clock.start();
    }
    ~Operation() {
        g_main_context_pop_thread_default(privateContext());
        m_api.g_object_unref(m_cancellable);
    }
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;

    const SecretApi& api() const { return m_api; }
    GCancellable* cancellable() const { return m_cancellable; }

    // Starts one asynchronous call through `start(callback, userData)` and waits for
    // it; the result is null when the deadline passed first.
    template <typename Start>
    GAsyncResult* await(Start&& start) {
        GAsyncResult* result = nullptr;
        std::forward<Start>(start)(&Operation::onReady, &result);
        const auto remaining = [this] { return kDeadlineMilliseconds - m_clock.elapsed(); };
        GSource* timeout = g_timeout_source_new(static_cast<guint>(std::max<qint64>(remaining(), 0)));
        g_source_set_callback(
            timeout,
            [](gpointer cancellable) -> gboolean {
                secretApi()->g_cancellable_cancel(static_cast<GCancellable*>(cancellable));
                return G_SOURCE_REMOVE;
            },
            m_cancellable, nullptr);
        g_source_attach(timeout, privateContext());
        while (!result) {
            g_main_context_iteration(privateContext(), TRUE);
        }
        g_source_destroy(timeout);
        g_source_unref(timeout);
        return result;
    }

private:
    static void onReady(GObject*, GAsyncResult* result, gpointer slot) {
        // In parentheses: GLib also defines g_object_ref as a function-like macro.
        *static_cast<GAsyncResult**>(slot) = static_cast<GAsyncResult*>((secretApi()->g_object_ref)(result));
    }

    const SecretApi& m_api;
    GCancellable* m_cancellable;
    QElapsedTimer m_clock;
};

struct ErrorHolder {
    GError* error = nullptr;
    ~ErrorHolder() { g_clear_error(&error); }
};

SecretService* connectService(Operation& operation) {
    const SecretApi& api = operation.api();
    GAsyncResult* result = operation.await([&](GAsyncReadyCallback callback, gpointer slot) {
        api.secret_service_get(SECRET_SERVICE_OPEN_SESSION, operation.cancellable(), callback, slot);
    });
    ErrorHolder error;
    SecretService* service = api.secret_service_get_finish(result, &error.error);
    api.g_object_unref(result);
    return service;
}

GHashTable* attributesFor(const QString& service, const QString& account) {
    GHashTable* attributes = g_hash_table_new_full(g_str_hash, g_str_equal, g_free, g_free);
    g_hash_table_insert(attributes, g_strdup("service"), g_strdup(service.toUtf8().constData()));
    g_hash_table_insert(attributes, g_strdup("account"), g_strdup(account.toUtf8().constData()));
    return attributes;
}

// The first item of this service and account, or null with a status.
SecretItem* findItem(Operation& operation, SecretService* service, const QString& serviceName,
                     const QString& account, bool loadSecret, qint32* status) {
    const SecretApi& api = operation.api();
    GHashTable* attributes = attributesFor(serviceName, account);
    const auto flags = loadSecret ? SECRET_SEARCH_LOAD_SECRETS : SECRET_SEARCH_NONE;
    GAsyncResult* result = operation.await([&](GAsyncReadyCallback callback, gpointer slot) {
        api.secret_service_search(service, nullptr, attributes, flags, operation.cancellable(), callback,
                                  slot);
    });
    ErrorHolder error;
    GList* items = api.secret_service_search_finish(service, result, &error.error);
    api.g_object_unref(result);
    g_hash_table_unref(attributes);
    if (error.error) {
        *status = KeychainBackend::kNotAvailable;
        return nullptr;
    }
    if (!items) {
        *status = KeychainBackend::kItemNotFound;
        return nullptr;
    }
    auto* first = static_cast<SecretItem*>((api.g_object_ref)(items->data));
    g_list_free_full(items, api.g_object_unref);
    *status = KeychainBackend::kSuccess;
    return first;
}

SecretValue* valueOf(const SecretApi& api, const QByteArray& data) {
    return api.secret_value_new(data.constData(), data.size(), "text/plain");
}

// One keychain operation on a connected service: libsecret loaded, a private context,
// the service connected for `body` and let go after it; "not available" when any of it
// fails.
template <typename Body>
qint32 withService(Body body) {
    const SecretApi* api = secretApi();
    if (!api) {
        return KeychainBackend::kNotAvailable;
    }
    Operation operation(*api);
    SecretService* secrets = connectService(operation);
    if (!secrets) {
        return KeychainBackend::kNotAvailable;
    }
    const qint32 status = body(*api, operation, secrets);
    api->g_object_unref(secrets);
    return status;
}

} // namespace

qint32 KeychainBackend::copyMatching(const QString& service, const QString& account,
                                     std::optional<QByteArray>* data) {
    return withService([&](const SecretApi& api, Operation& operation, SecretService* secrets) {
        qint32 status = kSuccess;
        SecretItem* item = findItem(operation, secrets, service, account, data != nullptr, &status);
        if (item && data) {
            // A locked item is found but gives no value; it is never unlocked from here.
            if (SecretValue* value = api.secret_item_get_secret(item)) {
                gsize length = 0;
                const gchar* bytes = api.secret_value_get(value, &length);
                *data = QByteArray(bytes, static_cast<qsizetype>(length));
                api.secret_value_unref(value);
            } else {
                // Found but locked: the keychain would have to ask for its password.
                *data = std::nullopt;
                status = kInteractionNotAllowed;
            }
        }
        if (item) {
            api.g_object_unref(item);
        }
        return status;
    });
}

qint32 KeychainBackend::update(const QString& service, const QString& account, const QByteArray& data) {
    return withService([&](const SecretApi& api, Operation& operation, SecretService* secrets) {
        qint32 status = kSuccess;
        SecretItem* item = findItem(operation, secrets, service, account, false, &status);
        if (item) {
            if (api.secret_item_get_locked(item)) {
                status = kInteractionNotAllowed;
            } else {
                SecretValue* value = valueOf(api, data);
                GAsyncResult* result = operation.await([&](GAsyncReadyCallback callback, gpointer slot) {
                    api.secret_item_set_secret(item, value, operation.cancellable(), callback, slot);
                });
                ErrorHolder error;
                status =
                    api.secret_item_set_secret_finish(item, result, &error.error) ? kSuccess : kNotAvailable;
                api.g_object_unref(result);
                api.secret_value_unref(value);
            }
            api.g_object_unref(item);
        }
        return status;
    });
}

qint32 KeychainBackend::add(const QString& service, const QString& account, const QByteArray& data) {
    return withService([&](const SecretApi& api, Operation& operation, SecretService* secrets) {
        // Storing into a locked collection would raise an unlock prompt: refuse instead.
        GAsyncResult* found = operation.await([&](GAsyncReadyCallback callback, gpointer slot) {
            api.secret_collection_for_alias(secrets, SECRET_COLLECTION_DEFAULT, SECRET_COLLECTION_NONE,
                                            operation.cancellable(), callback, slot);
        });
        ErrorHolder lookupError;
        SecretCollection* collection = api.secret_collection_for_alias_finish(found, &lookupError.error);
        api.g_object_unref(found);
        if (!collection) {
            return kNotAvailable;
        }
        const bool locked = api.secret_collection_get_locked(collection);
        api.g_object_unref(collection);
        if (locked) {
            return kInteractionNotAllowed;
        }

        GHashTable* attributes = attributesFor(service, account);
        SecretValue* value = valueOf(api, data);
        GAsyncResult* result = operation.await([&](GAsyncReadyCallback callback, gpointer slot) {
            api.secret_service_store(secrets, nullptr, attributes, SECRET_COLLECTION_DEFAULT, kLabel, value,
                                     operation.cancellable(), callback, slot);
        });
        ErrorHolder error;
        const bool stored = api.secret_service_store_finish(secrets, result, &error.error);
        api.g_object_unref(result);
        api.secret_value_unref(value);
        g_hash_table_unref(attributes);
        return stored ? kSuccess : kNotAvailable;
    });
}

qint32 KeychainBackend::deleteItem(const QString& service, const QString& account) {
    return withService([&](const SecretApi& api, Operation& operation, SecretService* secrets) {
        // Deleting a locked item would raise an unlock prompt: report it instead, so that the
        // deletion can be tried again once the keyring is open.
        qint32 status = kSuccess;
        SecretItem* item = findItem(operation, secrets, service, account, false, &status);
        if (!item) {
            return status;
        }
        const bool locked = api.secret_item_get_locked(item);
        api.g_object_unref(item);
        if (locked) {
            return kInteractionNotAllowed;
        }
        GHashTable* attributes = attributesFor(service, account);
        GAsyncResult* result = operation.await([&](GAsyncReadyCallback callback, gpointer slot) {
            api.secret_service_clear(secrets, nullptr, attributes, operation.cancellable(), callback, slot);
        });
        ErrorHolder error;
        const bool cleared = api.secret_service_clear_finish(secrets, result, &error.error);
        api.g_object_unref(result);
        g_hash_table_unref(attributes);
        if (cleared) {
            return kSuccess;
        }
        return error.error ? kNotAvailable : kItemNotFound;
    });
}
