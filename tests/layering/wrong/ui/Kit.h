#pragma once

struct Kit {};
