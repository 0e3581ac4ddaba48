#include "dev_b/vkt610b_session_ops.h"

#include "config/dev_obj.h"
#include "serial/b_ops.h"

static_assert(b_register_count == vkt610b_writable_count && b_image_bytes == vkt610b_image_bytes);

namespace {

tk_object* props() {
    const dev_obj* dev = dev_get(family::b);
    return dev == nullptr ? nullptr : dev->props;
}

vkt610b_form form_of(bool ac) { return ac ? vkt610b_form::ac : vkt610b_form::aa; }

b_read_request read_request(bool ac) { return vkt610b_read_request(form_of(ac)); }

b_write_frame write_frame(uint32_t r, bool ac) {
    return vkt610b_state_ready().commands[static_cast<std::size_t>(form_of(ac))][r];
}

void accept_image(std::span<const uint8_t, b_image_bytes> image) {
    vkt610b_regs_from_bytes(image, vkt610b_state_get().regs);
    vkt610b_decode(nullptr);
    vkt610b_encode(nullptr);
}

} // namespace

vkt610b_state& vkt610b_state_ready() {
    vkt610b_state& state = vkt610b_state_get();
    if (!state.built || state.source != props()) vkt610b_rebuild(props(), state);
    return state;
}

ret_t vkt610b_encode(void*) {
    if (props() == nullptr) return RET_FAIL;
    vkt610b_rebuild(props(), vkt610b_state_get());
    return RET_OK;
}

ret_t vkt610b_decode(void*) {
    if (props() == nullptr) return RET_FAIL;
    return vkt610b_regs_to_props(vkt610b_state_get().regs, props());
}

void vkt610b_session_ops_register() {
    b_session_ops_register(
        {.read_request = read_request, .write_frame = write_frame, .accept_image = accept_image});
}
