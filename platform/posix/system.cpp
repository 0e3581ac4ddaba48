#include "platform/system.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <pthread.h>
#include <thread>
#include <unistd.h>

namespace {

void wait_for_interrupt(void (*call)(), int status, const sigset_t& asked) {
    int number = 0;
    while (sigwait(&asked, &number) != 0) {
    }
    call();
    const timespec patience{0, 900'000'000};
    sigtimedwait(&asked, nullptr, &patience);
    platform_exit_now(status);
}

} // namespace

void platform_on_interrupt(void (*call)(), int status) {
    sigset_t asked;
    sigemptyset(&asked);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&asked, number);
    pthread_sigmask(SIG_BLOCK, &asked, nullptr); // the threads that follow inherit it
    std::thread([=] { wait_for_interrupt(call, status, asked); }).detach();
}

bool platform_is_terminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

std::string platform_program_folder() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : program.parent_path().string();
}

std::string platform_settings_folder() {
    const auto named = [](const char* variable) {
        const char* value = std::getenv(variable);
        return std::string(value == nullptr ? "" : value);
    };
    if (const std::string own = named("VKT_SETTINGS"); !own.empty()) return own;
    // A relative one is to be ignored.
    if (const std::string config = named("XDG_CONFIG_HOME"); config.starts_with("/"))
        return config + "/vktcfgtools";
    const std::string home = named("HOME");
    return home.empty() ? home : home + "/.config/vktcfgtools";
}

void platform_com_init() {}

bool platform_open_console() { return true; }

bool platform_prefers_dark() { return false; }

void platform_debugger_output(const char* text) {
    const char* wanted = std::getenv("VKT_DEBUGGER_LOG");
    if (text != nullptr && wanted != nullptr && std::strcmp(wanted, "1") == 0) std::fputs(text, stderr);
}

void platform_exit_now(int status) {
    std::fflush(nullptr);
    _exit(status);
}

int64_t platform_cpu_ms() {
    timespec used{};
    if (clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used) != 0) return 0;
    return static_cast<int64_t>(used.tv_sec) * 1000 + used.tv_nsec / 1000000;
}

int64_t platform_resident_kib() {
    std::FILE* file = std::fopen("/proc/self/statm", "re");
    if (file == nullptr) return 0;
    long size = 0;
    long resident = 0; // both in pages
    const int fields = std::fscanf(file, "%ld %ld", &size, &resident);
    std::fclose(file);
    return fields == 2 ? static_cast<int64_t>(resident) * (sysconf(_SC_PAGESIZE) / 1024) : 0;
}
