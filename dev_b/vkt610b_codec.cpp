#include "dev_b/vkt610b_codec.h"

#include "serial/crc16_x25.h"
#include "toolkit/core/text.h"

namespace {

constexpr std::array<uint8_t, 2> first_bytes = {0xAA, 0xAC};

constexpr std::size_t reg_in_command = 4;
constexpr std::size_t value_in_command = 5;

uint8_t first_byte(vkt610b_form form) { return first_bytes[static_cast<std::size_t>(form)]; }

/// Puts the CRC of all bytes before the last two into those two, low byte first.
template <std::size_t N>
void seal(std::array<uint8_t, N>& frame) {
    const uint16_t crc = crc16_x25(frame.data(), N - 2);
    frame[N - 2] = static_cast<uint8_t>(crc & 0xFF);
    frame[N - 1] = static_cast<uint8_t>(crc >> 8);
}

uint32_t get(const tk_object* props, const field& row) {
    if (row.form == value_form::word) return tk_object_get_prop_uint32(props, row.key, row.fallback);
    return tk_object_get_prop_uint8(props, row.key, static_cast<uint8_t>(row.fallback));
}

void set(tk_object* props, const field& row, uint32_t value) {
    if (row.form == value_form::word)
        tk_object_set_prop_uint32(props, row.key, value);
    else
        tk_object_set_prop_uint8(props, row.key, static_cast<uint8_t>(value));
}

} // namespace

vkt610b_regs vkt610b_props_to_regs(const tk_object* props) {
    vkt610b_regs regs{};
    for (const field& row : vkt610b_fields) {
        const uint32_t value = get(props, row) << row.place.bit;
        uint32_t& word = regs[row.place.at];
        word = row.adds ? word + value : word | value;
    }
    return regs;
}

void vkt610b_regs_to_props(const vkt610b_regs& regs, tk_object* props) {
    for (const field& row : vkt610b_fields) {
        const uint32_t mask = row.place.bits == 32 ? 0xFFFFFFFFu : (1u << row.place.bits) - 1;
        set(props, row, (regs[row.place.at] >> row.place.bit) & mask);
    }
}

vkt610b_regs vkt610b_regs_from_bytes(vkt610b_image_view bytes) {
    vkt610b_regs regs{};
    for (std::size_t i = 0; i < bytes.size(); ++i) regs[i / 4] |= static_cast<uint32_t>(bytes[i]) << (8 * (i % 4));
    return regs;
}

void vkt610b_regs_to_bytes(const vkt610b_regs& regs, vkt610b_image bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(regs[i / 4] >> (8 * (i % 4)));
}

std::array<vkt610b_command, vkt610b_writable_count> vkt610b_write_commands(vkt610b_image_view image,
                                                                           vkt610b_form form) {
    const vkt610b_regs regs = vkt610b_regs_from_bytes(image);
    std::array<vkt610b_command, vkt610b_writable_count> out{};
    for (std::size_t r = 0; r < out.size(); ++r)
        out[r] = vkt610b_write_command(form, static_cast<uint8_t>(r), regs[r]);
    return out;
}

std::string vkt610b_listing(vkt610b_image_view image, vkt610b_form form, code_spans* spans) {
    std::string text;
    for (const vkt610b_command& command : vkt610b_write_commands(image, form)) {
        text += vkt610b_listing_line(command);
        // A line ends with its command's digits.
        const std::size_t value_at = text.size() - 1 - 2 * (command.size() - value_in_command);
        if (spans != nullptr) spans->push_back({value_at, 4u * command[reg_in_command], 4});
    }
    return text;
}

vkt610b_command vkt610b_command_in(vkt610b_form form, std::span<const uint8_t> command) {
    vkt610b_command out{};
    std::copy_n(command.begin(), std::min(command.size(), out.size()), out.begin());
    out[0] = first_byte(form);
    seal(out);
    return out;
}

bool vkt610b_check_is_good(std::span<const uint8_t> frame) {
    if (frame.size() < 2) return false;
    const uint16_t crc = crc16_x25(frame.data(), frame.size() - 2);
    return frame[frame.size() - 2] == (crc & 0xFF) && frame.back() == crc >> 8;
}

vkt610b_command vkt610b_write_command(vkt610b_form form, uint8_t reg, uint32_t value) {
    vkt610b_command out = {first_byte(form), 0x07, 0x02, 0xFF, reg};
    for (std::size_t i = 0; i < 4; ++i) out[value_in_command + i] = static_cast<uint8_t>(value >> (8 * i));
    seal(out);
    return out;
}

vkt610b_answer vkt610b_acknowledgement(std::span<const uint8_t> command) {
    vkt610b_answer out = {command.empty() ? first_byte(vkt610b_form::aa) : command.front(), 0x03, 0x02, 0xFF, 0x80};
    seal(out);
    return out;
}

std::string vkt610b_listing_line(const vkt610b_command& command) {
    std::string line = tk_format("寄存器 %02X 的配置指令: ", static_cast<unsigned>(command[reg_in_command]));
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
