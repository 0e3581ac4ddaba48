#include "assistant/sent_history.h"

#include "toolkit/core/conf_json.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace {

std::string key_of(std::size_t index) { return tk_format("sent_%zu", index + 1); }

/// A number and the blank behind it, taken off the front of `text`.
bool take_number(std::string_view* text, uint32_t* number) {
    const char* end = text->data() + text->size();
    const auto [at, error] = std::from_chars(text->data(), end, *number);
    if (error != std::errc() || at == end || *at != ' ') return false;
    text->remove_prefix(static_cast<std::size_t>(at - text->data()) + 1);
    return true;
}

bool offered(std::span<const assistant_option> options, uint32_t value) {
    return std::ranges::find(options, value, &assistant_option::value) != options.end();
}

bool can_be_formed(const assistant_form& form) {
    return offered(assistant_channels, form.channel) && offered(assistant_formats, form.format) &&
           offered(assistant_speeds, form.speed) && form.identifier <= assistant_identifier_max(form.format) &&
           tk_utf8_heads(form.data).size() <= assistant_text_max(form.speed);
}

} // namespace

std::string sent_entry_text(const assistant_form& form) {
    return tk_format("%u %u %u %u ", form.channel, form.format, form.speed, form.identifier) + form.data;
}

bool sent_entry_read(std::string_view text, assistant_form* form) {
    assistant_form read;
    for (uint32_t assistant_form::*number :
         {&assistant_form::channel, &assistant_form::format, &assistant_form::speed, &assistant_form::identifier})
        if (!take_number(&text, &(read.*number))) return false;
    read.data = text;
    if (!can_be_formed(read)) return false;
    *form = std::move(read);
    return true;
}

sent_history::sent_history(std::string path) : path_(std::move(path)) {
    const conf_json_ptr conf = conf_json_load(path_.c_str());
    for (std::size_t i = 0; i < sent_history_max; ++i) {
        assistant_form form;
        if (sent_entry_read(conf_json_get_str(conf.get(), key_of(i).c_str(), ""), &form) &&
            std::ranges::find(entries_, form) == entries_.end())
            entries_.push_back(std::move(form));
    }
}

ret_t sent_history::add(const assistant_form& form) {
    std::vector<assistant_form> now;
    now.reserve(sent_history_max);
    now.push_back(form);
    for (assistant_form& entry : entries_)
        if (entry != form && now.size() < sent_history_max) now.push_back(std::move(entry));
    entries_ = std::move(now);
    conf_json_ptr conf = conf_json_load(path_.c_str());
    if (conf == nullptr) conf = conf_json_create(path_.c_str());
    for (std::size_t i = 0; i < entries_.size(); ++i)
        conf_json_set_str(conf.get(), key_of(i).c_str(), sent_entry_text(entries_[i]).c_str());
    const bool before = std::exchange(written_, conf_json_save_as(conf.get(), nullptr) == RET_OK);
    if (before && !written_)
        log_console(path_ + " cannot be written: the frames sent last are kept until the program ends\n");
    return written_ ? RET_OK : RET_FAIL;
}
