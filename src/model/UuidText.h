#pragma once

#include <QString>
#include <QStringView>
#include <QUuid>

#include <optional>

// Accounts are identified by QUuid; where a string is needed it is the upper-case
// canonical text without braces, such as "E621E1F8-C36C-495A-93FC-0C247A3E6E5F".
class UuidText final {
public:
    UuidText() = delete;

    static QString toText(const QUuid& uuid);
    // Accepts either case, with or without braces; anything else is absent.
    static std::optional<QUuid> fromText(QStringView text);
};
