#include "session/field.h"

ret_t field_set_default(const field& row, tk_object* props) {
    switch (row.form) {
    case value_form::number:
        return tk_object_set_prop_uint8(props, row.key, static_cast<uint8_t>(row.number));
    case value_form::flag:
        return tk_object_set_prop_bool(props, row.key, row.number != 0);
    case value_form::word:
        return tk_object_set_prop_uint32(props, row.key, row.number);
    case value_form::yes_no:
    case value_form::hex_text:
    case value_form::text:
        return tk_object_set_prop_str(props, row.key, row.text);
    }
    return RET_FAIL;
}

void fields_set_defaults(field_rows rows, tk_object* props, const char* except) {
    for (const field& row : rows)
        if (row.key != nullptr && (except == nullptr || std::string_view(row.key) != except))
            static_cast<void>(field_set_default(row, props));
}

uint8_t field_byte(const field& row, const tk_object* props) {
    return tk_object_get_prop_uint8(props, row.key, static_cast<uint8_t>(row.number));
}

uint32_t field_word(const field& row, const tk_object* props) {
    return tk_object_get_prop_uint32(props, row.key, row.number);
}

std::string field_text(const field& row, const tk_object* props) {
    return tk_object_get_prop_str(props, row.key, row.text);
}
