#include "f7/f7_exchanges.h"

#include "session/dev_obj.h"

namespace {

constexpr std::array<uint8_t, 4> handshake_code = {0x0A, 0x15, 0x12, 0x03};
constexpr auto handshake = f7_frame(f7_command_handshake, std::span(handshake_code));
constexpr std::size_t bytes_per_group = 5; ///< of a whole reply in the log

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

// The reply buffer is zeroed before each read, so a reply that leaves its last zero byte out is as good.
std::optional<reply_fault> handshake_fault(const session_run& run) {
    if (f7_check_is_good(run.reply, 4) && f7_starts_with(run.reply, f7_command_handshake, f7_acknowledged))
        return std::nullopt;
    return wrong_reply(run, handshake_texts);
}

std::optional<reply_fault> ack_check_fault(const session_run& run) {
    if (f7_check_is_good(run.reply, 4)) return std::nullopt;
    return reply_fault{text_check_failed, run.log_text(log_write_check) + hex(run, 6) + "\n"};
}

// An acknowledgement with a foreign header is reported, but the module may well have taken the frame.
std::optional<reply_fault> ack_header_fault(const session_run& run) {
    if (f7_starts_with(run.reply, f7_command_write, f7_acknowledged)) return std::nullopt;
    const bool ours = f7_starts_with(run.reply, f7_command_write);
    return reply_fault{text_check_failed, run.log_text(log_write_refused) + hex(run, 5) + "\n\n", !ours};
}

constexpr reply_check handshake_checks[] = {
    {{50, text_check_handshake}, handshake_fault},
};
constexpr reply_check write_checks[] = {
    {{60, text_check_config}, ack_check_fault},
    {{70, text_check_config}, ack_header_fault},
};

} // namespace

constexpr exchange f7_handshake = {
    .texts = &handshake_texts,
    .say = {40, text_send_handshake},
    .request = handshake,
    .say_reply = {40, text_read_handshake},
    .reply = f7_ack_bytes,
    .checks = handshake_checks,
};
constexpr exchange f7_write = {
    .texts = &write_texts,
    .say = {30, text_write_config},
    .say_reply = {50, text_write_config},
    .reply = f7_ack_bytes,
    .checks = write_checks,
};
// A good check is enough: modules of other makes answer with a header of their own.
std::optional<reply_fault> f7_firmware_fault(const session_run& run) {
    if (f7_check_is_good(run.reply, 9)) return std::nullopt;
    return wrong_reply(run, firmware_texts);
}

std::optional<reply_fault> f7_image_check_fault(const session_run& run) {
    if (f7_check_is_good(run.reply, f7_image_frame_size - 1)) return std::nullopt;
    return reply_fault{text_check_failed,
                       run.log_text(log_read_check) + hex_groups(run, f7_image_frame_size) + "\n"};
}

std::optional<reply_fault> f7_image_header_fault(const session_run& run) {
    if (f7_starts_with(run.reply, f7_command_read, f7_image_size)) return std::nullopt;
    return reply_fault{text_verify_failed, log_read_header, true};
}

void f7_accept_image(session_run& run) {
    const auto image = std::span(run.reply).subspan(f7_head_size, f7_image_size);
    run.image.assign(image.begin(), image.end());
}

f7_image f7_image_of(dev_obj& dev) { return std::span(dev.image).first<f7_image_size>(); }
f7_image_view f7_image_of(const dev_obj& dev) { return std::span(dev.image).first<f7_image_size>(); }

session_bytes f7_acknowledgement(std::span<const uint8_t> /*request*/) {
    session_bytes answer = {0xF7, 0xF8, f7_command_write, f7_acknowledged};
    answer.push_back(f7_check(answer));
    answer.push_back(0); // what f7_check_is_good looks for behind the check
    return answer;
}

std::vector<session_bytes> f7_requests(const dev_obj& dev, session_kind kind, bool /*alternative*/) {
    if (kind != session_kind::write) return {};
    const f7_image_frame frame = f7_write_frame(f7_image_of(dev));
    return {{frame.begin(), frame.end()}};
}
