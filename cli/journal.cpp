#include "cli/journal.h"

#include "toolkit/core/date_time.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/text.h"

namespace {

constexpr const char* heading = "time,port,model,firmware,profile,result,step,text\n";

/// A value with a comma, a quote or a line end in it stands in quotes.
std::string cell(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string out = "\"";
    for (const char c : text) out += c == '"' ? "\"\"" : std::string(1, c);
    return out + "\"";
}

} // namespace

bool journal::open() const {
    if (path_.empty()) return true;
    const bool fresh = !fs_file_exist(os_fs(), path_.c_str());
    return fs_append(path_.c_str(), fresh ? heading : "") == RET_OK;
}

bool journal::add(const journal_line& line) const {
    if (path_.empty()) return true;
    std::string text = time_stamp_text(time_stamp_now().local_us);
    for (const std::string* value :
         {&line.port, &line.model, &line.firmware, &line.checksum, &line.result, &line.step, &line.text})
        text += "," + cell(*value);
    return fs_append(path_.c_str(), text + "\n") == RET_OK;
}

std::string checksum_of(const std::string& text) {
    uint32_t crc = 0xFFFFFFFF;
    for (const char c : text) {
        crc ^= static_cast<uint8_t>(c);
        for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
    }
    return tk_format("%08X", ~crc);
}
