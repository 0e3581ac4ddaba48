// VKT530A and VKT531A.
#pragma once

#include "session/dev_obj.h"

extern const family_descriptor generic_family;

/// Image from store.
void cfg_image_from_props(dev_obj& dev);
/// Store from image.
void cfg_image_to_props(dev_obj& dev);
/// Brings the bytes that `key` feeds up to date. RET_FAIL when the family has no such key.
ret_t cfg_image_refresh(dev_obj& dev, const char* key);
