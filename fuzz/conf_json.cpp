// Settings files. Input: the file's bytes.
#include "toolkit/core/conf_json.h"

#include "fuzz/fuzz.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/log.h"

#include <cmath>
#include <cstdlib>

namespace {

constexpr const char* path = "setting.json";
constexpr const char* saved_path = "saved.json";
constexpr const char* keys[] = {"fifo_size", "edit_data", "combo_box_type_1", "check_button_read_puase", "a", ""};

void check_value(const conf_json* conf, const conf_json* again, const char* key) {
    must(conf_json_has(conf, key) == conf_json_has(again, key), "a saved key stays");
    const std::string text = conf_json_get_str(conf, key, "none");
    must(conf_json_get_str(again, key, "none") == text, "a saved text stays");
    const double number = conf_json_get_double(conf, key, 0.25);
    must(std::isfinite(number) && conf_json_get_double(again, key, 0.25) == number, "a saved number stays");
    const int32_t whole = conf_json_get_int(conf, key, -7);
    must(whole == -7 || whole == std::trunc(number), "a whole number is the number's whole part");
    const uint32_t natural = conf_json_get_uint(conf, key, 7);
    must(natural == 7 || natural == std::trunc(number), "and so without a sign");
    must(conf_json_get_bool(conf, key, true) == conf_json_get_bool(again, key, true), "a saved bool stays");
}

std::string content(const char* file) {
    std::string text;
    must(fs_read_all(file, &text), "a saved file can be read");
    return text;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    log_set_log_level(LOG_LEVEL_ERROR); // every file that is refused has a line
    fuzz_write_file(path, std::string(reinterpret_cast<const char*>(data), size));
    const conf_json_ptr conf = conf_json_load(path);
    if (conf == nullptr) return 0;
    if (conf_json_save_as(conf.get(), saved_path) != RET_OK) return 0; // white space may make it too large
    const conf_json_ptr again = conf_json_load(saved_path);
    must(again != nullptr, "what was saved can be read");
    for (const char* key : keys) check_value(conf.get(), again.get(), key);
    const std::string saved = content(saved_path);
    must(conf_json_save_as(again.get(), nullptr) == RET_OK && content(saved_path) == saved, "a saved file stays");
    must(conf_json_set_str(again.get(), "edit_data", "00 11") == RET_OK, "a text can be set");
    must(conf_json_get_str(again.get(), "edit_data", "") == "00 11", "and is there");
    return 0;
}
