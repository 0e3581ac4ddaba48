// The families that the program without windows serves.
#pragma once

#include "session/family.h"

/// In the order in which models are listed. Any thread.
family_list cli_families();
