// B-family codec: register image, register write commands, their listing, and the frames of a read.
//
// Nothing here locks. The state below belongs to the mutex of the B family's device object: whoever packs, unpacks,
// rebuilds or reads it, on whatever thread, holds that mutex.
#pragma once

#include "dev_b/vkt610b_map.h"
#include "toolkit/core/object.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>

using vkt610b_regs_t = std::array<uint32_t, vkt610b_register_count>;
using vkt610b_command =
    std::array<uint8_t, 11>; ///< first byte, 07 02 FF, register, value (LSB first), CRC (LSB first)
using vkt610b_request = std::array<uint8_t, 6>; ///< first byte, 02 05 FF, CRC (LSB first)

inline constexpr std::size_t vkt610b_image_bytes = 4 * vkt610b_register_count;

/// First byte of every request: the two command tables differ in it (and in the checksum).
enum class vkt610b_form : uint8_t { aa = 0, ac = 1 };
/// The form that a value of the home page's "code_mode_vkt610b" chooses: 0 AA, any other AC.
constexpr vkt610b_form vkt610b_form_of(int selector) { return selector == 0 ? vkt610b_form::aa : vkt610b_form::ac; }

/// One per process.
struct vkt610b_state {
    vkt610b_regs_t regs{};
    /// [form][register]
    std::array<std::array<vkt610b_command, vkt610b_writable_count>, 2> commands{};
    /// [form]: 34 lines, each with its line end
    std::array<std::string, 2> listing;
    const tk_object* source = nullptr; ///< the store it was built from; never looked into
    bool built = false;
};
vkt610b_state& vkt610b_state_get();

/// Packs the registers from the store, each missing key by its fallback; bits that no key names become 0. A uint8
/// value wider than its field spills into the next one. A null store packs the fallbacks.
void vkt610b_props_to_regs(const tk_object* props, vkt610b_regs_t& regs);
/// Unpacks the registers into the store. Always RET_OK.
ret_t vkt610b_regs_to_props(const vkt610b_regs_t& regs, tk_object* props);
/// The registers of the 140 bytes of a read-all reply, each least significant byte first.
void vkt610b_regs_from_bytes(std::span<const uint8_t, vkt610b_image_bytes> bytes, vkt610b_regs_t& regs);

/// Packs the registers and builds both command tables and both listings from them.
void vkt610b_rebuild(const tk_object* props, vkt610b_state& state);

/// The command that writes `value` into register `reg` (0 to 33). CRC-16/X-25 over the first nine bytes.
vkt610b_command vkt610b_write_command(vkt610b_form form, uint8_t reg, uint32_t value);
/// "寄存器 00 的配置指令: AA0702FF00010000001D2C\n": register number and bytes in upper-case hex.
std::string vkt610b_listing_line(const vkt610b_command& command);
/// The request that reads all registers.
vkt610b_request vkt610b_read_request(vkt610b_form form);

/// "V1.1.2 24年10月" of a version register: byte 0, low nibble of byte 1, high nibble of byte 1, byte 2 (year),
/// byte 3 (month). The low nibble comes first on purpose.
std::string vkt610b_version_text(uint32_t version);

/// Serial side and CAN side are chosen together; the row number is the entry's place in the list.
struct vkt610b_route {
    uint8_t protocol; ///< "change_protcol_vkt610b": 0 UART1, 1 UART1 and UART2, 2 SPI
    uint8_t channel;  ///< "change_can_channel_vkt610b": 0 CANFD1, 1 CANFD1 and CANFD2
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
