#pragma once

// What the shared services offer.
#include "services/bytes.h"
#include "services/commandfile.h"
#include "services/errors.h"
#include "services/files.h"
#include "services/histories.h"
#include "services/host.h"
#include "services/keys.h"
#include "services/pickers.h"
#include "services/program.h"
#include "services/progress.h"
#include "services/settings.h"
#include "services/shell.h"
#include "services/text.h"
