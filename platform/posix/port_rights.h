// What a user lacks to open a device node, and the command that gives it.
#pragma once

#include <cstdint>
#include <string>

namespace posix_com {

struct node_rights {
    std::string node;        ///< its path, without links on the way
    uint32_t mode = 0;       ///< its permission bits
    std::string group = {};  ///< empty when it has no name
    bool group_wide = false; ///< the group is the superuser's: a place in it gives far more than a port
    bool in_group = false;   ///< the user has a place in the group (perhaps from the next login on)
};

/// "sudo usermod -aG dialout $USER" where the group may read and write, else "sudo chmod a+rw /dev/ttyUSB0", with
/// quotes around a path that a shell would take apart. Any thread.
std::string grant_command(const node_rights& rights);

/// Whether a process has the node of this device and inode number locked for itself, from the text of /proc/locks;
/// its id, 0 when none has. Any thread.
int64_t lock_holder(const std::string& locks, uint64_t device, uint64_t inode);

} // namespace posix_com
