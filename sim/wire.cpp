#include "sim/wire.h"

#include <algorithm>
#include <cstring>

namespace sim {

namespace {

// Register image of the generic and the A family, as a new module holds it.
constexpr uint8_t factory_60[60] = {
    0x01, 0x08, 0x01, 0x00,                         // UART 115200, 8 data bits, 1 stop bit, no parity
    0x08, 0x00, 0x00, 0x00,                         // CAN 125K, no check byte
    0x00, 0x08,                                     // filter off, extended frames
    0xFF, 0xFF, 0xFF, 0xFF,                         // acceptance mask
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // codes 0 and 1
    0x00, 0x00, 0x00, 0x00,                         // nothing
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // codes 2 and 3
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // codes 4 and 5
    0x02, 0x00, 0x02, 0x00, 0x00,                   // transparent with identifier, both ways, interval 2
    0x08, 0x00, 0x00, 0x00, 0x00,                   // extended frames sent, identifier 0
    0x04, 0x00, 0x40, 0x1A,                         // length 4 from 0, frame head and end
    0x0F, 0x05, 0x01, 0x01,                         // SPI: 15 bytes, time 5, polarity and phase 1
};

// Registers of the B family, least significant byte first.
constexpr uint8_t factory_140[140] = {
    0x01, 0x00, 0x00, 0x00, // 0: custom conversion with checksum
    0x03, 0x00, 0x00, 0x00, // 1: both UARTs, both channels
    0x0A, 0x00, 0x00, 0x00, // 2: UART1 115.2k
    0x0A, 0x00, 0x00, 0x00, // 3: UART2 115.2k
    0x09, 0x09, 0x00, 0x00, // 4: SPI 10 frames, time 10
    0x0A, 0x06, 0x1A, 0x00, // 5: CANFD1 1M, 5M, both modes, both filters, rate switch
    0x0A, 0x06, 0x1A, 0x00, // 6: CANFD2 the same
    // 7 to 26: masks and codes
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x04, 0x00, 0x04, 0x00, // 27: clock divider
    0x01, 0x00, 0x01, 0x00,                                                 // 28: nominal BRP
    0x20, 0x00, 0x20, 0x00,                                                 // 29: nominal TSEG1
    0x08, 0x00, 0x08, 0x00,                                                 // 30: nominal TSEG2
    0x01, 0x00, 0x01, 0x00,                                                 // 31: data BRP
    0x06, 0x00, 0x06, 0x00,                                                 // 32: data TSEG1
    0x02, 0x00, 0x02, 0x00,                                                 // 33: data TSEG2
    0x01, 0x21, 0x18, 0x0A,                                                 // 34: version 1.1.2, October 2024
};

constexpr uint32_t b_registers = 34; ///< writable ones

reply xor_reply(bytes head, bool tail) {
    reply r;
    r.data = std::move(head);
    r.check_at = r.data.size();
    r.data.push_back(xor_check(r.data.data(), r.data.size()));
    r.has_tail = tail;
    if (tail) r.data.push_back(0x00);
    return r;
}

reply crc_reply(bytes head) {
    reply r;
    r.data = std::move(head);
    r.check_at = r.data.size();
    r.data.resize(r.check_at + 2);
    renew_check(tribe::b, &r);
    return r;
}

reply answer_xor(const request& asked, bytes* memory) {
    switch (asked.kind) {
    case request_kind::handshake:
        return xor_reply({0xF7, 0xF8, 0x02, 0x13}, true);
    case request_kind::firmware: {
        bytes head = {0xF7, 0xF8, 0x04, 0x05};
        head.insert(head.end(), std::begin(firmware_data), std::end(firmware_data));
        return xor_reply(head, true);
    }
    case request_kind::read: {
        bytes head = {0xF7, 0xF8, 0x03, 0x3C};
        head.insert(head.end(), memory->begin(), memory->end());
        return xor_reply(head, false);
    }
    case request_kind::write:
        std::copy_n(asked.frame.begin() + 4, 60, memory->begin());
        return xor_reply({0xF7, 0xF8, 0x01, 0x13}, true);
    default:
        return {};
    }
}

reply answer_crc(const request& asked, bytes* memory) {
    if (asked.kind == request_kind::read) {
        bytes head = {asked.frame[0], 0x8E, 0x05, 0xFF};
        head.insert(head.end(), memory->begin(), memory->end());
        return crc_reply(head);
    }
    if (asked.kind != request_kind::write) return {};
    const uint32_t r = asked.frame[4];
    if (r >= b_registers) return refusal(tribe::b, asked);
    std::copy_n(asked.frame.begin() + 5, 4, memory->begin() + 4 * r);
    return crc_reply({asked.frame[0], 0x03, 0x02, 0xFF, 0x80});
}

} // namespace

tribe tribe_of(model m) {
    if (m == model::vkt510a) return tribe::a;
    return m == model::vkt530a || m == model::vkt531a ? tribe::generic : tribe::b;
}

uint8_t xor_check(const uint8_t* data, std::size_t size) {
    uint8_t check = 0;
    for (std::size_t i = 0; i < size; i++) check = static_cast<uint8_t>(check ^ data[i]);
    return check;
}

uint16_t crc_check(const uint8_t* data, std::size_t size) {
    uint32_t crc = 0xFFFF;
    for (std::size_t i = 0; i < size; i++)
        for (uint32_t bit = 0; bit < 8; bit++) {
            const bool out = ((crc ^ (static_cast<uint32_t>(data[i]) >> bit)) & 1) != 0;
            crc = (crc >> 1) ^ (out ? 0x8408u : 0u);
        }
    return static_cast<uint16_t>(~crc);
}

bytes factory_memory(tribe of) {
    if (of == tribe::b) return bytes(std::begin(factory_140), std::end(factory_140));
    return bytes(std::begin(factory_60), std::end(factory_60));
}

reply answer(tribe of, const request& asked, bytes* memory) {
    return of == tribe::b ? answer_crc(asked, memory) : answer_xor(asked, memory);
}

reply refusal(tribe of, const request& asked) {
    if (of == tribe::b) return crc_reply({asked.frame[0], 0x03, asked.frame[2], 0xFF, 0x00});
    return xor_reply({0xF7, 0xF8, asked.frame[2], 0x12}, true);
}

void renew_check(tribe of, reply* r) {
    if (of == tribe::b) {
        const uint16_t crc = crc_check(r->data.data(), r->check_at);
        r->data[r->check_at] = static_cast<uint8_t>(crc & 0xFF);
        r->data[r->check_at + 1] = static_cast<uint8_t>(crc >> 8);
    } else {
        r->data[r->check_at] = xor_check(r->data.data(), r->check_at);
    }
}

} // namespace sim
