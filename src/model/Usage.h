#pragma once

// The vocabulary of the program: enumerations, usage records, their JSON form,
// quota arithmetic and health rules.

#include "AIProvider.h"
#include "AccountKind.h"
#include "AgentBudget.h"
#include "Clock.h"
#include "ConnectionMode.h"
#include "JsonResult.h"
#include "ProviderConnectionMetadata.h"
#include "QuotaMath.h"
#include "SyncStatus.h"
#include "Timestamp.h"
#include "UsageHealth.h"
#include "UsageHorizon.h"
#include "UsageJson.h"
#include "UsageModelSummary.h"
#include "UsagePoint.h"
#include "UsageSnapshot.h"
#include "UsageSource.h"
#include "UsageUnit.h"
#include "UsageWindow.h"
#include "UuidText.h"
