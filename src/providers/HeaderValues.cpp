#include "providers/HeaderValues.h"

#include <QRegularExpression>

#include <cmath>

HeaderValues::HeaderValues(const QList<QPair<QByteArray, QByteArray>>& rawHeaders) {
    for (const auto& [name, value] : rawHeaders) {
        m_values.insert(QString::fromLatin1(name).toLower(), QString::fromLatin1(value));
    }
}

std::optional<QString> HeaderValues::string(const QString& name) const {
    const auto found = m_values.constFind(name.toLower());
    if (found == m_values.cend()) {
        return std::nullopt;
    }
    return *found;
}

std::optional<double> HeaderValues::number(const QString& name) const {
    const std::optional<QString> text = string(name);
    if (!text) {
        return std::nullopt;
    }
    // The whole text must be the number: no blanks around it, the C locale's grammar.
    bool ok = false;
    const double value = text->toDouble(&ok);
    // "nan", "inf" and overflowing exponents parse, but are no count a server means.
    if (!ok || !std::isfinite(value) || text->trimmed().size() != text->size()) {
        return std::nullopt;
    }
    return value;
}

std::optional<Timestamp> HeaderValues::resetDate(const QString& name, Timestamp now) const {
    const std::optional<QString> text = string(name);
    if (!text) {
        return std::nullopt;
    }
    const std::optional<double> seconds = duration(*text);
    if (!seconds) {
        return std::nullopt;
    }
    const Timestamp reset = now.addingSeconds(*seconds);
    return reset.isWithinRange() ? std::optional<Timestamp>(reset) : std::nullopt;
}

std::optional<double> HeaderValues::duration(const QString& text) {
    // "ms" stands before "m" so that milliseconds are never read as minutes.
    static const QRegularExpression part(QStringLiteral("([0-9]+(?:\\.[0-9]+)?)(ms|s|m|h|d)"));
    if (!part.isValid()) {
        return std::nullopt;
    }
    double total = 0.0;
    bool matched = false;
    auto matches = part.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        matched = true;
        if (match.lastCapturedIndex() != 2) {
            continue;
        }
        bool ok = false;
        const double amount = match.captured(1).toDouble(&ok);
        if (!ok || !std::isfinite(amount)) {
            return std::nullopt; // an amount too large to read: no duration, not zero
        }
        const QString unit = match.captured(2);
        const double factor = unit == u"ms"  ? 0.001
                              : unit == u"s" ? 1.0
                              : unit == u"m" ? 60.0
                              : unit == u"h" ? 3600.0
                                             : 86400.0;
        total += amount * factor;
    }
    // Hundreds of digits sum to infinity: no duration at all.
    return matched && std::isfinite(total) ? std::optional<double>(total) : std::nullopt;
}
