// What the data page says about its link and its counts. Any thread.
#pragma once

#include "monitor/traffic.h"

#include <string>

struct link_words {
    const char* text;
    const char* style; ///< state of the style sheet
};
link_words data_link_words(traffic_link link, bool leaving);

struct counts_texts {
    std::string frames; ///< received and sent, and records kept
    std::string lost;   ///< what is not shown or not recorded, and why; empty when there is nothing
};
/// `kept`: records in the table; `skipped`: ticks of periodic sending that were left out.
counts_texts data_counts_texts(const traffic_counters& counters, std::size_t kept, uint64_t skipped);
