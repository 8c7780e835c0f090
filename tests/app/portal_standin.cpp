// A stand-in for the XDG desktop portal's settings, on the session bus it is started on:
// it owns org.freedesktop.portal.Desktop and answers Read, ReadOne and ReadAll like the
// portal, with the settings given on its command line; each line on its standard input
// ("org.freedesktop.appearance color-scheme u 2") changes one and emits SettingChanged.
//   --set GROUP KEY TYPE VALUE   a setting (TYPE: u unsigned, i int, b bool, d double)
//   --no-readone                 an older portal: ReadOne is an unknown method
//   --silent                     owns the name but never answers
// It prints "ready" once it owns the name.
#include <QCoreApplication>
#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QMap>
#include <QSocketNotifier>
#include <QStringList>
#include <QTextStream>

#include <cstdio>
#include <unistd.h>

using Groups = QMap<QString, QVariantMap>;
Q_DECLARE_METATYPE(Groups)

namespace {
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");

QVariant typed(const QString& type, const QString& value) {
    if (type == QLatin1StringView("u")) {
        return QVariant::fromValue(value.toUInt());
    }
    if (type == QLatin1StringView("i")) {
        return QVariant::fromValue(value.toInt());
    }
    if (type == QLatin1StringView("b")) {
        return QVariant::fromValue(value == QLatin1StringView("true"));
    }
    return QVariant::fromValue(value.toDouble());
}
} // namespace

class Settings final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    QMap<QString, QVariantMap> values;
    bool readOne = true;
    bool silent = false;

public slots:
    QDBusVariant ReadOne(const QString& group, const QString& key) {
        if (stall()) {
            return {};
        }
        if (!readOne) {
            sendErrorReply(QDBusError::UnknownMethod, QStringLiteral("No such method “ReadOne”"));
            return {};
        }
        if (!values.value(group).contains(key)) {
            sendErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"),
                           QStringLiteral("Requested setting not found"));
            return {};
        }
        return QDBusVariant(values.value(group).value(key));
    }

    // The older method wraps the value in one more variant.
    QDBusVariant Read(const QString& group, const QString& key) {
        if (stall()) {
            return {};
        }
        if (!values.value(group).contains(key)) {
            sendErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"),
                           QStringLiteral("Requested setting not found"));
            return {};
        }
        return QDBusVariant(QVariant::fromValue(QDBusVariant(values.value(group).value(key))));
    }

    Groups ReadAll(const QStringList& groups) {
        if (stall()) {
            return {};
        }
        Groups answer;
        for (auto group = values.cbegin(); group != values.cend(); ++group) {
            if (groups.isEmpty() || groups.contains(group.key())) {
                answer.insert(group.key(), group.value());
            }
        }
        return answer;
    }

signals:
    void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    // A portal that hangs: the question is taken and never answered.
    bool stall() {
        if (silent) {
            setDelayedReply(true);
        }
        return silent;
    }
};

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    qDBusRegisterMetaType<Groups>();
    Settings settings;
    const QStringList arguments = QCoreApplication::arguments();
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        if (arguments.at(i) == QLatin1StringView("--set") && i + 4 < arguments.size()) {
            settings.values[arguments.at(i + 1)][arguments.at(i + 2)] =
                typed(arguments.at(i + 3), arguments.at(i + 4));
            i += 4;
        } else if (arguments.at(i) == QLatin1StringView("--no-readone")) {
            settings.readOne = false;
        } else if (arguments.at(i) == QLatin1StringView("--silent")) {
            settings.silent = true;
        }
    }
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(kPath, kInterface, &settings,
                            QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals) ||
        !bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop"))) {
        std::fprintf(stderr, "portal_standin: %s\n", qPrintable(bus.lastError().message()));
        return 1;
    }
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &app, [&] {
        char line[512];
        const ssize_t count = read(STDIN_FILENO, line, sizeof line - 1);
        if (count <= 0) {
            QCoreApplication::quit();
            return;
        }
        const QString text = QString::fromUtf8(line, count);
        for (const QString& change : text.split(u'\n', Qt::SkipEmptyParts)) {
            const QStringList parts = change.split(u' ', Qt::SkipEmptyParts);
            if (parts.size() != 4) {
                continue;
            }
            const QVariant value = typed(parts.at(2), parts.at(3));
            settings.values[parts.at(0)][parts.at(1)] = value;
            Q_EMIT settings.SettingChanged(parts.at(0), parts.at(1), QDBusVariant(value));
        }
    });
    std::printf("ready\n");
    std::fflush(stdout);
    return QCoreApplication::exec();
}

#include "portal_standin.moc"
