#include "model/AgentBudget.h"

#include "model/UsageWindow.h"
#include "model/ValueHashing.h"

UsageHealth AgentBudget::health() const {
    const UsageWindow shortWindow{.id = name + u"-short",
                                  .title = QStringLiteral("Short term"),
                                  .unit = unit,
                                  .horizon = UsageHorizon::shortTerm,
                                  .used = shortUsed,
                                  .limit = shortLimit};
    const UsageWindow weeklyWindow{.id = name + u"-weekly",
                                   .title = QStringLiteral("Weekly"),
                                   .unit = unit,
                                   .horizon = UsageHorizon::weekly,
                                   .used = weeklyUsed,
                                   .limit = weeklyLimit};
    return UsageHealth::aggregate({shortWindow.health(), weeklyWindow.health()});
}

size_t qHash(const AgentBudget& b, size_t seed) {
    return hashFields(seed, b.id, b.name, b.unit, b.shortUsed, b.shortLimit, b.weeklyUsed, b.weeklyLimit);
}
