// Profiles. Input: the file's bytes.
#include "profile/profile.h"

#include "dev_a/family.h"
#include "dev_b/family.h"
#include "dev_generic/family.h"
#include "fuzz/fuzz.h"

namespace {

constexpr const family_descriptor* families[] = {&vkt510a_family, &generic_family, &vkt610b_family};

void check_loaded(const profile& loaded) {
    const profile_read_result again = profile_parse(profile_text(loaded), families);
    must(again.loaded.has_value(), "what was saved can be read");
    must(profile_text(*again.loaded) == profile_text(loaded), "a saved profile stays");
    const auto dev = dev_open(families, loaded.model.c_str());
    must(dev != nullptr && profile_apply(loaded, *dev) == RET_OK, "a good profile can be applied");
    const profile sent = profile_of(*dev, loaded.model);
    for (std::size_t i = 0; i < loaded.values.size(); ++i) {
        must(value_refusal(*loaded.values[i].what, loaded.values[i].value).empty(), "every value can be set");
        must(value_of(*loaded.values[i].what, dev->props.get()) == loaded.values[i].value,
             "the store holds the values");
    }
    const std::vector<uint8_t> image = dev->image;
    must(profile_apply(sent, *dev) == RET_OK && dev->image == image, "what is sent is the same configuration");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    const profile_read_result read = profile_parse(text, families);
    must(read.loaded.has_value() == read.refusals.empty(), "a profile, or why there is none");
    for (const profile_refusal& refusal : read.refusals)
        must(!refusal.reason.empty(), "every refusal has a reason");
    if (read.loaded) check_loaded(*read.loaded);
    return 0;
}
