#include "core/CommandCenter.h"

const QString CommandCenter::kAddAccount = QStringLiteral("Tallyfen.addAccount");
const QString CommandCenter::kRefreshAccounts = QStringLiteral("Tallyfen.refreshAccounts");
const QString CommandCenter::kDeleteSelectedAccount = QStringLiteral("Tallyfen.deleteSelectedAccount");

CommandCenter& CommandCenter::shared() {
    static CommandCenter center;
    return center;
}

void CommandCenter::post(const QString& name) {
    Q_EMIT posted(name);
}
