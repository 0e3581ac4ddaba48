#include "platform/posix/port_names.h"
#include "platform/com_port.h"
#include "platform/posix/com_port_calls.h"
#include "platform/posix/handles.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <string_view>
#include <utility>

namespace posix_com {
namespace {

/// The fixed rule: `count` nodes from `first_node` on are the ports from `first_port` on. A node's number is the
/// kernel's and stays while the device is plugged, and so does the port's.
struct name_rule {
    const char* node;
    int first_node;
    int count;
    const char* port;
    int first_port;
    bool needs_chip; ///< the kernel makes these nodes for sockets without a chip, too
};
constexpr name_rule rules[] = {
    {"ttyS", 0, 10, "COM", 1, true},     {"ttyUSB", 0, 40, "COM", 11, false}, {"ttyACM", 0, 40, "COM", 51, false},
    {"ttyS", 10, 100, "COM", 101, true}, {"lp", 0, 9, "LPT", 1, false},
};

/// A name's place in the list: COM before LPT, then by number.
using name_key = std::pair<std::string, int>;
using name_map = std::map<name_key, std::string>;

std::string name_text(const name_key& key) { return key.first + std::to_string(key.second); }

/// False for what is not letters followed by a number.
bool read_name(std::string_view text, name_key* key) {
    const std::size_t digits = std::min(text.find_first_of("0123456789"), text.size());
    key->first.clear();
    for (char c : text.substr(0, digits))
        key->first += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data() + digits, end, key->second);
    return !key->first.empty() && read.ec == std::errc() && read.ptr == end;
}

std::mutex& map_lock() {
    static std::mutex& lock = *new std::mutex;
    return lock;
}
name_map& mapped() { // guarded by map_lock()
    static name_map& names = *new name_map;
    return names;
}

/// "COM7=/path;COM12=/path". An empty path takes a name of the fixed rule away; what is no name is passed over.
name_map names_from_environment() {
    name_map names;
    const char* text = std::getenv("VKT_COM_PORTS");
    for (std::string_view rest = text == nullptr ? "" : text; !rest.empty();) {
        const std::size_t end = std::min(rest.find(';'), rest.size());
        const std::string_view part = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        const std::size_t equals = part.find('=');
        name_key key;
        if (equals != std::string_view::npos && read_name(part.substr(0, equals), &key))
            names[key] = part.substr(equals + 1);
    }
    return names;
}

/// Names given by hand; the process's own first.
name_map names_by_hand() {
    name_map names = names_from_environment();
    const std::lock_guard<std::mutex> guard(map_lock());
    for (const auto& [key, node] : mapped()) names[key] = node;
    return names;
}

std::string in_root(const char* folder) {
    const char* root = std::getenv("VKT_COM_ROOT");
    return (root == nullptr ? "" : root) + std::string(folder);
}

std::string node_name(const name_rule& rule, int i) { return rule.node + std::to_string(rule.first_node + i); }

/// The kernel says 0 for the type of a serial port without a chip behind it.
bool has_chip(const std::filesystem::path& sys_node) {
    std::ifstream file(sys_node / "type");
    int type = 1;
    if (!(file >> type)) return std::filesystem::exists(sys_node / "device");
    return type != 0;
}

void add_names_by_rule(const std::filesystem::path& sys_tty, const std::filesystem::path& dev, name_map* names) {
    for (const name_rule& rule : rules) {
        for (int i = 0; i < rule.count; i++) {
            const std::string node = node_name(rule, i);
            std::error_code ignored;
            if (!std::filesystem::exists(dev / node, ignored)) continue;
            if (rule.needs_chip && !has_chip(sys_tty / node)) continue;
            names->emplace(name_key{rule.port, rule.first_port + i}, dev / node);
        }
    }
}

std::vector<std::string> texts_of(const name_map& names) {
    std::vector<std::string> texts;
    for (const auto& [key, node] : names)
        if (!node.empty()) texts.push_back(name_text(key));
    return texts;
}

} // namespace

