#pragma once

// Breaks the order: the core reaches up into the widget kit.
#include "ui/Kit.h"
