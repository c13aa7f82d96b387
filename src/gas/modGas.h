#pragma once

// What the document model offers.
#include "gas/browse.h"
#include "gas/chain.h"
#include "gas/load.h"
#include "gas/query.h"
#include "gas/template.h"
#include "gas/tree.h"
