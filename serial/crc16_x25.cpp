#include "serial/crc16_x25.h"

#include <array>

namespace {

constexpr std::size_t block = 8; // bytes that are looked up side by side

using table = std::array<uint16_t, 256>;

/// Table k holds what a byte becomes that is followed by k zero bytes.
constexpr std::array<table, block> make_tables() {
    std::array<table, block> made{};
    for (uint32_t byte = 0; byte < 256; ++byte) {
        uint32_t crc = byte;
        for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? (crc >> 1) ^ 0x8408u : crc >> 1;
        made[0][byte] = static_cast<uint16_t>(crc);
    }
    for (std::size_t k = 1; k < block; ++k)
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const uint32_t before = made[k - 1][byte];
            made[k][byte] = static_cast<uint16_t>((before >> 8) ^ made[0][before & 0xFF]);
        }
    return made;
}

constexpr std::array<table, block> tables = make_tables();

} // namespace

uint16_t crc16_x25(const uint8_t* data, std::size_t size) {
    uint32_t crc = 0xFFFF;
    for (; size >= block; size -= block, data += block)
        crc = static_cast<uint32_t>(tables[7][(crc ^ data[0]) & 0xFF] ^ tables[6][(crc >> 8) ^ data[1]] ^
                                    tables[5][data[2]] ^ tables[4][data[3]] ^ tables[3][data[4]] ^
                                    tables[2][data[5]] ^ tables[1][data[6]] ^ tables[0][data[7]]);
    for (; size > 0; --size, ++data) crc = (crc >> 8) ^ tables[0][(crc ^ *data) & 0xFF];
    return static_cast<uint16_t>(~crc);
}
