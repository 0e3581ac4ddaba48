// The edits of hex digits. The generic family stores texts and forms them when an edit is left; the A family stores
// numbers, filters while one types and scans when an edit is left.

#include "fields/row_kinds.h"
#include "profile/value.h"
#include "toolkit/core/hex_text.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"

namespace {

// ---- texts ----

/// Whether the digits of `text`, blanks aside, are the number that `bytes` hold.
bool same_number(std::string_view text, std::span<const uint8_t> bytes) {
    std::string digits;
    for (char c : text)
        if (c != ' ') digits += c >= 'a' && c <= 'f' ? static_cast<char>(c - 'a' + 'A') : c;
    const std::size_t wanted = 2 * bytes.size();
    if (digits.empty() || digits.size() > wanted) return false;
    return std::string(wanted - digits.size(), '0') + digits == hex_digits_from_bytes(bytes);
}

/// Marks a text that is not the number which is sent for it.
ret_t mark_unlike(const bound_row& at, const std::string& text, std::span<const uint8_t> sent, const char* why) {
    if (same_number(text, sent)) return widget_set_refused(at.w, nullptr);
    return widget_set_refused(at.w, (why + ("：发送的是 " + hex_pairs_from_bytes(sent))).c_str(),
                              value_refusal(at.what(), {}).c_str());
}

ret_t mark_text(const bound_row& at) {
    const std::string text = widget_get_text_utf8(at.w);
    std::vector<uint8_t> sent(at.what().place.bytes());
    hex_pairs_to_bytes(text, sent);
    return mark_unlike(at, text, sent, "不是十六进制数");
}

/// The same for a text that may not have been stored.
void mark_on_show(const bound_row& at) {
    const std::string text = widget_get_text_utf8(at.w);
    const std::vector<uint8_t> sent = row_image_bytes(at);
    std::vector<uint8_t> meant(sent.size());
    hex_pairs_to_bytes(text, meant);
    if (meant == sent)
        mark_text(at);
    else
        mark_unlike(at, text, sent, "未采用");
}

void fill_text(const bound_row& at) {
    widget_set_text_utf8(at.w, row_text(at).c_str());
    mark_text(at);
}

/// The image's digits without blanks: what is typed over them is formed anew.
ret_t show_image_digits(const bound_row& at) {
    widget_set_refused(at.w, nullptr);
    return widget_set_text_utf8(at.w, hex_digits_from_bytes(row_image_bytes(at)).c_str());
}

ret_t leave_text(const bound_row& at) {
    const std::string typed = widget_get_text_utf8(at.w);
    const std::string formed = hex_edit_form(typed);
    // Formed already it is taken for the one that was shown, and not stored.
    if (formed == typed) return mark_unlike(at, typed, row_image_bytes(at), "未采用");
    widget_set_text_utf8(at.w, formed.c_str());
    mark_text(at);
    return row_store_text(at, formed);
}

ret_t change_pair(const bound_row& at) {
    mark_text(at);
    return row_store_text(at, widget_get_text_utf8(at.w));
}

// ---- numbers ----

uint32_t row_word(const bound_row& at) { return field_word(at.what(), at.props()); }

ret_t show_word(const bound_row& at) {
    return widget_set_text_utf8(at.w, hex_pairs_from_word(row_word(at)).c_str());
}
void fill_word(const bound_row& at) { show_word(at); }
ret_t focus_word(const bound_row& at) {
    return widget_set_text_utf8(at.w, tk_format("%08X", row_word(at)).c_str());
}

ret_t show_byte(const bound_row& at) {
    return widget_set_text_utf8(at.w, tk_format("%02X", row_number(at)).c_str());
}
void fill_byte(const bound_row& at) { show_byte(at); }
ret_t focus_byte(const bound_row& at) {
    const ret_t result = show_byte(at);
    if (result != RET_OK) log_console("set f_vfocus failed!");
    return result;
}

/// Takes out what does not belong; touches the edit only when something changed, so the cursor stays where it is.
ret_t filter(const bound_row& at, const char* set_failed) {
    const std::string typed = widget_get_text_utf8(at.w);
    const std::string kept = hex_edit_filter(typed);
    if (kept == typed || widget_set_text_utf8(at.w, kept.c_str()) == RET_OK) return RET_OK;
    log_console(set_failed);
    return RET_FAIL;
}
ret_t filter_word(const bound_row& at) { return filter(at, "set scherm0changing failed!"); }
ret_t filter_byte(const bound_row& at) { return filter(at, "set f_vchanging failed!"); }

/// An edit that is left as it was stores nothing: a window that closes takes the focus from its edits.
ret_t leave_word(const bound_row& at) {
    std::string typed = hex_edit_strip(widget_get_text_utf8(at.w));
    if (typed.empty()) typed = "0";
    uint32_t word = 0;
    const bool scanned = hex_scan(typed, &word);
    if (scanned && word == row_word(at)) return show_word(at);
    if (scanned)
        row_store(
            at, [word](tk_object* props, const char* key) { return tk_object_set_prop_uint32(props, key, word); },
            "");
    show_word(at);
    return row_show(at);
}

ret_t leave_byte(const bound_row& at) {
    uint32_t word = 0;
    const bool scanned = hex_scan(hex_edit_strip(widget_get_text_utf8(at.w)), &word);
    const auto low = static_cast<uint8_t>(word);
    if (scanned && low == row_number(at)) return show_byte(at);
    if (!scanned) log_console("sscanf read f_v_value failed!");
    if (scanned)
        row_store(
            at, [low](tk_object* props, const char* key) { return tk_object_set_prop_uint8(props, key, low); }, "");
    if (show_byte(at) != RET_OK) log_console("set f_vblur failed!");
    return row_show(at);
}

} // namespace

const kind_ops hex_text_ops = {
    .fill = fill_text, .focus = show_image_digits, .blur = leave_text, .mark = mark_on_show};
const kind_ops hex_pair_ops = {
    .fill = fill_text, .changed = change_pair, .focus = show_image_digits, .mark = mark_on_show};
const kind_ops hex_word_ops = {.fill = fill_word, .changing = filter_word, .focus = focus_word, .blur = leave_word};
const kind_ops hex_number_ops = {
    .fill = fill_byte, .changing = filter_byte, .focus = focus_byte, .blur = leave_byte};
