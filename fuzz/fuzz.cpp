#include "fuzz/fuzz.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

void must(bool good, const char* what) {
    if (good) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

uint8_t fuzz_input::byte() {
    const auto one = bytes(1);
    return one.empty() ? 0 : one[0];
}

std::span<const uint8_t> fuzz_input::bytes(std::size_t count) {
    const auto taken = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
}

std::string fuzz_input::text() {
    const auto all = rest();
    return {all.begin(), all.end()};
}

std::vector<std::string> fuzz_split(const std::string& text, char by) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == by)
            parts.emplace_back();
        else
            parts.back() += c;
    }
    return parts;
}

void fuzz_write_file(const char* path, const std::string& text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    file.close();
    must(file.good(), "the working directory can be written");
}
