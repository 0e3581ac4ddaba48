#include "serial/port_cause.h"

#include "serial/io_result.h"
#include "toolkit/core/text.h"

namespace {

constexpr const char* absent = "不存在";
constexpr const char* taken = "被占用";
constexpr const char* other = "系统错误";
constexpr DWORD error_access_denied = 5;

struct cause_row {
    DWORD error;
    const char* words;
};
constexpr cause_row open_causes[] = {
    {2, absent},    // no such file
    {3, absent},    // no such path
    {32, taken},    // sharing violation
    {170, taken},   // busy
    {433, absent},  // no such device
    {1167, absent}, // device not connected
};

/// The system has one code for all that stands in the way of an open.
const char* denied_words(const std::string& path) {
    switch (com::why_denied(path)) {
    case com::denial::forbidden:
        return "无权限";
    case com::denial::no_port:
        return "不是串口";
    default:
        return taken;
    }
}

} // namespace

port_cause port_open_cause(const std::string& path, DWORD error) {
    if (error == error_access_denied) return {denied_words(path), error, false};
    for (const cause_row& row : open_causes)
        if (row.error == error) return {row.words, error, false, row.words == absent};
    return {other, error, false};
}

port_cause port_use_cause(DWORD error) {
    if (error == 0) return {};
    const bool lost = port_lost_error(error);
    return {lost ? "已拔出" : other, error, lost};
}

std::string port_cause_line(const std::string& name, const port_cause& cause) {
    if (cause.words == nullptr) return {};
    return tk_format("%s: %s (error %lu)\n", name.c_str(), cause.words, static_cast<unsigned long>(cause.error));
}
