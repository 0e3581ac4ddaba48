// Ten thousand random edits, steps back and forth, profiles, reads and checks: marks and list agree with a
// comparison that knows the simulated module's memory and the code view's text alone.
#include "app/edits.h"

#include "app/change_list.h"
#include "dev_a/pages/vkt510a_pages.h"
#include "dev_b/pages/vkt610b_pages.h"
#include "dev_generic/pages/generic_pages.h"
#include "profile/compare.h"
#include "profile/profile.h"
#include "tests/support/app_fixture.h"

#include <charconv>

namespace {

constexpr int steps_in_all = VKT_RANDOM_STEPS; // fewer under the sanitisers, which are slower by far
constexpr int steps_of_a_model = steps_in_all / 3 + 1;

struct random_case {
    const char* model;
    const family_pages* pages;
    std::vector<const char*> tabs;
};

struct edits_random : app_test, testing::WithParamInterface<random_case> {
    const family_pages& pages() const { return *GetParam().pages; }
    dev_obj& dev() const { return device(pages()); }
    uint32_t next(uint32_t below) {
        state = state * 1664525 + 1013904223;
        return (state >> 8) % below;
    }

    /// The image that the code view's text tells: behind "F7 F8 01 3C", or the eight digits of each register.
    static std::vector<uint8_t> image_on_show() {
        std::string text;
        for (char c : app_test::text(home(), "mledit"))
            if (c != ' ' && c != '\n') text += c;
        std::vector<uint8_t> bytes;
        const auto take = [&](std::size_t at, std::size_t count) {
            for (std::size_t i = 0; i < count && at + 2 * i + 2 <= text.size(); ++i) {
                uint8_t byte = 0;
                std::from_chars(&text[at + 2 * i], &text[at + 2 * i + 2], byte, 16);
                bytes.push_back(byte);
            }
        };
        if (text.starts_with("F7F8013C")) {
            take(8, 60);
            return bytes;
        }
        for (std::size_t at = text.find("0702FF"); at != std::string::npos; at = text.find("0702FF", at + 16))
            take(at + 8, 4);
        return bytes;
    }

    /// Bits that are not the same, of the bytes that the code view shows.
    static std::vector<uint8_t> differing(std::span<const uint8_t> one, std::span<const uint8_t> other) {
        std::vector<uint8_t> bits(std::min(one.size(), other.size()));
        for (std::size_t i = 0; i < bits.size(); ++i) bits[i] = one[i] ^ other[i];
        return bits;
    }
    void clear_field(std::vector<uint8_t>& bits, const field& what) const {
        for (unsigned bit = 0; bit < what.place.bits; ++bit) {
            const bool registers = dev().of.of_registers;
            const unsigned place =
                registers ? what.place.at * 32u + what.place.bit + bit : what.place.at * 8u + bit;
            if (place / 8 < bits.size()) bits[place / 8] &= static_cast<uint8_t>(~(1u << place % 8));
        }
    }

    void edit() {
        const page_table& table = *pages().tables[next(static_cast<uint32_t>(pages().tables.size()))];
        const page_row& row = table.rows[next(static_cast<uint32_t>(table.rows.size()))];
        widget* page = at(table.name);
        widget* w = widget_lookup(page, row.name);
        const kind_event what = event_of(row.kind);
        if (w == nullptr || !what.usable || row.what->key == nullptr) return;
        const auto choices = row.what->choices;
        if (row.kind == row_kind::hex_text || row.kind == row_kind::hex_pair) {
            std::string digits;
            for (std::size_t i = 0; i < 2 * row.what->place.bytes(); ++i) digits += "0123456789ABCDEF"[next(16)];
            widget_set_text_utf8(w, digits.c_str());
        } else if (!choices.empty()) {
            widget_set_value_int(w, choices[next(static_cast<uint32_t>(choices.size()))].value);
        } else {
            widget_set_value_int(w, static_cast<int32_t>(next(row.kind == row_kind::check ? 2 : 300)));
        }
        page_event(table, row, page, dev(), {.type = what.type, .target = w});
    }
    struct kind_event {
        bool usable;
        event_type type;
    };
    static kind_event event_of(row_kind kind) {
        switch (kind) {
        case row_kind::choice:
        case row_kind::choice_text:
        case row_kind::check:
        case row_kind::hex_pair:
            return {true, event_type::value_changed};
        case row_kind::number:
            return {true, event_type::value_changing};
        case row_kind::hex_text:
            return {true, event_type::blur};
        default:
            return {false, event_type::click};
        }
    }

