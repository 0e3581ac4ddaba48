// vkt_sim COM7=VKT531A COM8=VKT510A ...: simulated modules to try the tool with. `vkt_sim --help` says the rest.
#include "sim/module.h"

#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <poll.h>
#include <sstream>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr const char* usage =
    "usage: vkt_sim PORT=MODEL ... [options]\n"
    "  PORT=MODEL          for example COM7=VKT531A; models VKT510A VKT530A VKT531A VKT610B VKT630B VKT631B\n"
    "  --fault PORT:FAULT[:after=N][:times=N|ever][:argument=N][:bytes=HEX]\n"
    "                      spoils replies: after N good ones, N times (1)\n"
    "  --memory PORT:HEX   the module's configuration memory at the start\n"
    "  --traffic PORT:KEY=VALUE[:KEY=VALUE...]\n"
    "                      what a B module sends in transfer mode:\n"
    "                        rate=N          frames a second (0: none), burst=N of them at once (1)\n"
    "                        count=N         in all (0: no end), first=N their first number (0)\n"
    "                        channels=1,2,3,4,5  types=0,8,128,136  lengths=0-64   taken in turn\n"
    "                        counter=identifier|payload|none   where a frame carries its number\n"
    "                        check=on|off    frames carry a CRC, both ways (off)\n"
    "                        errors=noise,no_start,cut,short_length,wrong_command,bad_check,too_much_data\n"
    "                        error_every=N   one frame of N is spoiled, by the errors in turn (0: none)\n"
    "  --paced             replies take the time of 9600 baud\n"
    "  --links DIR         where the ports' device links are put (default: a folder of its own under /tmp)\n"
    "  --report FILE       writes what was asked of the modules when it ends, and every traffic frame: sent= (or\n"
    "                      spoiled=ERROR) and received=, with microseconds and bytes\n"
    "When the ports are there it prints VKT_COM_PORTS=..., which the tool takes from its environment. It ends on\n"
    "SIGINT, SIGTERM, or the command quit.\n";
constexpr const char* command_help =
    "commands: fault PORT FAULT[:after=N][:times=N|ever][:argument=N][:bytes=HEX] | unplug PORT | "
    "plug PORT | memory PORT [HEX] | count PORT | babble PORT HEX | traffic PORT KEY=VALUE[:KEY=VALUE...] | "
    "mode PORT config|transfer | paced on|off | report | help | quit\n";

struct simulated {
    std::string port, model;
    std::unique_ptr<sim::module_t> module;
};

std::vector<simulated> modules;
std::string links_dir, report_path;
bool own_links_dir = false;
std::mutex output_lock;

void say(const std::string& line) {
    const std::lock_guard<std::mutex> hold(output_lock);
    std::fputs(line.c_str(), stdout);
    std::fflush(stdout);
}

std::string hex(const std::vector<uint8_t>& bytes, const char* between) {
    std::string text;
    char pair[4];
    for (const uint8_t byte : bytes) {
        if (!text.empty()) text += between;
        std::snprintf(pair, sizeof pair, "%02X", byte);
        text += pair;
    }
    return text;
}

bool read_hex(const std::string& text, std::vector<uint8_t>* bytes) {
    std::string digits;
    for (const char c : text) {
        if (c == ' ') continue;
        if (std::isxdigit(static_cast<unsigned char>(c)) == 0) return false;
        digits += c;
    }
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes->push_back(static_cast<uint8_t>(std::strtol(digits.substr(i, 2).c_str(), nullptr, 16)));
    return digits.size() % 2 == 0;
}

simulated* find_port(const std::string& port) {
    for (simulated& one : modules)
        if (one.port == port) return &one;
    return nullptr;
}

std::string link_of(const std::string& port) { return links_dir + "/" + port; }

/// Puts the link at the module's present device node, in one step.
bool link_port(const simulated& one) {
    const std::string fresh = link_of(one.port) + ".new";
    ::unlink(fresh.c_str());
    return ::symlink(one.module->port_path().c_str(), fresh.c_str()) == 0 &&
           std::rename(fresh.c_str(), link_of(one.port).c_str()) == 0;
}

std::string counters_text(const sim::counters& c, const char* between) {
    std::ostringstream text;
    text << "handshakes=" << c.handshakes << between << "firmware_reads=" << c.firmware_reads << between
         << "reads=" << c.reads << between << "writes=" << c.writes << between << "mode_texts=" << c.mode_texts
         << between << "unknown=" << c.unknown << between << "traffic_sent=" << c.traffic_sent << between
         << "traffic_received=" << c.traffic_received << between << "traffic_overrun=" << c.traffic_overrun;
    return text.str();
}

/// Line by line: there may be many.
void report_traffic(const sim::module_t& module, std::string* text) {
    for (const sim::traffic_note& note : module.traffic_sent()) {
        const bool good = note.error == sim::traffic_error::none;
        *text += good ? "sent=" : std::string("spoiled=") + sim::traffic_error_name(note.error) + " ";
        *text += std::to_string(note.time_us) + " " + hex(note.frame, " ") + "\n";
    }
    for (const sim::traffic_note& note : module.traffic_received())
        *text += "received=" + std::to_string(note.time_us) + " " + hex(note.frame, " ") + "\n";
}

