// Refreshes once with a key made up at run time against a server in another process,
// lets everything go, and then counts the copies of the key left anywhere in its own
// writable memory, as a core dump or a memory reader would find them. Prints
// "copies <n>" (UTF-8 and UTF-16 together). With PROBE_WHERE set, says where each is.
#include "providers/OpenAIUsageProvider.h"
#include "providers/UsageProviderError.h"
#include "store/ProviderAccount.h"

#include <QCoreApplication>
#include <QFile>
#include <QRandomGenerator>
#include <QTimer>

#include <QCoro/QCoroTask>

#include <cstdio>
#include <netinet/in.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
constexpr char kMask = 0x5A;

// Answers one request with a 401, never looking at what it was sent.
[[noreturn]] void serve(int listener) {
    for (;;) {
        const int connection = ::accept(listener, nullptr, nullptr);
        char request[8192];
        [[maybe_unused]] const ssize_t got = ::read(connection, request, sizeof request);
        std::fill(std::begin(request), std::end(request), '\0');
        const char answer[] =
            "HTTP/1.1 401 Unauthorized\r\nContent-Length: 2\r\nContent-Type: application/json\r\n"
            "Connection: close\r\n\r\n{}";
        [[maybe_unused]] const ssize_t sent = ::write(connection, answer, sizeof answer - 1);
        ::close(connection);
    }
}

QByteArray masked(QByteArray bytes) {
    for (char& c : bytes) {
        c = static_cast<char>(c ^ kMask);
    }
    return bytes;
}

// Occurrences of the masked needles in every writable mapping but `skip`.
int countCopies(const QList<QByteArray>& needles, const char* skip, std::size_t skipSize) {
    QFile maps(QStringLiteral("/proc/self/maps"));
    QFile memory(QStringLiteral("/proc/self/mem"));
    if (!maps.open(QIODevice::ReadOnly) || !memory.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return -1;
    }
    int copies = 0;
    char* const buffer = const_cast<char*>(skip);
    for (const QByteArray& line : maps.readAll().split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() < 2 || fields.at(1).size() < 2 || fields.at(1).at(1) != 'w') {
            continue;
        }
        const QList<QByteArray> range = fields.at(0).split('-');
        const quint64 begin = range.value(0).toULongLong(nullptr, 16);
        const quint64 end = range.value(1).toULongLong(nullptr, 16);
        if (begin == reinterpret_cast<quint64>(skip) || line.contains("[vvar]")) {
            continue;
        }
        for (quint64 at = begin; at < end; at += skipSize / 2) {
            const quint64 length = std::min<quint64>(skipSize, end - at);
            if (!memory.seek(static_cast<qint64>(at))) {
                break;
            }
            const qint64 read = memory.read(buffer, static_cast<qint64>(length));
            if (read <= 0) {
                break;
            }
            for (qint64 i = 0; i < read; ++i) {
                buffer[i] = static_cast<char>(buffer[i] ^ kMask);
            }
            const QByteArrayView chunk(buffer, read);
            for (const QByteArray& needle : needles) {
                // Chunks overlap by half: count only matches that start in the first half.
                for (qsizetype found = chunk.indexOf(needle); found >= 0;
                     found = chunk.indexOf(needle, found + 1)) {
                    if (static_cast<quint64>(found) < skipSize / 2 || length < skipSize) {
                        ++copies;
                        if (qEnvironmentVariableIsSet("PROBE_WHERE")) {
                            std::fprintf(stderr, "at %llx in %s\n",
                                         static_cast<unsigned long long>(at + static_cast<quint64>(found)),
                                         line.constData());
                            const QByteArrayView around = chunk.sliced(
                                std::max<qsizetype>(0, found - 48),
                                std::min<qsizetype>(96, read - std::max<qsizetype>(0, found - 48)));
                            QByteArray plain = around.toByteArray();
                            std::fprintf(stderr, "  %s\n", plain.toHex().constData());
                        }
                    }
                }
            }
            if (length < skipSize) {
                break;
            }
        }
    }
    return copies;
}
} // namespace

int main(int argc, char* argv[]) {
#if defined(__SANITIZE_ADDRESS__)
    // AddressSanitizer maps terabytes of shadow memory writable and keeps freed blocks
    // in quarantine: there is nothing meaningful to count.
    std::printf("skipped under AddressSanitizer\n");
    return 0;
#endif
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(listener, reinterpret_cast<sockaddr*>(&address), length) != 0 || ::listen(listener, 4) != 0 ||
        ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        return 1;
    }
    const pid_t server = ::fork();
    if (server == 0) {
        serve(listener);
    }
    ::close(listener);

    QCoreApplication app(argc, argv);
    QList<QByteArray> needles;
    {
        QString key = QStringLiteral("sk-admin-");
        for (int i = 0; i < 40; ++i) {
            key.append(QLatin1Char("0123456789abcdef"[QRandomGenerator::global()->bounded(16)]));
        }
        QByteArray utf8 = key.toUtf8();
        needles.append(masked(utf8));
        std::fill(utf8.begin(), utf8.end(), '\0');
        needles.append(masked(QByteArray(reinterpret_cast<const char*>(key.utf16()), key.size() * 2)));
        // The control: a copy kept on purpose must be found.
        if (QCoreApplication::arguments().contains(QStringLiteral("--keep-a-copy"))) {
            static QString kept;
            kept = key;
            kept.detach();
        }
        auto provider = std::make_unique<OpenAIUsageProvider>(
            std::move(key), QUrl(QStringLiteral("http://127.0.0.1:%1").arg(ntohs(address.sin_port))));
        bool done = false;
        auto run = [&]() -> QCoro::Task<> {
            try {
                const ProviderAccount account(ProviderAccount::Init{.provider = AIProvider::openAI,
                                                                    .label = QStringLiteral("Probe"),
                                                                    .accountKind = AccountKind::api});
                (void)co_await provider->fetchUsage(account, DateInterval{Timestamp(0), Timestamp(86400)});
            } catch (...) {
            }
            done = true;
        };
        run();
        while (!done) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
    // Replies and requests go on later turns of the event loop.
    QTimer::singleShot(4500, &app, &QCoreApplication::quit);
    QCoreApplication::exec();
    ::kill(server, SIGKILL);
    ::waitpid(server, nullptr, 0);

    const std::size_t bufferSize = 1 << 20;
    void* buffer = ::mmap(nullptr, bufferSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    std::printf("copies %d\n", countCopies(needles, static_cast<const char*>(buffer), bufferSize));
    return 0;
}
