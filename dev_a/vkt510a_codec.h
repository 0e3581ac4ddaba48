// VKT510A: its properties as the rows of the shared register image.
#pragma once

#include "config/register_map.h"
#include "toolkit/core/object.h"
#include "toolkit/core/result.h"

#include <span>

/// The family's map. The check-byte option, the spare bytes and the gap keep what the last reply put there.
std::span<const reg_field> vkt510a_map();

/// Fills the family's image from its device object's properties; `context` is ignored. The caller holds the device
/// object's mutex. RET_FAIL without a device object. Any thread.
ret_t vkt510a_encode(void* context);
/// The opposite direction, under the same rules.
ret_t vkt510a_decode(void* context);

/// Registers encoder and decoder as the family's operations, leaving other slots as they are, and hands the image
/// to its sessions. Before the first dev_open of the family.
void vkt510a_codec_register();
