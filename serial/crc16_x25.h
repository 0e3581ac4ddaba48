// CRC-16/X-25, the checksum of the B-family configuration frames and of the traffic frames.
#pragma once

#include <cstddef>
#include <cstdint>

/// CRC-16/X-25 (initial value 0xFFFF, reflected polynomial 0x8408, least significant bit first, result inverted) of
/// `size` bytes; the check value of "123456789" is 0x906E (ITU-T X.25 frame check sequence). Any thread.
uint16_t crc16_x25(const uint8_t* data, std::size_t size);