    void load_profile() {
        profile loaded = profile_of(dev(), GetParam().model);
        for (profile_value& one : loaded.values) {
            const field_value other{next(4), one.value.text};
            if (!value_is_text(*one.what) && value_refusal(*one.what, other).empty()) one.value = other;
        }
        ASSERT_EQ(profile_apply(loaded, dev()), RET_OK);
        edits_applied(home(), "打开");
    }

    void judge(int step) {
        const std::vector<uint8_t> on_show = image_on_show();
        ASSERT_GE(on_show.size(), 60U) << step;
        std::vector<uint8_t> bits = differing(known, on_show);
        const std::vector<image_difference> listed = dev_unwritten(dev());
        std::string keys;
        for (const image_difference& one : listed) {
            std::vector<uint8_t> without = bits;
            clear_field(without, *one.what);
            EXPECT_NE(without, bits) << step << ": " << one.what->key << " is listed and the same";
            bits = without;
            keys += std::string(" ") + one.what->key + " ";
        }
        for (const image_difference& one : image_differences(dev().of, known, dev().image))
            if (one.always_same) clear_field(bits, *one.what);
        for (const field* what : fields_by_page(dev().of)) {
            std::vector<uint8_t> without = bits;
            clear_field(without, *what);
            EXPECT_EQ(without, bits) << step << ": " << what->key << " differs and is not listed";
        }
        EXPECT_EQ(app_test::text(home(), "tab_changes"),
                  listed.empty() ? "改动" : "改动 " + std::to_string(listed.size()))
            << step;
        for (const page_table* table : pages().tables)
            for (const page_row& row : table->rows) {
                widget* w = row.what->key == nullptr || row.kind == row_kind::caption
                                ? nullptr
                                : widget_lookup(at(table->name), row.name);
                if (w == nullptr) continue;
                const bool is_listed = keys.find(std::string(" ") + row.what->key + " ") != std::string::npos;
                EXPECT_EQ(widget_get_marked(w), is_listed) << step << ": " << row.what->key;
            }
    }

    uint32_t state = 20250304;
    std::vector<uint8_t> known; ///< what the module is known to hold, else the defaults
};

TEST_P(edits_random, marks_and_list_agree_with_the_bytes) {
    connect(GetParam().model);
    for (const char* tab : GetParam().tabs) click(home(), tab);
    known = image_on_show();
    for (int step = 0; step < steps_of_a_model && !HasFailure(); ++step) {
        const std::string before = text(home(), "mledit");
        const edit_step* const last = edits_of(pages())->undoable();
        const uint32_t what = next(1000);
        if (what < 5) {
            std::vector<uint8_t> memory = module->memory();
            memory[next(60)] ^= static_cast<uint8_t>(1 + next(3));
            module->set_memory(memory);
            ASSERT_EQ(run("button_read"), "读配置完成");
            press_ok();
            known = module->memory();
        } else if (what < 10) {
            run("button_check");
            press_ok();
            known = module->memory();
        } else if (what < 14) {
            ASSERT_EQ(run("button_write"), "写配置完成");
            press_ok();
            known = module->memory();
        } else if (what < 30) {
            load_profile();
        } else if (what < 40) {
            click(home(), "button_default");
        } else if (what < 250) {
            edits_undo(home());
        } else if (what < 350) {
            edits_redo(home());
        } else {
            edit();
            const std::string after = text(home(), "mledit");
            if (edits_of(pages())->undoable() != last && next(4) == 0) {
                ASSERT_EQ(edits_undo(home()), RET_OK);
                settle();
                ASSERT_EQ(text(home(), "mledit"), before) << step;
                ASSERT_EQ(edits_redo(home()), RET_OK);
                settle();
                ASSERT_EQ(text(home(), "mledit"), after) << step;
            }
        }
        settle();
        judge(step);
    }
}

INSTANTIATE_TEST_SUITE_P(
    models, edits_random,
    testing::Values(
        random_case{"VKT531A", &generic_pages, {"table_button_spi", "table_button_uart", "table_button_can"}},
        random_case{"VKT510A",
                    &vkt510a_pages,
                    {"vkt510a_tab_button_spi", "vkt510a_tab_button_uart", "vkt510a_tab_button_can"}},
        random_case{"VKT610B",
                    &vkt610b_pages,
                    {"vkt610b_tab_button_spi", "vkt610b_tab_button_uart", "vkt610b_tab_button_canfd"}}),
    [](const auto& test) { return test.param.model; });

} // namespace
