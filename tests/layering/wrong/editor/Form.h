#pragma once

#include "views/Content.h"
