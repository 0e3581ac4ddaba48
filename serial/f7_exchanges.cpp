#include "serial/f7_exchanges.h"

#include "serial/image_ops.h"

#include <algorithm>

namespace {

constexpr std::array<uint8_t, 9> handshake = {0xF7, 0xF8, 0x02, 0x04, 0x0A, 0x15, 0x12, 0x03, 0x07};
constexpr std::array<uint8_t, 5> firmware = {0xF7, 0xF8, 0x04, 0x00, 0x0B};
constexpr std::array<uint8_t, 5> read_image = {0xF7, 0xF8, 0x03, 0x00, 0x0C};
constexpr std::array<uint8_t, 4> write_head = {0xF7, 0xF8, 0x01, 0x3C};
constexpr uint8_t acknowledged = 0x13;
constexpr std::size_t head_bytes = 4;
constexpr std::size_t bytes_per_group = 5; ///< of a whole reply in the log

bool starts_with(const session_run& run, std::initializer_list<uint8_t> head) {
    return std::equal(head.begin(), head.end(), run.reply.begin());
}

/// A right XOR at byte `at`, and a zero byte behind it. The buffer is zeroed before each read, so a reply that
/// leaves its last zero byte out is as good.
bool check_is_good(const session_run& run, std::size_t at) {
    return xor_check(std::span(run.reply).first(at)) == run.reply[at] && run.reply[at + 1] == 0;
}

std::string hex(const session_run& run, std::size_t count) {
    return hex_list(std::span(run.reply).first(count), "%02x", " ");
}

std::string hex_groups(const session_run& run, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; i += bytes_per_group) {
        const std::size_t size = std::min(bytes_per_group, count - i);
        if (i != 0) text += ' ';
        text += hex_list(std::span(run.reply).subspan(i, size), "%02x", "");
    }
    return text;
}

/// What a connect that got a wrong reply says: the reply is as good as none.
reply_fault wrong_reply(const session_run& run, const io_texts& texts) {
    return {texts.message.read_result, run.log_text(std::string(texts.read_head) + read_tails.result)};
}

constexpr reply_check handshake_checks[] = {
    {{50, text_check_handshake}, f7_handshake_fault},
};
constexpr reply_check write_checks[] = {
    {{60, text_check_config}, f7_ack_check_fault},
    {{70, text_check_config}, f7_ack_header_fault},
};

} // namespace

constexpr exchange f7_handshake = {
    .texts = &handshake_texts,
    .say = {40, text_send_handshake},
    .request = f7_handshake_request,
    .say_reply = {40, text_read_handshake},
    .reply = f7_ack_bytes,
    .checks = handshake_checks,
};
constexpr exchange f7_write = {
    .texts = &write_texts,
    .say = {30, text_write_config},
    .request = f7_write_request,
    .say_reply = {50, text_write_config},
    .reply = f7_ack_bytes,
    .checks = write_checks,
};

uint8_t xor_check(std::span<const uint8_t> bytes) {
    uint8_t check = 0;
    for (uint8_t byte : bytes) check = static_cast<uint8_t>(check ^ byte);
    return check;
}

void f7_handshake_request(session_run& run) { run.set_request(handshake); }
void f7_firmware_request(session_run& run) { run.set_request(firmware); }
void f7_read_request(session_run& run) { run.set_request(read_image); }

void f7_write_request(session_run& run) {
    std::array<uint8_t, f7_image_bytes> frame{};
    std::copy(write_head.begin(), write_head.end(), frame.begin());
    image_ops_of(run.of).copy_out(std::span(frame).subspan<head_bytes, session_image_bytes>());
    frame.back() = xor_check(std::span(frame).first(frame.size() - 1));
    run.set_request(frame);
}

std::optional<reply_fault> f7_handshake_fault(const session_run& run) {
    if (check_is_good(run, 4) && starts_with(run, {0xF7, 0xF8, 0x02, acknowledged})) return std::nullopt;
    return wrong_reply(run, handshake_texts);
}

// A good check is enough: modules of other makes answer with a header of their own.
std::optional<reply_fault> f7_firmware_fault(const session_run& run) {
    if (check_is_good(run, 9)) return std::nullopt;
    return wrong_reply(run, firmware_texts);
}

std::optional<reply_fault> f7_image_check_fault(const session_run& run) {
    if (check_is_good(run, 64)) return std::nullopt;
    return reply_fault{text_check_failed, run.log_text(log_read_check) + hex_groups(run, f7_image_bytes) + "\n"};
}

std::optional<reply_fault> f7_image_header_fault(const session_run& run) {
    if (starts_with(run, {0xF7, 0xF8, 0x03, session_image_bytes})) return std::nullopt;
    return reply_fault{text_verify_failed, log_read_header, true};
}

std::optional<reply_fault> f7_ack_check_fault(const session_run& run) {
    if (check_is_good(run, 4)) return std::nullopt;
    return reply_fault{text_check_failed, run.log_text(log_write_check) + hex(run, 6) + "\n"};
}

// An acknowledgement with a foreign header is reported, but the module may well have taken the frame.
std::optional<reply_fault> f7_ack_header_fault(const session_run& run) {
    const bool ours = starts_with(run, {0xF7, 0xF8, 0x01});
    if (ours && run.reply[3] == acknowledged) return std::nullopt;
    return reply_fault{text_check_failed, run.log_text(log_write_refused) + hex(run, 5) + "\n\n", !ours};
}

void f7_accept_image(session_run& run) {
    image_ops_of(run.of).put_in(std::span(run.reply).subspan<head_bytes, session_image_bytes>());
}
