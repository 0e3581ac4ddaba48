// What a page's selectors offer first can be chosen, whatever the store holds.
#include "app/families.h"
#include "tests/support/home_stage.h"
#include "toolkit/core/text.h"

namespace {

enum class content { zeros, ones, missing };

class first_choice : public home_stage, public testing::WithParamInterface<content> {
  protected:
    void fill_store() const {
        for (const field& row : dev->of.fields) {
            if (row.key == nullptr) continue;
            if (GetParam() == content::missing)
                tk_object_remove_prop(dev->props.get(), row.key);
            else if (row.form == value_form::hex_text || row.form == value_form::text ||
                     row.form == value_form::yes_no)
                tk_object_set_prop_str(dev->props.get(), row.key, GetParam() == content::zeros ? "0" : "1");
            else
                set(row.key, GetParam() == content::zeros ? 0 : 1);
        }
        ASSERT_EQ(dev_encode(*dev), RET_OK);
    }
    /// What a module that gets the image now would give back for a field.
    std::string sent(const family_pages& of, const field& what) const {
        const family_descriptor* const list[] = {of.of};
        const std::unique_ptr<dev_obj> other = dev_open(list, of.of->device);
        dev_accept(*other, dev->image);
        return what.form == value_form::yes_no ? field_text(what, other->props.get())
                                               : std::to_string(field_byte(what, other->props.get()));
    }
};

TEST_P(first_choice, of_every_selector_is_sent_once_it_was_picked) {
    std::size_t picked = 0;
    for (const family_pages* of : families()) {
        choose(*of);
        for (const page_table* table : of->tables) {
            for (const page_row& row : table->rows) {
                if (row.kind != row_kind::choice && row.kind != row_kind::choice_text) continue;
                fill_store();
                show(table->name);
                if (!enabled(row.name)) continue;
                const choice_option& first = row.what->choices.front();
                does(tk_format("pick @/%s %s\n", row.name, user_word(first.text).c_str()));
                EXPECT_EQ(shown(row.name), first.text) << table->name << "/" << row.name;
                EXPECT_EQ(sent(*of, *row.what),
                          row.kind == row_kind::choice ? std::to_string(first.value) : first.text)
                    << table->name << "/" << row.name;
                picked++;
            }
        }
    }
    EXPECT_GE(picked, 20U);
}
std::string content_name(const testing::TestParamInfo<content>& one) {
    return one.param == content::zeros ? "zeros" : one.param == content::ones ? "ones" : "missing";
}
INSTANTIATE_TEST_SUITE_P(stores, first_choice, testing::Values(content::zeros, content::ones, content::missing),
                         content_name);

} // namespace
