#include "tests/serial/family_fakes.h"

#include "config/dev_obj.h"
#include "serial/crc16_x25.h"
#include "serial/session.h"

#include <algorithm>

namespace {

void note(family of, const char* call) {
    fakes().calls.push_back(call);
    tk_mutex* lock = session_lock(of);
    if (tk_mutex_try_lock(lock) != RET_OK) return;
    tk_mutex_unlock(lock);
    fakes().lock_was_held = false;
}

ret_t a_encode(void*) {
    note(family::a, "encode");
    fakes().a_image[0] = 0x77;
    return RET_OK;
}
ret_t a_decode(void*) {
    note(family::a, "decode");
    return RET_OK;
}
void a_copy_out(std::span<uint8_t, session_image_bytes> image) {
    note(family::a, "copy_out");
    std::ranges::copy(fakes().a_image, image.begin());
}
void a_put_in(std::span<const uint8_t, session_image_bytes> image) {
    note(family::a, "put_in");
    std::ranges::copy(image, fakes().a_image.begin());
}

template <std::size_t N>
void close_frame(std::array<uint8_t, N>& frame) {
    const uint16_t crc = crc16_x25(frame.data(), N - 2);
    frame[N - 2] = static_cast<uint8_t>(crc & 0xFF);
    frame[N - 1] = static_cast<uint8_t>(crc >> 8);
}

b_read_request b_read(bool ac) {
    if (ac) return {0xAC, 0x02, 0x05, 0xFF, 0xAF, 0x0D};
    return {0xAA, 0x02, 0x05, 0xFF, 0x35, 0x46};
}
b_write_frame b_write(uint32_t r, bool ac) {
    b_write_frame frame = {static_cast<uint8_t>(ac ? 0xAC : 0xAA), 0x07, 0x02, 0xFF, static_cast<uint8_t>(r)};
    std::copy_n(fakes().b_image.begin() + 4 * r, 4, frame.begin() + 5);
    close_frame(frame);
    return frame;
}
void b_accept(std::span<const uint8_t, b_image_bytes> image) {
    note(family::b, "accept_image");
    std::ranges::copy(image, fakes().b_image.begin());
}

} // namespace

fake_families& fakes() {
    static fake_families all;
    return all;
}

void fake_families_register() {
    fakes() = {};
    family_ops ops;
    ops.encode = a_encode;
    ops.decode = a_decode;
    family_ops_register(family::a, ops);
    image_ops_register(family::a, {a_copy_out, a_put_in});
    b_session_ops_register({b_read, b_write, b_accept});
}
