// A script of user actions, read and checked before anything is played (docs/driving.md has the format).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

enum class drive_verb : uint8_t {
    pick,
    click,
    press,
    type,
    append,
    key,
    wheel,
    hover,
    hover_at,
    click_at,
    wait,
    expect,
    expect_file,
    wait_file,
    shot,
    dump,
    clipboard,
    drop,
    sleep,
    close,
};

/// One part of a widget's path: a name (or type), and which one where an index is given.
struct drive_segment {
    std::string name; ///< empty: any
    int32_t index = -1;
};
using drive_path = std::vector<drive_segment>;

struct drive_action {
    drive_verb verb = drive_verb::close;
    uint32_t line = 0;             ///< from 1
    std::string text;              ///< the line as it stands in the script, without its blanks at both ends
    drive_path widget;             ///< empty where the verb names none
    std::vector<std::string> args; ///< what follows the widget, unquoted
    int32_t number = 0;            ///< the line's MS or DELTA; the default where it is optional
};

/// Reads a whole script. False at the first line that cannot be read; `error` then says "line N: why" and `out` is
/// left alone. Any bytes may come; nothing is opened or played. Any thread.
bool drive_parse(const std::string& script, std::vector<drive_action>* out, std::string* error);

/// Reads "home_page/table_client/row[3]/data". False when it cannot be read. Any thread.
bool drive_parse_path(const std::string& text, drive_path* out);
/// The opposite.
std::string drive_path_text(const drive_path& path);

/// A key's name and modifiers taken apart: "Ctrl+Shift+Tab". False for what is no key. Any thread.
struct drive_key {
    std::string name; ///< as in the table of names, or one character
    bool shift = false, control = false, alt = false;
};
bool drive_parse_key(const std::string& text, drive_key* out);
/// The names drive_parse_key knows beside single characters.
const std::vector<std::string>& drive_key_names();

/// The names of properties that wait and expect know.
const std::vector<std::string>& drive_properties();

/// How a text is shown in a report: quoted, with escapes, cut at `max` bytes.
std::string drive_quote(const std::string& text, std::size_t max = 400);
