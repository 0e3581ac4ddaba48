#include "monitor/names.h"

const char* name_of(name_table table, uint32_t value) { return value < table.size() ? table[value] : unknown_name; }

int32_t value_of(name_table table, std::string_view name) {
    for (std::size_t value = 0; value < table.size(); ++value)
        if (name == table[value]) return static_cast<int32_t>(value);
    return -1;
}
