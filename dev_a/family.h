// VKT510A.
#pragma once

#include "session/dev_obj.h"

extern const family_descriptor vkt510a_family;
