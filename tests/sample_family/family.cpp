#include "tests/sample_family/family.h"

#include "toolkit/core/text.h"

#include <numeric>

namespace {

constexpr std::size_t values = 3;

void encode(dev_obj& dev) {
    for (const field& row : dev.of.fields) dev.image[row.place.at] = field_byte(row, dev.props.get());
}

void decode(dev_obj& dev) {
    for (const field& row : dev.of.fields) {
        const uint8_t byte = dev.image[row.place.at];
        if (row.form == value_form::flag)
            tk_object_set_prop_bool(dev.props.get(), row.key, byte != 0);
        else
            tk_object_set_prop_uint8(dev.props.get(), row.key, byte);
    }
}

uint8_t sum(std::span<const uint8_t> bytes) {
    return std::accumulate(bytes.begin(), bytes.end(), uint8_t{0},
                           [](uint8_t a, uint8_t b) { return static_cast<uint8_t>(a + b); });
}

session_bytes write_frame(const dev_obj& dev) {
    session_bytes frame = {'S', 3};
    frame.insert(frame.end(), dev.image.begin(), dev.image.end());
    frame.push_back(sum(frame));
    return frame;
}

constexpr std::size_t head = 2;

std::string code_text(const dev_obj& dev, code_form form, code_spans* spans) {
    const std::string_view item = form.alternative ? "0x.." : "..";
    for (std::size_t i = 0; i < dev.image.size() && spans != nullptr; ++i)
        spans->push_back({.text_at = (head + i) * (item.size() + 1) + item.find('.'), .image_at = i});
    return hex_list(write_frame(dev), form.alternative ? "0x%02X" : "%02X", " ");
}

std::vector<session_bytes> requests(const dev_obj& dev, session_kind kind, bool /*alternative*/) {
    if (kind == session_kind::write) return {write_frame(dev)};
    return {};
}

template <uint8_t Function, std::size_t Payload>
std::optional<reply_fault> fault(const session_run& run) {
    const auto reply = std::span<const uint8_t>(run.reply).first(3 + Payload);
    if (reply[0] == 'S' && reply[1] == Function && reply.back() == sum(reply.first(2 + Payload)))
        return std::nullopt;
    return reply_fault{"应答有误", run.log_text("sample [%d-%d-%d] wrong reply\n")};
}

void accept(session_run& run) { run.image.assign(run.reply.begin() + 2, run.reply.begin() + 2 + values); }

constexpr io_texts texts = {{}, "sample [%d-%d-%d]write: ", "sample [%d-%d-%d]read: "};
constexpr uint8_t hello[] = {'S', 1, 'S' + 1};
constexpr uint8_t ask[] = {'S', 2, 'S' + 2};
constexpr reply_check hello_checks[] = {{{}, fault<0x81, 0>}};
constexpr reply_check image_checks[] = {{{}, fault<0x82, values>}};
constexpr reply_check ack_checks[] = {{{}, fault<0x83, 0>}};
constexpr exchange greet = {.texts = &texts, .request = hello, .reply = 3, .checks = hello_checks};
constexpr exchange read_all = {
    .texts = &texts, .request = ask, .reply = 3 + values, .checks = image_checks, .accept = accept};
constexpr exchange write_all = {.texts = &texts, .reply = 3, .checks = ack_checks};

constexpr session_step connect_steps[] = {
    {.act = step_open},
    {.say = {20, "串口"}, .act = step_configure},
    {.with = &greet, .act = step_idle},
    {.say = {90, "按键"}, .act = step_connected},
    {.say = {100, "连接成功"}, .act = step_finished},
};
constexpr session_step read_steps[] = {
    {.say = {30, "读"}, .with = &read_all, .act = step_image},
    {.act = step_idle_let_go},
    {.say = {90, "按键"}, .act = step_connected},
    {.say = {100, "读完成"}, .act = step_finished},
};
constexpr session_step write_steps[] = {
    {.say = {30, "写"}, .with = &write_all, .act = step_idle_let_go},
    {.say = {90, "按键"}, .act = step_connected},
    {.say = {100, "写完成"}, .act = step_finished},
};
constexpr session_script scripts[] = {
    {"sample_connect", session_kind::connect, 0, false, connect_steps},
    {"sample_read", session_kind::read, 3, false, read_steps},
    {"sample_write", session_kind::write, 2, false, write_steps},
};
constexpr uint8_t goodbye[] = {'S', 4, 'S' + 4};
constexpr family_model models[] = {{"SAMPLE1", 1}, {"SAMPLE2", 2}};

} // namespace

constinit const family_descriptor sample_family = {
    .device = "SAMPLE1",
    .models = models,
    .fields = sample_field::rows,
    .image_size = values,
    .encode = encode,
    .decode = decode,
    .code_text = code_text,
    .scripts = scripts,
    .requests = requests,
    .leave = goodbye,
};