bool write_report() {
    std::string text;
    for (const simulated& one : modules) {
        text += "[" + one.port + " " + one.model + "]\n" + counters_text(one.module->count(), "\n") + "\n";
        text += "mode=" + one.module->mode() + "\nmemory=" + hex(one.module->memory(), " ") + "\n";
        for (const auto& frame : one.module->requests()) text += "request=" + hex(frame, " ") + "\n";
        report_traffic(*one.module, &text);
    }
    const std::string fresh = report_path + ".new";
    std::FILE* file = std::fopen(fresh.c_str(), "wb");
    if (file == nullptr) return false;
    const bool stored = std::fwrite(text.data(), 1, text.size(), file) == text.size();
    return (std::fclose(file) == 0) && stored && std::rename(fresh.c_str(), report_path.c_str()) == 0;
}

// ---- commands ----

void set_fault(simulated* one, const std::string& text) {
    sim::fault_plan plan;
    std::string why;
    if (!sim::fault_parse(text, &plan, &why)) return say("error: " + why + "\n");
    one->module->plan(plan);
    say(one->port + " fault " + text + "\n");
}

void unplug(simulated* one, const std::string&) {
    ::unlink(link_of(one->port).c_str());
    one->module->hang_up();
    say(one->port + " unplugged\n");
}

void plug(simulated* one, const std::string&) {
    std::string why;
    const bool done = one->module->plug_in(&why) && link_port(*one);
    say(done ? one->port + " plugged in\n" : "error: " + one->port + " cannot be plugged in: " + why + "\n");
}

void memory(simulated* one, const std::string& text) {
    std::vector<uint8_t> bytes;
    if (!read_hex(text, &bytes)) return say("error: cannot read \"" + text + "\" as hex bytes\n");
    if (!bytes.empty()) one->module->set_memory(bytes);
    say(one->port + " memory " + hex(one->module->memory(), " ") + "\n");
}

void count(simulated* one, const std::string&) {
    say(one->port + " " + counters_text(one->module->count(), " ") + "\n");
}

void babble(simulated* one, const std::string& text) {
    std::vector<uint8_t> bytes;
    if (!read_hex(text, &bytes)) return say("error: cannot read \"" + text + "\" as hex bytes\n");
    one->module->babble(bytes);
    say(one->port + " babbled " + std::to_string(bytes.size()) + " bytes\n");
}

void set_traffic(simulated* one, const std::string& text) {
    sim::traffic_plan plan;
    std::string why;
    if (!sim::traffic_parse(text, &plan, &why)) return say("error: " + why + "\n");
    one->module->set_traffic(plan);
    say(one->port + " traffic " + text + "\n");
}

void set_mode(simulated* one, const std::string& text) {
    if (text != "config" && text != "transfer") return say("error: no mode \"" + text + "\"\n");
    one->module->set_mode(text);
    say(one->port + " mode " + text + "\n");
}

struct command_row {
    const char* name;
    void (*run)(simulated* one, const std::string& rest);
};
constexpr command_row port_commands[] = {{"fault", set_fault},     {"unplug", unplug}, {"plug", plug},
                                         {"memory", memory},       {"count", count},   {"babble", babble},
                                         {"traffic", set_traffic}, {"mode", set_mode}};

/// Runs a line from standard input; false for quit.
bool run_command(const std::string& line) {
    std::istringstream words(line);
    std::string name, port, rest;
    words >> name >> port;
    std::getline(words >> std::ws, rest);
    if (name.empty()) return true;
    if (name == "quit") return false;
    if (name == "help") {
        say(command_help);
    } else if (name == "report") {
        say(!report_path.empty() && write_report() ? "report written\n" : "error: no report written\n");
    } else if (name == "paced") {
        for (simulated& one : modules) one.module->set_paced(port == "on");
        say(std::string("paced ") + (port == "on" ? "on" : "off") + "\n");
    } else {
        for (const command_row& row : port_commands) {
            if (name != row.name) continue;
            simulated* one = find_port(port);
            if (one == nullptr)
                say("error: no module on \"" + port + "\"\n");
            else
                row.run(one, rest);
            return true;
        }
        say("error: unknown command \"" + name + "\"; help lists them\n");
    }
    return true;
}

// ---- start ----

struct options {
    std::vector<std::pair<std::string, std::string>> faults, memories, traffic; ///< port, text
    bool paced = false;

    /// The texts that an option's word brings, null for another word.
    std::vector<std::pair<std::string, std::string>>* of(const std::string& word) {
        if (word == "--fault") return &faults;
        if (word == "--memory") return &memories;
        return word == "--traffic" ? &traffic : nullptr;
    }
};

int refuse(const std::string& what) {
    std::fprintf(stderr, "vkt_sim: %s\n%s", what.c_str(), usage);
    return 2;
}

