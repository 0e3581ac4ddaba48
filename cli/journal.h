// The journal of a production line: one line of comma-separated values for each module, appended as it is done.
#pragma once

#include <cstdint>
#include <string>

struct journal_line {
    std::string port, model, firmware, checksum, result, step, text;
};

class journal {
  public:
    /// Empty: nothing is kept.
    explicit journal(std::string path) : path_(std::move(path)) {}
    /// Makes the file, with its heading where it is new; false when it cannot be written.
    bool open() const;
    /// False when the line could not be stored.
    bool add(const journal_line& line) const;

  private:
    const std::string path_;
};

/// CRC-32 of a text, as eight hex digits.
std::string checksum_of(const std::string& text);
