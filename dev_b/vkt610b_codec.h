// B-family codec: values, registers and bytes; the frames that read and write them. Plain values in, plain values
// out: any thread.
#pragma once

#include "dev_b/fields.h"

#include "session/code_span.h"

#include <string>

using vkt610b_regs = std::array<uint32_t, vkt610b_register_count>;
using vkt610b_command =
    std::array<uint8_t, 11>; ///< first byte, 07 02 FF, register, value (LSB first), CRC (LSB first)
using vkt610b_answer = std::array<uint8_t, 7>;  ///< first byte, 03 02 FF 80, CRC (LSB first)
using vkt610b_request = std::array<uint8_t, 6>; ///< first byte, 02 05 FF, CRC (LSB first)

inline constexpr std::size_t vkt610b_image_size = 4 * vkt610b_register_count;
using vkt610b_image = std::span<uint8_t, vkt610b_image_size>;
using vkt610b_image_view = std::span<const uint8_t, vkt610b_image_size>;

/// First byte of every request: the two command tables differ in it (and in the checksum).
enum class vkt610b_form : uint8_t { aa = 0, ac = 1 };
constexpr vkt610b_form vkt610b_form_of(bool alternative) {
    return alternative ? vkt610b_form::ac : vkt610b_form::aa;
}

/// Packs the registers from the store, each missing key by its fallback; bits that no key names become 0. A uint8
/// value wider than its field spills into the next one. A null store packs the fallbacks.
vkt610b_regs vkt610b_props_to_regs(const tk_object* props);
/// Unpacks the registers into the store.
void vkt610b_regs_to_props(const vkt610b_regs& regs, tk_object* props);
/// The registers as a read-all reply carries them, each least significant byte first.
vkt610b_regs vkt610b_regs_from_bytes(vkt610b_image_view bytes);
void vkt610b_regs_to_bytes(const vkt610b_regs& regs, vkt610b_image bytes);

/// The commands that write all writable registers of an image, in order.
std::array<vkt610b_command, vkt610b_writable_count> vkt610b_write_commands(vkt610b_image_view image,
                                                                           vkt610b_form form);
/// What the code view shows: one line for each of these commands. `spans`, where given, receives where the
/// registers' bytes stand.
std::string vkt610b_listing(vkt610b_image_view image, vkt610b_form form, code_spans* spans = nullptr);
/// The same command in another form.
vkt610b_command vkt610b_command_in(vkt610b_form form, std::span<const uint8_t> command);
/// The last two bytes are the CRC-16/X-25 of those before, low byte first. False for fewer than two bytes.
bool vkt610b_check_is_good(std::span<const uint8_t> frame);

/// The command that writes `value` into register `reg` (0 to 33). CRC-16/X-25 over the first nine bytes.
vkt610b_command vkt610b_write_command(vkt610b_form form, uint8_t reg, uint32_t value);
/// What a module answers to a write command that it has taken.
vkt610b_answer vkt610b_acknowledgement(std::span<const uint8_t> command);
/// "寄存器 00 的配置指令: AA0702FF00010000001D2C\n": register number and bytes in upper-case hex.
std::string vkt610b_listing_line(const vkt610b_command& command);
/// The request that reads all registers.
vkt610b_request vkt610b_read_request(vkt610b_form form);

/// "V1.1.2 24年10月" of a version register: byte 0, low nibble of byte 1, high nibble of byte 1, byte 2 (year),
/// byte 3 (month). The low nibble comes first on purpose.
std::string vkt610b_version_text(uint32_t version);

/// Serial side and CAN side are chosen together; the row number is the entry's place in the list.
struct vkt610b_route {
    uint8_t protocol; ///< 0 UART1, 1 UART1 and UART2, 2 SPI
    uint8_t channel;  ///< 0 CANFD1, 1 CANFD1 and CANFD2
    const char* text;
};
inline constexpr std::array<vkt610b_route, 5> vkt610b_routes = {{
    {0, 0, "UART1转CANFD1"},
    {0, 1, "UART1转CANFD1和CANFD2"},
    {1, 1, "UART1和UART2转CANFD1和CANFD2"},
    {2, 0, "SPI转CANFD1"},
    {2, 1, "SPI转CANFD1和CANFD2"},
}};
/// The entry of a stored pair; 0 for a pair that has none (protocol 1 with channel 0, protocol 3, anything wider).
int vkt610b_route_entry(uint8_t protocol, uint8_t channel);