bool split_port(const std::string& text, char by, std::pair<std::string, std::string>* out) {
    const std::size_t at = text.find(by);
    if (at == std::string::npos || at == 0) return false;
    *out = {text.substr(0, at), text.substr(at + 1)};
    return true;
}

/// 0 to go on.
int read_arguments(int argc, char** argv, options* opt) {
    for (int i = 1; i < argc; i++) {
        const std::string word = argv[i];
        std::pair<std::string, std::string> pair;
        if (word == "--paced") {
            opt->paced = true;
        } else if (word == "--links" && i + 1 < argc) {
            links_dir = argv[++i];
        } else if (word == "--report" && i + 1 < argc) {
            report_path = argv[++i];
        } else if (auto* texts = opt->of(word);
                   texts != nullptr && i + 1 < argc && split_port(argv[i + 1], ':', &pair)) {
            texts->push_back(pair);
            i++;
        } else if (sim::model of{}; split_port(word, '=', &pair) && sim::model_from_name(pair.second, &of)) {
            modules.push_back({pair.first, pair.second, nullptr});
        } else {
            return refuse("cannot read \"" + word + "\"");
        }
    }
    return modules.empty() ? refuse("no module named") : 0;
}

int make_links_dir() {
    if (links_dir.empty()) {
        char name[] = "/tmp/vkt_sim.XXXXXX";
        if (::mkdtemp(name) == nullptr)
            return refuse(std::string("no folder for the links: ") + std::strerror(errno));
        links_dir = name;
        own_links_dir = true;
    } else if (::mkdir(links_dir.c_str(), 0777) != 0 && errno != EEXIST) {
        return refuse(links_dir + ": " + std::strerror(errno));
    }
    return 0;
}

int start_modules(const options& opt) {
    for (simulated& one : modules) {
        sim::model of{};
        sim::model_from_name(one.model, &of);
        std::string why;
        one.module = sim::module_start(of, one.port, &why, [port = one.port](const char* kind, const auto& frame) {
            if (frame.empty()) ::unlink(link_of(port).c_str());
            say(port + " " + kind + (frame.empty() ? "" : " ") + hex(frame, " ") + "\n");
        });
        if (one.module == nullptr || !link_port(one)) return refuse(one.port + ": no port: " + why);
        one.module->set_paced(opt.paced);
    }
    for (const auto& [port, text] : opt.faults) {
        sim::fault_plan plan;
        std::string why = "no module on " + port;
        simulated* one = find_port(port);
        if (one == nullptr || !sim::fault_parse(text, &plan, &why)) return refuse(why);
        one->module->plan(plan);
    }
    for (const auto& [port, text] : opt.traffic) {
        sim::traffic_plan plan;
        std::string why = "no module on " + port;
        simulated* one = find_port(port);
        if (one == nullptr || !sim::traffic_parse(text, &plan, &why)) return refuse(why);
        one->module->set_traffic(plan);
    }
    for (const auto& [port, text] : opt.memories) {
        std::vector<uint8_t> bytes;
        simulated* one = find_port(port);
        if (one == nullptr || !read_hex(text, &bytes)) return refuse("cannot read the memory of " + port);
        one->module->set_memory(bytes);
    }
    return 0;
}

/// Until a signal or the command quit. The end of standard input only ends the commands.
void serve(int signals) {
    std::string pending;
    pollfd fds[2] = {{signals, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
    for (;;) {
        if (::poll(fds, 2, -1) < 0 && errno != EINTR) return;
        if (fds[0].revents != 0) return;
        if (fds[1].revents == 0) continue;
        char chunk[512];
        const ssize_t n = ::read(STDIN_FILENO, chunk, sizeof chunk);
        if (n <= 0) {
            fds[1].fd = -1;
            continue;
        }
        pending.append(chunk, static_cast<std::size_t>(n));
        for (std::size_t at; (at = pending.find('\n')) != std::string::npos; pending.erase(0, at + 1))
            if (!run_command(pending.substr(0, at))) return;
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], "--help") == 0) {
        std::fputs(usage, stdout);
        std::fputs(command_help, stdout);
        return 0;
    }
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGINT);
    sigaddset(&ending, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &ending, nullptr); // before any thread is there, so that they all inherit it
    const int signals = ::signalfd(-1, &ending, SFD_CLOEXEC);

    options opt;
    if (const int status = read_arguments(argc, argv, &opt); status != 0) return status;
    if (const int status = make_links_dir(); status != 0) return status;
    int status = start_modules(opt);
    if (status == 0) {
        std::string ports;
        for (const simulated& one : modules)
            ports += (ports.empty() ? "" : ";") + one.port + "=" + link_of(one.port);
        say("VKT_COM_PORTS=" + ports + "\n");
        serve(signals);
        if (!report_path.empty() && !write_report()) {
            std::fprintf(stderr, "vkt_sim: cannot write %s\n", report_path.c_str());
            status = 1;
        }
    }
    for (const simulated& one : modules) ::unlink(link_of(one.port).c_str());
    modules.clear();
    if (own_links_dir) ::rmdir(links_dir.c_str());
    return status;
}
