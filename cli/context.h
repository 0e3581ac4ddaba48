// Where a command's results and errors go, and how it ends.
#pragma once

#include "cli/options.h"
#include "platform/system.h"

#include <functional>
#include <string>
#include <vector>

/// How the program ends.
enum exit_status : int {
    exit_good = 0,
    exit_different = 1,
    exit_usage = 2, ///< bad arguments, or a bad file
    exit_port = 3,
    exit_module = 4, ///< the module refused, answered wrongly or not at all
    exit_interrupted = 130,
};

/// The streams of the process, or of a test.
struct cli_streams {
    std::function<bool(const std::string&)> out; ///< false: whoever read it is gone, or there is no room
    std::function<void(const std::string&)> err;
    bool terminal = false; ///< standard error is one: progress is shown
    bool colour = false;   ///< standard output shows colours
    /// Of the terminal behind standard error, now; null: 80 columns and 24 rows.
    std::function<terminal_size()> size{};
};

/// What went wrong. What there is nothing to say of is empty.
struct cli_error {
    int status = exit_usage;
    std::string where{}; ///< port or file
    std::string step{};  ///< of a session, in its own words
    std::string text{};
    std::string cause{}; ///< "不存在 (error 2)"
    // Of a port.
    bool not_opened = false;
    bool absent = false; ///< there is none of that name now
    bool lost = false;   ///< the device behind an open one went away
};

struct cli_context {
    const cli_options& options;
    const cli_streams& streams;

    /// A result; nothing with --quiet. When it cannot be written the command is asked to end.
    void print(const std::string& text) const;
    /// What a person may want to know beside the result, a line on standard error; nothing with --quiet or --json.
    void note(const std::string& line) const;
    /// Whether progress is shown, rewritten in place: on a terminal only.
    bool shows_progress() const;
    /// One line on standard error; returns the error's status.
    int fail(const cli_error& error) const;
    /// Prints a result, or writes it to the file of --out.
    int deliver(const std::string& text) const;
};

/// "vkt: WHERE: STEP: TEXT: CAUSE\n"
std::string error_line(const cli_error& error);
std::string error_json(const cli_error& error);

/// An object on one line, its members in the order in which they are added.
class json_object {
  public:
    json_object& add(const char* key, const std::string& text);
    json_object& add(const char* key, int64_t number);
    /// A value that is JSON already.
    json_object& add_json(const char* key, const std::string& json);
    std::string text() const { return "{" + members_ + "}"; }

  private:
    std::string members_;
};
/// Values that are JSON already, as a list.
std::string json_list(const std::vector<std::string>& values);

/// Columns on a terminal: a Chinese character takes two, a change of colour none.
std::size_t shown_width(const std::string& text);
/// As much of a text without colours as fits into so many columns.
std::string cut_to_width(const std::string& text, std::size_t columns);
/// "pass" or "fail" in its colour.
std::string result_word(bool good, bool colour);
/// Rows of cells as aligned columns, two blanks apart; an empty column takes no room.
std::string table_text(const std::vector<std::vector<std::string>>& rows);

/// "; did you mean "WORD"?" with the word of a list that is nearest to `typed`; empty when none is near.
std::string did_you_mean(const std::string& typed, const std::vector<std::string>& words);
