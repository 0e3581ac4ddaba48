#include "profile/json_tree.h"
#include "profile/profile.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/text.h"

#include <set>

namespace {

constexpr const char* twice = "重复";
constexpr const char* unknown = "未知的键";
constexpr const char* missing = "缺少";
constexpr std::size_t shown_max = 100; ///< bytes

/// What a file says may be of any length: enough of it to tell where it is.
std::string shown_of(const std::string& text) {
    const std::string begin = tk_utf8_cut(text, shown_max);
    return begin.size() < text.size() ? begin + "…" : text;
}

/// Reads one file's tree; what is wrong is added to the refusals.
class profile_reader {
  public:
    profile_reader(family_list families, const family_descriptor* for_family)
        : families_(families), for_family_(for_family) {}

    profile_read_result read(const json_node& root) {
        if (root.kind != json_kind::object) return refused("", "不是 JSON 对象");
        const json_node* format = nullptr;
        const json_node* model = nullptr;
        const json_node* values = nullptr;
        const json_node* program = nullptr;
        const json_node* note = nullptr;
        const std::pair<const char*, const json_node**> places[] = {
            {"format", &format}, {"program", &program}, {"model", &model}, {"note", &note}, {"values", &values}};
        std::set<std::string> seen;
        for (const json_node& member : root.members) {
            const json_node** place = nullptr;
            for (const auto& [key, where] : places)
                if (member.key == key) place = where;
            if (place == nullptr)
                refuse(member.key, unknown);
            else if (!seen.insert(member.key).second)
                refuse(member.key, twice);
            else
                *place = &member;
        }
        // Another format's values mean nothing here.
        if (!read_format(format)) return std::move(result_);
        out_.program = text_of(program, "program");
        out_.note = text_of(note, "note");
        if (out_.note.size() > profile_note_max)
            refuse("note", tk_format("过长（最多 %zu 字节）", profile_note_max));
        if (read_model(model)) read_values(values);
        if (result_.refusals.empty()) result_.loaded = std::move(out_);
        return std::move(result_);
    }

    profile_read_result refused(const char* key, const std::string& reason) {
        refuse(key, reason);
        return std::move(result_);
    }

  private:
    void refuse(const std::string& key, const std::string& reason) {
        result_.refusals.push_back({shown_of(key), reason});
    }

    bool read_format(const json_node* node) {
        if (node == nullptr) {
            refuse("format", missing);
        } else if (node->kind != json_kind::natural || node->natural != profile_format) {
            refuse("format", tk_format("应为 %d", profile_format));
        } else {
            return true;
        }
        return false;
    }

    std::string text_of(const json_node* node, const char* key) {
        if (node == nullptr) return "";
        if (node->kind != json_kind::text) refuse(key, "类型不对，应为文本");
        return node->text;
    }

    bool read_model(const json_node* node) {
        if (node == nullptr) {
            refuse("model", missing);
            return false;
        }
        out_.model = text_of(node, "model");
        if (node->kind != json_kind::text) return false;
        out_.of = family_of_model(families_, out_.model);
        if (out_.of == nullptr) {
            refuse("model", "未知型号 " + shown_of(out_.model));
            return false;
        }
        if (for_family_ == nullptr || for_family_ == out_.of) return true;
        refuse("model", out_.model + " 与 " + for_family_->device + " 不是同一系列");
        return false;
    }

    void read_values(const json_node* node) {
        if (node == nullptr) return refuse("values", missing);
        if (node->kind != json_kind::object) return refuse("values", "类型不对，应为对象");
        for (const field* row : fields_by_page(*out_.of)) out_.values.push_back({row, value_default(*row)});
        std::set<std::string> seen;
        for (const json_node& member : node->members) {
            profile_value* place = nullptr;
            for (profile_value& one : out_.values)
                if (member.key == one.what->key) place = &one;
            if (!seen.insert(member.key).second)
                refuse(member.key, twice);
            else if (place == nullptr)
                refuse(member.key, unknown);
            else
                read_value(member, place);
        }
    }

    void read_value(const json_node& node, profile_value* place) {
        const field& row = *place->what;
        const json_node* number = &node;
        const json_node* text = nullptr;
        if (node.kind == json_kind::object && !value_is_text(row) && !split(node, &number, &text)) return;
        field_value value;
        std::string why;
        if (!read_plain(row, *number, &value, &why) || !(why = value_refusal(row, value)).empty())
            return refuse(node.key, why);
        // The one of the two that was edited by hand cannot be told.
        if (text != nullptr && (text->kind != json_kind::text || text->text != value_shown(row, value)))
            return refuse(node.key,
                          "名称与数值不符，" + std::to_string(value.number) + " 是 " + value_shown(row, value));
        place->value = std::move(value);
    }

    /// {"value": NUMBER, "text": TEXT}
    bool split(const json_node& node, const json_node** number, const json_node** text) {
        *number = nullptr;
        for (const json_node& member : node.members) {
            const json_node** place = member.key == "value" ? number : text;
            if (member.key != "value" && member.key != "text") {
                refuse(node.key + "." + member.key, unknown);
                return false;
            }
            if (*place != nullptr) {
                refuse(node.key + "." + member.key, twice);
                return false;
            }
            *place = &member;
        }
        if (*number == nullptr) refuse(node.key, "缺少 value");
        return *number != nullptr;
    }

    static bool read_plain(const field& row, const json_node& node, field_value* value, std::string* why) {
        if (value_is_text(row)) {
            *why = "类型不对，应为文本";
            value->text = node.text;
            return node.kind == json_kind::text;
        }
        if (row.form == value_form::flag) {
            *why = "类型不对，应为 true 或 false";
            value->number = static_cast<uint32_t>(node.natural);
            return node.kind == json_kind::flag;
        }
        *why = "类型不对，应为不带符号的整数";
        if (node.kind != json_kind::natural) return false;
        *why = "超出范围，应为 " + value_range(row);
        value->number = static_cast<uint32_t>(node.natural);
        return node.natural <= UINT32_MAX;
    }

    const family_list families_;
    const family_descriptor* const for_family_;
    profile out_;
    profile_read_result result_;
};

/// The file's bytes, or why they cannot be had.
const char* read_file(const std::string& path, std::string* text) {
    if (fs_dir_exist(os_fs(), path.c_str())) return "是文件夹";
    if (!fs_file_exist(os_fs(), path.c_str())) return "文件不存在";
    const fs_file_ptr file(fs_open_file(os_fs(), path.c_str(), "rb"));
    if (file == nullptr) return "文件打不开，请检查权限";
    text->resize(profile_max_bytes + 1);
    std::size_t size = 0;
    int64_t got = 1;
    while (got > 0 && size < text->size()) {
        got = fs_file_read(file.get(), text->data() + size, text->size() - size);
        if (got > 0) size += static_cast<std::size_t>(got);
    }
    if (got < 0) return "文件读取失败";
    text->resize(size);
    return size > profile_max_bytes ? "文件过大（最多 1 MiB）" : nullptr;
}

} // namespace

profile_read_result profile_parse(const std::string& text, family_list families,
                                  const family_descriptor* for_family) {
    profile_reader reader(families, for_family);
    if (text.empty()) return reader.refused("", "文件为空");
    const std::optional<json_node> tree = json_tree(text);
    return tree ? reader.read(*tree) : reader.refused("", "不是配置文件（JSON 文本不完整或有误）");
}

profile_read_result profile_load(const std::string& path, family_list families,
                                 const family_descriptor* for_family) {
    std::string text;
    if (const char* why = read_file(path, &text)) return profile_reader(families, for_family).refused("", why);
    return profile_parse(text, families, for_family);
}
