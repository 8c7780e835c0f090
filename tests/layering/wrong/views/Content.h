#pragma once

// Content that draws: a GUI header left of the widget kit.
#include <QtWidgets/QWidget>

// Content and editor include each other: a cycle of folders and of files.
#include "editor/Form.h"
