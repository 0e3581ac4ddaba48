// The progress of many ports on a terminal: a line for each, rewritten in place. Elsewhere nothing is shown.
#pragma once

#include "cli/context.h"

enum class board_state : uint8_t { waiting, working, good, bad };

class program_board {
  public:
    program_board(const cli_context& with, const std::vector<std::string>& ports);
    /// Takes its lines away.
    ~program_board();
    program_board(const program_board&) = delete;
    program_board& operator=(const program_board&) = delete;

    /// What the line of a port says; of one that is being worked on with a bar.
    void set(std::size_t port, board_state state, const std::string& text, uint32_t percent = 0);
    /// Calls what prints lines on standard error; they stand above the board's.
    void print_above(const std::function<void()>& print);

  private:
    struct row {
        std::string port;
        board_state state = board_state::waiting;
        std::string text;
        uint32_t percent = 0;
    };
    std::string line_of(const row& one) const;
    std::string summary() const;
    std::vector<std::string> lines() const;
    void draw();
    void erase();

    const cli_context& with_;
    const bool shown_;
    std::vector<row> rows_;
    std::size_t name_width_ = 0;
    std::size_t drawn_ = 0; ///< lines that are on the screen, the cursor below them
};
