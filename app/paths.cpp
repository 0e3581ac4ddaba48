#include "app/paths.h"

#include "toolkit/core/date_time.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/text.h"

std::string& resource_root() {
    static std::string root = "../res";
    return root;
}

std::string& error_log_path() {
    static std::string path;
    return path;
}

void error_log_name_from_now() {
    date_time_t now;
    date_time_init(&now);
    error_log_path() = tk_format("%s/err-%d-%d-%d-%d.txt", log_folder, now.year, now.month, now.day, now.hour);
}

void log_folder_ensure() {
    if (!fs_dir_exist(os_fs(), log_folder)) static_cast<void>(fs_create_dir(os_fs(), log_folder));
}
