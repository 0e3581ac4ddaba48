// Plays inputs from files and folders through a fuzz target, as libFuzzer would: TARGET PATH...
#include "fuzz/fuzz.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {

std::vector<std::filesystem::path> files_of(const std::filesystem::path& path) {
    if (!std::filesystem::is_directory(path)) return {path};
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(path)) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

bool play(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return false;
    std::printf("%s\n", path.string().c_str());
    std::fflush(stdout); // the last name that is seen is the input that went wrong
    std::vector<char> bytes(std::filesystem::file_size(path));
    if (!file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) return false;
    const std::vector<uint8_t> input(bytes.begin(), bytes.end()); // no zero byte behind it that would hide a bug
    LLVMFuzzerTestOneInput(input.data(), input.size());
    return true;
}

} // namespace

int main(int argc, char** argv) {
    const uint8_t nothing = 0;
    LLVMFuzzerTestOneInput(&nothing, 0);
    int played = 0;
    for (int i = 1; i < argc; i++)
        for (const auto& path : files_of(argv[i])) {
            if (!play(path)) {
                std::fprintf(stderr, "%s cannot be read\n", path.string().c_str());
                return 1;
            }
            played++;
        }
    std::printf("%d inputs\n", played);
    return played > 0 ? 0 : 1;
}
