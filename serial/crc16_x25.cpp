#include "serial/crc16_x25.h"

#include <array>

namespace {

constexpr std::array<uint16_t, 256> make_table() {
    std::array<uint16_t, 256> table{};
    for (uint32_t byte = 0; byte < 256; ++byte) {
        uint32_t crc = byte;
        for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? (crc >> 1) ^ 0x8408u : crc >> 1;
        table[byte] = static_cast<uint16_t>(crc);
    }
    return table;
}

constexpr std::array<uint16_t, 256> table = make_table();

} // namespace

uint16_t crc16_x25(const uint8_t* data, std::size_t size) {
    uint32_t crc = 0xFFFF;
    for (std::size_t i = 0; i < size; ++i) crc = (crc >> 8) ^ table[(crc ^ data[i]) & 0xFF];
    return static_cast<uint16_t>(~crc);
}
