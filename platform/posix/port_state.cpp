// What shows of a port without opening it.
#include "platform/port_state.h"
#include "platform/posix/port_names.h"
#include "platform/posix/port_rights.h"

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <grp.h>
#include <pwd.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <vector>

namespace posix_com {
namespace {

std::string for_shell(const std::string& path) {
    constexpr const char* plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789/._-:+";
    if (path.find_first_not_of(plain) == std::string::npos) return path;
    std::string quoted = "'";
    for (const char c : path) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

/// The name of a group; empty when it has none.
std::string group_name(gid_t group) {
    std::vector<char> room(16384);
    ::group entry{};
    ::group* found = nullptr;
    const bool known = getgrgid_r(group, &entry, room.data(), room.size(), &found) == 0 && found != nullptr;
    return known ? entry.gr_name : "";
}

/// Whether the system's register of users has the user in a group: what counts from the next login on.
bool user_has_group(gid_t group) {
    std::vector<char> room(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(geteuid(), &entry, room.data(), room.size(), &found) != 0 || found == nullptr) return false;
    std::vector<gid_t> groups(1024);
    int count = static_cast<int>(groups.size());
    if (getgrouplist(entry.pw_name, entry.pw_gid, groups.data(), &count) < 0) return false;
    groups.resize(static_cast<std::size_t>(count));
    return std::find(groups.begin(), groups.end(), group) != groups.end();
}

bool may_open(const std::string& node) {
    return faccessat(AT_FDCWD, node.c_str(), R_OK | W_OK, AT_EACCESS) == 0 || (errno != EACCES && errno != EPERM);
}

std::string whole_text(const char* path) {
    const std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

} // namespace

std::string grant_command(const node_rights& rights) {
    constexpr uint32_t group_bits = 060;
    const bool by_group =
        (rights.mode & group_bits) == group_bits && !rights.group.empty() && !rights.group_wide && !rights.in_group;
    return by_group ? "sudo usermod -aG " + rights.group + " $USER" : "sudo chmod a+rw " + for_shell(rights.node);
}

int64_t lock_holder(const std::string& locks, uint64_t device, uint64_t inode) {
    std::istringstream lines(locks);
    for (std::string line; std::getline(lines, line);) {
        // "2: FLOCK  ADVISORY  WRITE 10979 00:1a:4 0 EOF"; those that wait for one have "->" behind the number.
        long long holder = 0;
        unsigned device_major = 0;
        unsigned device_minor = 0;
        uint64_t node = 0;
        if (std::sscanf(line.c_str(), "%*d: FLOCK %*s %*s %lld %x:%x:%" SCNu64, &holder, &device_major,
                        &device_minor, &node) != 4)
            continue;
        if (makedev(device_major, device_minor) == device && node == inode) return holder == 0 ? -1 : holder;
    }
    return 0;
}

} // namespace posix_com

using namespace posix_com;

com::port_state com::look_at_port(const std::string& path) {
    const std::string node = path_node(path);
    struct stat about {};
    if (node.empty()) return port_state::absent;
    if (stat(node.c_str(), &about) != 0) return errno == EACCES ? port_state::forbidden : port_state::absent;
    if (!S_ISCHR(about.st_mode)) return port_state::no_port;
    if (!may_open(node)) return port_state::forbidden;
    const int64_t holder = lock_holder(whole_text("/proc/locks"), about.st_dev, about.st_ino);
    if (holder == 0) return port_state::free;
    return holder == getpid() ? port_state::ours : port_state::taken;
}

std::string com::port_grant_command(const std::string& path) {
    std::error_code error;
    const std::string node = std::filesystem::canonical(path_node(path), error);
    struct stat about {};
    if (error || stat(node.c_str(), &about) != 0 || !S_ISCHR(about.st_mode) || may_open(node)) return {};
    return grant_command({.node = node,
                          .mode = about.st_mode & 0777U,
                          .group = group_name(about.st_gid),
                          .group_wide = about.st_gid == 0,
                          .in_group = user_has_group(about.st_gid)});
}
