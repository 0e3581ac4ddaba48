// What the fuzz targets share. Each target is one source file with one LLVMFuzzerTestOneInput; Clang builds it with
// libFuzzer, every compiler builds it with replay_main.cpp, which plays the files of corpus/.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// One input. Always 0; what is wrong ends the process.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size);

/// Ends the process with `what` unless `good`: a property of the code under test does not hold.
void must(bool good, const char* what);

/// An input taken apart from its front. What is asked of an input at its end is zeros, or empty.
class fuzz_input {
  public:
    fuzz_input(const uint8_t* data, std::size_t size) : rest_(data, size) {}
    uint8_t byte();
    /// A number below `limit` (1 to 256).
    std::size_t below(std::size_t limit) { return byte() % limit; }
    /// Up to `count` bytes.
    std::span<const uint8_t> bytes(std::size_t count);
    std::span<const uint8_t> rest() { return bytes(rest_.size()); }
    /// The rest, as it stands.
    std::string text();

  private:
    std::span<const uint8_t> rest_;
};

/// The parts of `text` between the separators `by`: one more than there are separators.
std::vector<std::string> fuzz_split(const std::string& text, char by);
/// Replaces a file. Targets that read files keep them in the working directory.
void fuzz_write_file(const char* path, const std::string& text);
