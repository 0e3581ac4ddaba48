// VKT610B, VKT630B and VKT631B: frames AA (or AC) count function FF data CRC.
#include "dev_b/family.h"

#include "dev_b/vkt610b_codec.h"
#include "dev_b/vkt610b_texts.h"
#include "serial/mode_text.h"
#include "session/session_run.h"
#include "toolkit/core/worker.h"

#include <algorithm>

vkt610b_image_view vkt610b_image_of(const dev_obj& dev) { return std::span(dev.image).first<vkt610b_image_size>(); }

std::string vkt610b_code_mode(const dev_obj& dev, code_form form, code_spans* spans) {
    return vkt610b_listing(vkt610b_image_of(dev), vkt610b_form_of(form.alternative), spans);
}

namespace {

void encode(dev_obj& dev) {
    vkt610b_regs_to_bytes(vkt610b_props_to_regs(dev.props.get()), std::span(dev.image).first<vkt610b_image_size>());
}

void decode(dev_obj& dev) {
    vkt610b_regs_to_props(vkt610b_regs_from_bytes(vkt610b_image_of(dev)), dev.props.get());
}

std::vector<session_bytes> requests(const dev_obj& dev, session_kind kind, bool alternative) {
    const vkt610b_form form = vkt610b_form_of(alternative);
    std::vector<session_bytes> out;
    if (kind == session_kind::read) {
        const vkt610b_request request = vkt610b_read_request(form);
        out.emplace_back(request.begin(), request.end());
    } else if (kind == session_kind::write) {
        for (const vkt610b_command& command : vkt610b_write_commands(vkt610b_image_of(dev), form))
            out.emplace_back(command.begin(), command.end());
    }
    return out;
}

session_bytes acknowledgement(std::span<const uint8_t> request) {
    const vkt610b_answer answer = vkt610b_acknowledgement(request);
    return {answer.begin(), answer.end()};
}

constexpr uint32_t image_reply_bytes = 146;
constexpr uint32_t ack_bytes = std::tuple_size_v<vkt610b_answer>;
constexpr std::size_t image_at = 4;
constexpr int mode_steps = 5;
constexpr int write_code = static_cast<int>(session_kind::write);

/// Bytes 1 and on; byte 0 of a reply is not looked at.
bool header_is(const session_run& run, std::initializer_list<uint8_t> bytes) {
    return std::equal(bytes.begin(), bytes.end(), run.reply.begin() + 1);
}

// ---- connect ----

step_end configure(session_run& run) {
    static constexpr session_report after[] = {
        {20, "SetupComm....."}, {21, "SetCommTimeouts....."}, {22, "SetCommState....."}, {23, "PurgeComm....."}};
    run.port.configure([&run](int call) { run.say(after[call]); });
    run.port.clear_errors();
    run.say({24, "ClearCommError....."});
    return step_end::good;
}

/// The module changes its mode meanwhile; it is not asked who it is.
step_end wait_for_mode(session_run& run) {
    for (int i = 0; i < mode_steps; ++i) {
        run.say({20u + static_cast<uint32_t>(i), text_config_mode, write_code});
        if (!worker_sleep_ms(session_timing_get().mode_step_ms)) return step_end::stopped;
    }
    return step_idle(run);
}

constexpr exchange config_mode = {.texts = &b_config_texts, .request = mode_text_config};
constexpr session_step connect_steps[] = {
    {.act = step_open},
    {.say = {20, text_port_settings}, .act = configure},
    {.with = &config_mode, .act = wait_for_mode},
    {.say = {90, text_init_buttons}, .act = step_connected},
    {.say = {100, text_connected}, .act = step_finished},
};

// ---- read ----

std::optional<reply_fault> image_fault(const session_run& run) {
    if (!vkt610b_check_is_good(std::span(run.reply).first(image_reply_bytes)))
        return reply_fault{b_check_failed, run.log_text(b_log_read_check) + "\n\n"};
    if (!header_is(run, {0x8E, 0x05, 0xFF}))
        return reply_fault{b_check_failed, run.log_text(b_log_read_check) + ":" +
                                               hex_list(std::span(run.reply).first(4), "%02x", "") + "\n\n"};
    return std::nullopt;
}

step_end take_image(session_run& run) {
    step_idle(run);
    const auto image = std::span(run.reply).subspan(image_at, vkt610b_image_size);
    run.image.assign(image.begin(), image.end());
    const uint32_t version = vkt610b_regs_from_bytes(image.first<vkt610b_image_size>()).back();
    if (run.reports.firmware && version != 0) run.reports.firmware(vkt610b_version_text(version));
    return step_image(run);
}

constexpr reply_check image_checks[] = {{{}, image_fault}};
constexpr exchange read_all = {
    .texts = &b_read_texts,
    .say = {30, text_read_config},
    .say_reply = {50, text_read_config},
    .reply = image_reply_bytes,
    .checks = image_checks,
};
constexpr session_step read_steps[] = {
    {.act = step_drain},
    {.with = &read_all, .act = take_image},
    {.act = step_let_go},
    {.say = {80, text_init_buttons}, .act = step_connected},
    {.say = {100, text_read_done}, .act = step_finished},
};

// ---- write ----

/// The log shows the frame of the AA table, whichever was sent.
std::optional<reply_fault> ack_fault(const session_run& run) {
    const auto ack = std::span(run.reply).first(ack_bytes);
    if (vkt610b_check_is_good(ack) && header_is(run, {0x03, 0x02, 0xFF, 0x80})) return std::nullopt;
    return reply_fault{b_check_failed,
                       run.log_text(b_log_write_check) +
                           " send:" + hex_list(vkt610b_command_in(vkt610b_form::aa, run.request), "%02X", " ") +
                           "\n read:" + hex_list(ack, "%02X", " ") + "\n\n"};
}

constexpr reply_check ack_checks[] = {{{}, ack_fault}};
constexpr exchange write_register = {
    .texts = &b_write_texts,
    .say = {35, text_write_config},
    .reply = ack_bytes,
    .checks = ack_checks,
    .times = vkt610b_writable_count,
};
constexpr session_step write_steps[] = {
    {.act = step_drain},
    {.say = {20, text_write_config}, .with = &write_register, .act = step_idle_let_go},
    {.say = {80, text_init_buttons}, .act = step_connected},
    {.say = {100, text_write_done}, .act = step_finished},
};

constexpr session_script scripts[] = {
    {"thread_vkt610b_connect", session_kind::connect, 0, true, connect_steps},
    {"thread_vkt610b_read", session_kind::read, 3, true, read_steps},
    {"thread_vkt610b_write", session_kind::write, 2, true, write_steps},
};

// ---- monitor ----

// UART codes of 300, 1.5M, 3M, 3.5M and 6M baud: the evaluation board cannot use them for data.
constexpr uint8_t refused_rates[] = {0, 16, 19, 20, 23};
constexpr const char* text_rates = "评估板不支持300、1.5M、3M、3.5M、6M波特率收发数据，请更换波特率后重试";

bool rate_refused(uint8_t code) {
    return std::find(std::begin(refused_rates), std::end(refused_rates), code) != std::end(refused_rates);
}

// UART2 counts even where only UART1 is in use.
const char* monitor_refusal(const dev_obj& dev) {
    namespace f = vkt610b_field;
    const auto value = [&dev](const field& what) { return tk_object_get_prop_uint8(dev.props.get(), what.key, 0); };
    const uint8_t protocol = value(f::protocol);
    const uint8_t channel = value(f::can_channel);
    const bool checked = (protocol == 0 && channel <= 1) || (protocol == 1 && channel == 1);
    if (!checked) return nullptr;
    return rate_refused(value(f::uart<1>::rate)) || rate_refused(value(f::uart<2>::rate)) ? text_rates : nullptr;
}

constexpr family_model models[] = {{"VKT610B", 2}, {"VKT630B", 4}, {"VKT631B", 5}};

} // namespace

constinit const family_descriptor vkt610b_family = {
    .device = "VKT610B",
    .models = models,
    .fields = vkt610b_fields,
    .pages = vkt610b_page::names,
    .image_size = vkt610b_image_size,
    .of_registers = true,
    .encode = encode,
    .decode = decode,
    .encodes_after_decode = true,
    .kept_at_restore = vkt610b_field::version.key,
    .code_text = vkt610b_code_mode,
    .scripts = scripts,
    .requests = requests,
    .acknowledgement = acknowledgement,
    .typed_paths = false,
    .leave = mode_text_transfer,
    .monitor_refusal = monitor_refusal,
};
