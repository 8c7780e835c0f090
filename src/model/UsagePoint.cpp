#include "model/UsagePoint.h"

#include "model/ValueHashing.h"

size_t qHash(const UsagePoint& p, size_t seed) {
    return hashFields(seed, p.date, p.value, p.unit, p.modelName, p.agentLabel);
}
