#include "model/UuidText.h"

QString UuidText::toText(const QUuid& uuid) {
    return uuid.toString(QUuid::WithoutBraces).toUpper();
}

std::optional<QUuid> UuidText::fromText(QStringView text) {
    const QUuid uuid = QUuid::fromString(text);
    if (uuid.isNull() && text.trimmed() != u"00000000-0000-0000-0000-000000000000") {
        return std::nullopt;
    }
    return uuid;
}
