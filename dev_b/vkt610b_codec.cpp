#include "dev_b/vkt610b_codec.h"

#include "serial/crc16_x25.h"
#include "toolkit/core/text.h"

namespace {

constexpr std::array<uint8_t, 2> first_bytes = {0xAA, 0xAC};

uint8_t first_byte(vkt610b_form form) { return first_bytes[static_cast<std::size_t>(form)]; }

/// Puts the CRC of all bytes before the last two into those two, low byte first.
template <std::size_t N>
void seal(std::array<uint8_t, N>& frame) {
    const uint16_t crc = crc16_x25(frame.data(), N - 2);
    frame[N - 2] = static_cast<uint8_t>(crc & 0xFF);
    frame[N - 1] = static_cast<uint8_t>(crc >> 8);
}

bool is_byte(const vkt610b_field& field) { return field.width <= 8; }

uint32_t get(const tk_object* props, const vkt610b_field& field) {
    if (is_byte(field))
        return tk_object_get_prop_uint8(props, field.key.text, static_cast<uint8_t>(field.fallback));
    return tk_object_get_prop_uint32(props, field.key.text, field.fallback);
}

ret_t set(tk_object* props, const vkt610b_field& field, uint32_t value) {
    if (is_byte(field)) return tk_object_set_prop_uint8(props, field.key.text, static_cast<uint8_t>(value));
    return tk_object_set_prop_uint32(props, field.key.text, value);
}

} // namespace

vkt610b_state& vkt610b_state_get() {
    static vkt610b_state state;
    return state;
}

void vkt610b_props_to_regs(const tk_object* props, vkt610b_regs_t& regs) {
    regs.fill(0);
    for (const auto& field : vkt610b_fields) {
        const uint32_t value = get(props, field) << field.bit;
        uint32_t& word = regs[field.word];
        word = field.adds ? word + value : word | value;
    }
}

ret_t vkt610b_regs_to_props(const vkt610b_regs_t& regs, tk_object* props) {
    for (const auto& field : vkt610b_fields) {
        const uint32_t mask = field.width == 32 ? 0xFFFFFFFFu : (1u << field.width) - 1;
        set(props, field, (regs[field.word] >> field.bit) & mask);
    }
    return RET_OK;
}

void vkt610b_regs_from_bytes(std::span<const uint8_t, vkt610b_image_bytes> bytes, vkt610b_regs_t& regs) {
    for (std::size_t r = 0; r < regs.size(); ++r) {
        regs[r] = 0;
        for (std::size_t i = 0; i < 4; ++i) regs[r] |= static_cast<uint32_t>(bytes[4 * r + i]) << (8 * i);
    }
}

void vkt610b_rebuild(const tk_object* props, vkt610b_state& state) {
    state.source = props;
    state.built = true;
    vkt610b_props_to_regs(props, state.regs);
    for (const auto form : {vkt610b_form::aa, vkt610b_form::ac}) {
        const auto f = static_cast<std::size_t>(form);
        state.listing[f].clear();
        for (std::size_t r = 0; r < vkt610b_writable_count; ++r) {
            state.commands[f][r] = vkt610b_write_command(form, static_cast<uint8_t>(r), state.regs[r]);
            state.listing[f] += vkt610b_listing_line(state.commands[f][r]);
        }
    }
}

vkt610b_command vkt610b_write_command(vkt610b_form form, uint8_t reg, uint32_t value) {
    vkt610b_command out = {first_byte(form), 0x07, 0x02, 0xFF, reg};
    for (std::size_t i = 0; i < 4; ++i) out[5 + i] = static_cast<uint8_t>(value >> (8 * i));
    seal(out);
    return out;
}

std::string vkt610b_listing_line(const vkt610b_command& command) {
    std::string line = tk_format("寄存器 %02X 的配置指令: ", static_cast<unsigned>(command[4]));
    constexpr char digits[] = "0123456789ABCDEF";
    for (const uint8_t byte : command) {
        line += digits[byte >> 4];
        line += digits[byte & 0x0F];
    }
    return line += '\n';
}

vkt610b_request vkt610b_read_request(vkt610b_form form) {
    vkt610b_request out = {first_byte(form), 0x02, 0x05, 0xFF};
    seal(out);
    return out;
}

std::string vkt610b_version_text(uint32_t version) {
    const auto byte = [version](int i) { return (version >> (8 * i)) & 0xFF; };
    return tk_format("V%u.%u.%u %u年%u月", byte(0), byte(1) & 0x0F, byte(1) >> 4, byte(2), byte(3));
}

int vkt610b_route_entry(uint8_t protocol, uint8_t channel) {
    for (std::size_t i = 0; i < vkt610b_routes.size(); ++i)
        if (vkt610b_routes[i].protocol == protocol && vkt610b_routes[i].channel == channel)
            return static_cast<int>(i);
    return 0;
}
