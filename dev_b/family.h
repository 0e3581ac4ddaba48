// VKT610B, VKT630B and VKT631B.
#pragma once

#include "dev_b/vkt610b_codec.h"
#include "session/dev_obj.h"

extern const family_descriptor vkt610b_family;

/// The registers of a device's image.
vkt610b_image_view vkt610b_image_of(const dev_obj& dev);
/// The listing of a device's write commands; the alternative form starts with AC. `spans`, where given, receives
/// where the registers' bytes stand.
std::string vkt610b_code_mode(const dev_obj& dev, code_form form, code_spans* spans = nullptr);
