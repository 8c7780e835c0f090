// Peak resident memory while a fast local server sends a 512 MiB body to the OpenAI
// client, which must stop at its 16 MiB cap. The server is a child process writing as
// fast as the socket takes it. "bench_bigbody [MiB]" (512 by default).
#include "ProcessMemory.h"
#include "providers/OpenAIClient.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include <QCoro/QCoroTask>

#include <cstdio>
#include <cstdlib>
#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// Accepts one connection and answers with a body of `bytes` as fast as it can, its length
// announced or, with `announced` false, ended only by closing the connection.
enum class Framing { closed, chunked, announced };

[[noreturn]] void serve(int listener, long long bytes, Framing framing) {
    const int connection = ::accept(listener, nullptr, nullptr);
    char request[4096];
    [[maybe_unused]] const ssize_t got = ::read(connection, request, sizeof request);
    const QByteArray length = framing == Framing::announced
                                  ? "Content-Length: " + QByteArray::number(bytes) + "\r\n"
                              : framing == Framing::chunked ? QByteArray("Transfer-Encoding: chunked\r\n")
                                                            : QByteArray("Connection: close\r\n");
    const QByteArray head = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n" + length + "\r\n";
    [[maybe_unused]] ssize_t sent = ::write(connection, head.constData(), static_cast<size_t>(head.size()));
    QByteArray block(1024 * 1024, ' ');
    if (framing == Framing::chunked) {
        block = QByteArray::number(1024 * 1024, 16) + "\r\n" + block + "\r\n";
    }
    for (long long left = bytes; left > 0;) {
        const auto chunk = framing == Framing::chunked
                               ? static_cast<size_t>(block.size())
                               : static_cast<size_t>(std::min<long long>(left, block.size()));
        sent = ::write(connection, block.constData(), chunk);
        if (sent <= 0) {
            break; // the client hung up at its cap
        }
        left -= sent;
    }
    ::close(connection);
    _exit(0);
}

// One request against a fresh server; prints what came of it and the peak memory of the
// process while it ran.
void measure(long long mib, Framing framing) {
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (::bind(listener, reinterpret_cast<sockaddr*>(&address), length) != 0 || ::listen(listener, 1) != 0 ||
        ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        std::printf("no server\n");
        return;
    }
    const pid_t server = ::fork();
    if (server == 0) {
        serve(listener, mib * 1024 * 1024, framing);
    }
    ::close(listener);
    // The peak so far is forgotten: what follows is this request's.
    QFile reset(QStringLiteral("/proc/self/clear_refs"));
    if (reset.open(QIODevice::WriteOnly)) {
        reset.write("5");
    }
    const double before = statusMiB("VmRSS");
    const QUrl base(QStringLiteral("http://127.0.0.1:%1").arg(ntohs(address.sin_port)));
    QElapsedTimer clock;
    clock.start();
    QString outcome;
    {
        OpenAIClient client(QStringLiteral("sk-admin-bench"), base);
        bool done = false;
        auto run = [&]() -> QCoro::Task<> {
            try {
                const OpenAIClient::Response response =
                    co_await client.get(base.resolved(QUrl(QStringLiteral("/v1"))));
                outcome = QStringLiteral("a body of %1 bytes").arg(response.body.size());
            } catch (const OpenAIClient::TransportError& error) {
                outcome = error.message;
            }
            done = true;
        };
        run();
        while (!done) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
    const qint64 elapsed = clock.elapsed();
    ::kill(server, SIGTERM);
    ::waitpid(server, nullptr, 0);
    const char* const how = framing == Framing::announced ? "its length announced"
                            : framing == Framing::chunked ? "sent in chunks"
                                                          : "ended by closing the connection";
    std::printf("body of %lld MiB, %s: %s after %lld ms\n", mib, how, qPrintable(outcome),
                static_cast<long long>(elapsed));
    std::printf("  resident before %.1f MiB, peak %.1f MiB (%.1f MiB above)\n", before, statusMiB("VmHWM"),
                statusMiB("VmHWM") - before);
}
} // namespace

int main(int argc, char* argv[]) {
    const long long mib = argc > 1 ? std::atoll(argv[1]) : 512;
    signal(SIGPIPE, SIG_IGN);
    QCoreApplication app(argc, argv);
    measure(mib, Framing::closed);
    measure(mib, Framing::chunked);
    measure(mib, Framing::announced);
    return 0;
}
