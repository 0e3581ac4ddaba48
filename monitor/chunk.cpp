#include "monitor/chunk.h"

#include <numeric>

namespace {

struct refusal_row {
    int code;
    traffic_loss why;
};
constexpr refusal_row refusals[] = {
    {traffic_cut, traffic_loss::cut},
    {traffic_length, traffic_loss::length},
    {traffic_command, traffic_loss::command},
    {traffic_check_failed, traffic_loss::check},
    {traffic_data_too_long, traffic_loss::data_length},
};

} // namespace

traffic_losses& traffic_losses::operator+=(const traffic_losses& more) {
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] += more.bytes[i];
    return *this;
}

uint64_t traffic_losses::all() const { return std::accumulate(bytes.begin(), bytes.end(), uint64_t{0}); }

traffic_losses chunk_take(std::span<const uint8_t> chunk, bool check, const time_stamp& at,
                          std::vector<traffic_record>* records) {
    traffic_losses lost;
    while (!chunk.empty()) {
        traffic_parsed frame;
        const int code = traffic_frame_parse(chunk, check, &frame);
        if (code == traffic_no_start) {
            lost[traffic_loss::no_start] += chunk.size();
            break;
        }
        lost[traffic_loss::noise] += frame.skipped;
        if (code != 0) {
            for (const refusal_row& row : refusals)
                if (row.code == code) lost[row.why] += chunk.size() - frame.skipped;
            break;
        }
        records->push_back(record_received(frame, at));
        chunk = chunk.subspan(frame.advance);
    }
    return lost;
}
