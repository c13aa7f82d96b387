#pragma once

// The archive builder's command and its start.
#include "tank/build.h"
#include "tank/launcher.h"
