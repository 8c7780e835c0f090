#include "model/UsageHorizon.h"

#include <algorithm>
#include <initializer_list>

QString UsageHorizon::title() const {
    switch (value()) {
    case shortTerm:
        return QStringLiteral("Short term");
    case weekly:
        return QStringLiteral("Weekly");
    case billing:
        return QStringLiteral("Billing");
    case historical:
        return QStringLiteral("History");
    case unspecified:
        return QStringLiteral("Other");
    }
    Q_UNREACHABLE();
    return QString();
}

QString UsageHorizon::systemImage() const {
    switch (value()) {
    case shortTerm:
        return QStringLiteral("bolt.fill");
    case weekly:
        return QStringLiteral("calendar");
    case billing:
        return QStringLiteral("creditcard.fill");
    case historical:
        return QStringLiteral("chart.xyaxis.line");
    case unspecified:
        return QStringLiteral("ellipsis.circle");
    }
    Q_UNREACHABLE();
    return QString();
}

UsageHorizon UsageHorizon::infer(const QString& id, const QString& title) {
    const QString text = (id + u' ' + title).toLower();
    const auto containsAny = [&text](std::initializer_list<QStringView> needles) {
        return std::any_of(needles.begin(), needles.end(),
                           [&text](QStringView needle) { return text.contains(needle); });
    };
    if (containsAny({u"minute", u"hour", u"rate-window"})) {
        return shortTerm;
    }
    if (containsAny({u"week", u"7-day", u"7 days"})) {
        return weekly;
    }
    if (containsAny({u"billing", u"spend", u"period"})) {
        return billing;
    }
    if (containsAny({u"selected-range", u"history"})) {
        return historical;
    }
    return unspecified;
}
