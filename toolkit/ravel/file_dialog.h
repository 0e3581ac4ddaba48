// The dialogs that ask for a file: cards over the program's window like every other dialog, the same on every
// system, and reachable by scripts (docs/driving.md). GUI thread only.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// One kind of files to choose from: "C 数组" and "h".
struct file_filter {
    std::string text;
    std::string extension; ///< without a dot; empty: files of any name
};

struct file_question {
    std::string title;
    std::string folder{}; ///< where it begins (UTF-8); empty or missing: the working directory
    std::string name{};   ///< of the file to be saved, as it is offered
    std::vector<file_filter> filters{};
    std::size_t filter = 0; ///< place of the one chosen at first
};

struct file_answer {
    std::string path;       ///< whole, UTF-8, with "/" between its parts
    std::size_t filter = 0; ///< place of the one chosen
};

/// Asks for a file that is there. Nothing when it was left otherwise, or there is no window. Runs the event loop;
/// no lock may be held.
std::optional<file_answer> file_dialog_open(const file_question& question);

/// Asks where to save. A name without an extension gets the chosen filter's; a file that is there is replaced only
/// after that was asked too (nothing is written here). As file_dialog_open otherwise.
std::optional<file_answer> file_dialog_save(const file_question& question);
