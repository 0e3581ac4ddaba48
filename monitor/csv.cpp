#include "monitor/csv.h"

#include "monitor/names.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

namespace {

constexpr std::size_t line_max = 499;

std::string data_text(const traffic_record& record) {
    std::string text;
    for (const uint8_t byte : record.bytes()) text += tk_format("0x%02x ", byte);
    return text;
}

} // namespace

std::string csv_line(const traffic_record& record) {
    const std::string line =
        tk_format("%s,%s,%s,%s,%s,%d,%s\n", record_time_text(record).c_str(), record_channel_text(record),
                  record_id_text(record).c_str(), record_type_text(record).c_str(), record_direction_text(record),
                  static_cast<int>(record.length), data_text(record).c_str());
    return line.substr(0, line_max);
}

void csv_recorder::add(const traffic_record& record) {
    if (path_.empty() || append(csv_line(record)) || dropped_++ > 0) return;
    log_console(path_ + " cannot be written: lines are dropped\n");
}

// A disk that fills up may have taken part of a line, or nothing of it; the next one that fits begins a line of its
// own.
bool csv_recorder::append(const std::string& line) {
    fs_file_ptr file(fs_open_file(os_fs(), path_.c_str(), "a+"));
    if (file == nullptr) return false;
    const int last = torn_ ? fs_file_last_byte(file.get()) : -1;
    const std::string text = (last < 0 || last == '\n' ? "" : "\n") + line;
    const bool whole = fs_file_write(file.get(), text.data(), text.size()) == static_cast<int64_t>(text.size());
    torn_ = fs_file_close(file.release()) != RET_OK || !whole;
    return !torn_;
}
