#include "profile/json_tree.h"

#include "profile/json_text.h"

#include <nlohmann/json.hpp>

namespace {

using json = nlohmann::json;

constexpr std::size_t max_values = 1000;
constexpr std::size_t max_depth = 4;

/// Builds the tree; every function answers whether the parser is to go on.
class tree_builder {
  public:
    json_node root;

    bool null() { return add({}); }
    bool boolean(bool value) { return add({json_kind::flag, value ? 1u : 0u}); }
    bool number_integer(json::number_integer_t) { return add({json_kind::number}); } // below 0
    bool number_unsigned(json::number_unsigned_t value) { return add({json_kind::natural, value}); }
    bool number_float(json::number_float_t, const std::string&) { return add({json_kind::number}); }
    bool string(std::string& value) { return add({json_kind::text, 0, std::move(value)}); }
    bool binary(json::binary_t&) { return false; }
    bool start_object(std::size_t) { return open({json_kind::object}); }
    bool key(std::string& name) {
        key_ = std::move(name);
        return true;
    }
    bool end_object() { return close(); }
    bool start_array(std::size_t) { return open({json_kind::list}); }
    bool end_array() { return close(); }
    bool parse_error(std::size_t, const std::string&, const json::exception&) { return false; }

  private:
    bool add(json_node node) {
        if (++values_ > max_values) return false;
        node.key = std::exchange(key_, {});
        if (path_.empty()) {
            root = std::move(node);
        } else {
            path_.back().push_back(std::move(node));
        }
        return true;
    }
    bool open(json_node node) {
        if (path_.size() >= max_depth || !add(std::move(node))) return false;
        path_.emplace_back();
        return true;
    }
    bool close() {
        std::vector<json_node> members = std::move(path_.back());
        path_.pop_back();
        json_node& holder = path_.empty() ? root : path_.back().back();
        if (holder.kind == json_kind::object) holder.members = std::move(members);
        return true;
    }

    std::vector<std::vector<json_node>> path_; ///< members of what is open, from the root on
    std::string key_;
    std::size_t values_ = 0;
};

} // namespace

std::optional<json_node> json_tree(const std::string& text) {
    tree_builder builder;
    if (text.find('\0') != std::string::npos) return std::nullopt; // the parser takes it for the end
    if (!json::sax_parse(text, &builder)) return std::nullopt;
    return std::move(builder.root);
}

std::string json_quoted(const std::string& text) {
    return json(text).dump(-1, ' ', false, json::error_handler_t::replace);
}