std::string port_name_node(const std::string& name) {
    name_key key;
    if (!read_name(name, &key)) return {};
    const name_map by_hand = names_by_hand();
    const auto found = by_hand.find(key);
    if (found != by_hand.end()) return found->second;
    for (const name_rule& rule : rules) {
        const int i = key.second - rule.first_port;
        if (key.first == rule.port && i >= 0 && i < rule.count) return device_folder() + "/" + node_name(rule, i);
    }
    return {};
}

std::string path_node(std::string_view path) {
    constexpr std::string_view device_prefix = R"(\\.\)";
    if (path.starts_with(device_prefix)) return port_name_node(std::string(path.substr(device_prefix.size())));
    if (path.find('/') != std::string_view::npos) return std::string(path);
    const bool short_name = path.size() == 4 && path[3] != '0';
    return short_name ? port_name_node(std::string(path)) : std::string();
}

std::vector<std::string> nodes_by_hand() {
    std::vector<std::string> nodes;
    for (const auto& [key, node] : names_by_hand())
        if (!node.empty()) nodes.push_back(node);
    return nodes;
}

std::string device_folder() { return in_root("/dev"); }
std::string about_folder() { return in_root("/sys/class/tty"); }

bool is_rule_node(const std::string& file_name) {
    return std::ranges::any_of(rules, [&file_name](const name_rule& rule) {
        const std::string_view digits = std::string_view(file_name).substr(
            file_name.starts_with(rule.node) ? std::string_view(rule.node).size() : file_name.size());
        return !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
    });
}

std::vector<std::string> port_names() {
    name_map names = names_by_hand();
    add_names_by_rule(about_folder(), device_folder(), &names);
    return texts_of(names);
}

std::vector<std::string> port_names_by_rule(const std::string& sys_tty, const std::string& dev) {
    name_map names;
    add_names_by_rule(sys_tty, dev, &names);
    return texts_of(names);
}

} // namespace posix_com

void com::map_port(const std::string& name, const std::string& path) {
    posix_com::name_key key;
    if (!posix_com::read_name(name, &key)) return;
    const std::lock_guard<std::mutex> guard(posix_com::map_lock());
    if (path.empty())
        posix_com::mapped().erase(key);
    else
        posix_com::mapped()[key] = path;
}

bool com::port_present(const std::string& name) {
    constexpr const char* head = "\\\\.\\";
    char device[1024];
    const std::string bare = name.starts_with(head) ? name.substr(4) : name;
    const bool named = com::QueryDosDeviceA(bare.c_str(), device, sizeof device) != 0;
    std::error_code ignored;
    return std::filesystem::is_character_file(named ? device : bare, ignored);
}

std::string com::describe_port(const std::string& name) {
    const std::filesystem::path node = posix_com::port_name_node(name);
    if (node.empty()) return {};
    // A name given by hand may lead to the node by a link with a name of its own.
    const std::filesystem::path known = posix_com::about_folder();
    std::error_code error;
    std::filesystem::path device = std::filesystem::canonical(known / node.filename() / "device", error);
    if (error) {
        const std::filesystem::path target = std::filesystem::canonical(node, error);
        if (!error) device = std::filesystem::canonical(known / target.filename() / "device", error);
    }
    if (error) return {};
    // The USB device is one or two levels above the serial line that it makes.
    for (int levels = 0; levels < 4 && !std::filesystem::exists(device / "product", error); ++levels)
        device = device.parent_path();
    std::string text;
    for (const char* part : {"manufacturer", "product", "serial"}) {
        std::ifstream file(device / part);
        std::string line;
        if (std::getline(file, line) && !line.empty()) text += (text.empty() ? "" : " ") + line;
    }
    return text;
}

DWORD QueryDosDeviceA(const char* device, char* target, DWORD max) {
    std::string list;
    if (device == nullptr) {
        for (const std::string& name : posix_com::port_names()) list.append(name).push_back('\0');
    } else {
        const std::string node = posix_com::port_name_node(device);
        if (node.empty()) return static_cast<DWORD>(posix_com::fail(ERROR_FILE_NOT_FOUND));
        list.append(node).push_back('\0');
    }
    list.push_back('\0');
    if (target == nullptr || list.size() > max)
        return static_cast<DWORD>(posix_com::fail(ERROR_INSUFFICIENT_BUFFER));
    std::copy(list.begin(), list.end(), target);
    return static_cast<DWORD>(list.size());
}
