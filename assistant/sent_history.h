// The frames that were sent last, kept in a file. One thread at a time.
#pragma once

#include "assistant/send_frame.h"
#include "toolkit/core/result.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// In the working directory.
inline constexpr const char* sent_history_path = "./serial_send.json";
inline constexpr std::size_t sent_history_max = 20;

/// A form as one text: channel, format, speed, identifier and data with blanks between them ("4 8 128 291 1122").
std::string sent_entry_text(const assistant_form& form);
/// The opposite; false (and `form` untouched) for a text that no form gives.
bool sent_entry_read(std::string_view text, assistant_form* form);

class sent_history {
  public:
    /// Reads the file; what is missing or malformed in it is left out.
    explicit sent_history(std::string path);

    /// Newest first, no two alike, sent_history_max at most.
    std::span<const assistant_form> entries() const { return entries_; }
    /// Puts a form in front and replaces the file, whole. RET_FAIL when that cannot be written: the console says
    /// so, the first time in a row, and the next good write has all entries.
    ret_t add(const assistant_form& form);

  private:
    const std::string path_;
    std::vector<assistant_form> entries_;
    bool written_ = true; ///< the last time
};
