// Requests out of a stream of bytes, and a module's replies to them. Input: model's family, spoiled reply, stream.
#include "fuzz/fuzz.h"
#include "sim/wire.h"

#include <algorithm>
#include <array>

using namespace sim;

namespace {

/// Bytes of head, data and check.
std::size_t longest_request(tribe of) { return of == tribe::b ? 2 + 0x40 + 2 : 4 + 255 + 1; }

std::vector<request> requests_of(tribe of, std::span<const uint8_t> stream, std::size_t step) {
    request_reader reader(of);
    std::vector<request> all;
    request one;
    while (!stream.empty()) {
        const auto part = stream.first(std::min(step, stream.size()));
        stream = stream.subspan(part.size());
        reader.feed(part.data(), part.size());
        while (reader.next(&one)) all.push_back(one);
    }
    while (reader.partial()) {
        reader.give_up();
        while (reader.next(&one)) all.push_back(one);
    }
    return all;
}

/// 0 for what gets no reply.
std::size_t reply_size(tribe of, const request& asked) {
    switch (asked.kind) {
    case request_kind::handshake:
        return 6;
    case request_kind::firmware:
        return 11;
    case request_kind::read:
        return of == tribe::b ? 146 : 65;
    case request_kind::write:
        return of == tribe::b ? 7 : 6;
    default:
        return 0;
    }
}

bool check_is_good(tribe of, const reply& r) {
    if (of != tribe::b) return xor_check(r.data.data(), r.check_at) == r.data[r.check_at];
    const uint16_t crc = crc_check(r.data.data(), r.check_at);
    return r.data[r.check_at] == (crc & 0xFF) && r.data[r.check_at + 1] == crc >> 8;
}

void check_answers(tribe of, const std::vector<request>& asked, fault spoiled_by) {
    bytes memory = factory_memory(of);
    const bytes factory = memory;
    for (const request& one : asked) {
        must(!one.frame.empty() && one.frame.size() <= longest_request(of), "a request has a size");
        const std::size_t size = reply_size(of, one);
        if (size == 0) continue;
        reply good = answer(of, one, &memory);
        must(good.data.size() == size && check_is_good(of, good), "a reply has its size and a good check");
        must(memory.size() == factory.size(), "a write keeps the memory's size");
        must(of != tribe::b || std::equal(memory.begin() + 136, memory.end(), factory.begin() + 136),
             "nobody writes the version");
        const reply no = refusal(of, one);
        must(check_is_good(of, no), "a refusal has a good check");
        spoil(of, {.what = spoiled_by, .argument = 0x0180}, &good);
        must(good.data.size() <= size + 0x0180, "a spoiled reply is no longer than the noise in it");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzz_input in(data, size);
    constexpr std::array tribes = {tribe::generic, tribe::a, tribe::b};
    const tribe of = tribes[in.below(tribes.size())];
    const auto spoiled_by = static_cast<fault>(in.below(static_cast<std::size_t>(fault::raw) + 1));
    const auto stream = in.rest();
    const std::vector<request> whole = requests_of(of, stream, std::max<std::size_t>(stream.size(), 1));
    const std::vector<request> single = requests_of(of, stream, 1);
    must(std::equal(whole.begin(), whole.end(), single.begin(), single.end(),
                    [](const request& a, const request& b) { return a.kind == b.kind && a.frame == b.frame; }),
         "it does not matter in which pieces requests come in");
    std::size_t bytes_in_requests = 0;
    for (const request& one : whole) bytes_in_requests += one.frame.size();
    must(bytes_in_requests <= stream.size(), "no byte is in two requests");
    check_answers(of, whole, spoiled_by);
    return 0;
}
