#pragma once

// The vocabulary of the program: enumerations, usage records, their JSON form,
// quota arithmetic and health rules.

#include "model/AIProvider.h"
#include "model/AccountKind.h"
#include "model/AgentBudget.h"
#include "model/Clock.h"
#include "model/ConnectionMode.h"
#include "model/JsonResult.h"
#include "model/ProviderConnectionMetadata.h"
#include "model/QuotaMath.h"
#include "model/SyncStatus.h"
#include "model/Timestamp.h"
#include "model/UsageHealth.h"
#include "model/UsageHorizon.h"
#include "model/UsageJson.h"
#include "model/UsageModelSummary.h"
#include "model/UsagePoint.h"
#include "model/UsageSnapshot.h"
#include "model/UsageSource.h"
#include "model/UsageUnit.h"
#include "model/UsageWindow.h"
#include "model/UuidText.h"
