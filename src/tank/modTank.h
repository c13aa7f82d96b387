#pragma once

// What the archive viewer offers.
#include "tank/library.h"
#include "tank/reports.h"
#include "tank/wrappers.h"
