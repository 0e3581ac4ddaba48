#include "app/export_file.h"

#include "app/devices.h"
#include "app/profile_title.h"
#include "profile/export.h"
#include "shell/err_display.h"
#include "toolkit/core/fs.h"
#include "toolkit/ravel/file_dialog.h"

#include <iterator>

namespace {

struct form_row {
    export_form form;
    const char* text;
    const char* extension;
};
constexpr form_row forms[] = {
    {export_form::frames, "文本", "txt"},
    {export_form::c_array, "C 数组", "h"},
    {export_form::binary, "二进制", "bin"},
    {export_form::script, "终端脚本", "script"},
};

} // namespace

ret_t export_frames_to_file(widget* home) {
    const family_pages* pages = current_pages();
    const dev_obj* dev = current_device();
    if (pages == nullptr || dev == nullptr) return RET_FAIL;
    file_question question{
        .title = "导出写入的字节", .folder = path_folder(profile_now().path), .name = current_model()};
    for (const form_row& row : forms) question.filters.push_back({row.text, row.extension});
    const auto chosen = file_dialog_save(question);
    if (!chosen || chosen->filter >= std::size(forms)) return RET_OK;
    const bool alternative = widget_get_value_int(widget_lookup(home, pages->code_mode)) > 0;
    const std::string text = export_text(*dev, current_model(), alternative, forms[chosen->filter].form);
    if (fs_write_whole(chosen->path.c_str(), text) == RET_OK) return RET_OK;
    return err_display_show(("无法写入 " + chosen->path + "：文件夹不存在、没有权限或磁盘已满。").c_str());
}
