#include "monitor/periodic.h"

#include "toolkit/core/text.h"

#include <algorithm>

void periodic_add_data(std::span<uint8_t> data, uint8_t step) {
    uint32_t carry = step;
    for (std::size_t i = data.size(); i > 0; --i) {
        const uint32_t sum = data[i - 1] + carry;
        data[i - 1] = static_cast<uint8_t>(sum & 0xFF);
        carry = sum > 0xFF ? sum - 0xFF : 0;
    }
}

uint32_t periodic_add_identifier(uint32_t identifier, uint32_t step, uint32_t format) {
    constexpr uint32_t standard_max = 0x7FF, extended_max = 0x1FFFFFFF;
    const uint32_t sum = identifier + step;
    if (format == 0 && sum > standard_max) return 0;
    return format == 1 && sum > extended_max ? 0 : sum;
}

uint32_t periodic_period_ms(const std::string& text) {
    return static_cast<uint32_t>(std::clamp(tk_atoi(text.c_str()), period_min_ms, period_max_ms));
}

void periodic_sender::start(const traffic_request& sent, const periodic_step& step) {
    request_ = sent;
    step_ = step;
    skipped_ = sent_ = 0;
}

bool periodic_sender::tick(bool done) {
    if (!done) {
        skipped_++;
        return false;
    }
    const std::size_t size = request_.bytes().size();
    if (step_.to_data) periodic_add_data(std::span(request_.data).first(size), step_.data);
    if (step_.to_identifier)
        request_.identifier = periodic_add_identifier(request_.identifier, step_.identifier, request_.format);
    sent_++;
    return true;
}
