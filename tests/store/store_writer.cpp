// Saves one account again and again until it is killed; prints each committed round.
#include "store/AccountStore.h"

#include <QCoreApplication>
#include <QTextStream>

#include <cstdio>

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    QString error;
    auto store = AccountStore::open(QCoreApplication::arguments().value(1), &error);
    if (!store) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return 1;
    }
    if (store->accounts().isEmpty()) {
        store->insert(new ProviderAccount(ProviderAccount::Init{.provider = AIProvider::openAI,
                                                                .label = QStringLiteral("Crash"),
                                                                .accountKind = AccountKind::api}));
    }
    ProviderAccount* account = store->accounts().first();
    for (qint64 round = 1;; ++round) {
        account->setAgentCount(round);
        account->setSyncMessage(QString::number(round));
        account->setSnapshotHistoryData(QByteArray(4096 + round % 1024, 'x'));
        if (!store->save(&error)) {
            std::fprintf(stderr, "%s\n", qPrintable(error));
            return 2;
        }
        std::printf("%lld\n", static_cast<long long>(round));
        std::fflush(stdout);
    }
}
