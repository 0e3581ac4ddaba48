// Where things stand: one left edge, neighbours at one height, units at one distance, nothing cut, at every usual
// size.
#include "app/families.h"
#include "tests/support/app_fixture.h"
#include "tests/support/user.h"

#include <algorithm>

namespace {

struct box {
    int x = 0, y = 0, w = 0, h = 0;
    int right() const { return x + w; }
    int bottom() const { return y + h; }
};

box place(const widget* w) {
    return {widget_get_prop_int(w, "window_x", -1), widget_get_prop_int(w, "window_y", -1),
            widget_get_prop_int(w, "w", -1), widget_get_prop_int(w, "h", -1)};
}

bool begins(widget* w, const char* head) { return widget_name(w).rfind(head, 0) == 0; }

std::vector<widget*> all_below(widget* root) {
    std::vector<widget*> all;
    widget_foreach(root, [&all](widget* w) {
        if (widget_get_visible(w)) all.push_back(w);
        return RET_OK;
    });
    return all;
}

std::vector<widget*> cards_of(widget* root) {
    std::vector<widget*> cards = all_below(root);
    std::erase_if(cards, [](widget* w) { return widget_type(w) != "card"; });
    return cards;
}

constexpr std::pair<int, int> sizes[] = {{1280, 750}, {1024, 600}, {1366, 733}, {1264, 649}};

class look : public app_test {
  protected:
    void TearDown() override {
        user_window_size(1280, 750);
        app_test::TearDown();
    }
    /// Calls `visit` for every page of every family, as it shows, at one size.
    static void for_pages(int w, int h, const std::function<void(widget* page)>& visit) {
        ASSERT_TRUE(user_window_size(w, h));
        for (const family_pages* of : families()) {
            pick("combo_box_ex_dev", of->of->models.front().name);
            for (const page_tab& tab : of->tabs) {
                SCOPED_TRACE(std::string(tab.page) + tk_format(" at %dx%d", w, h));
                click(home(), tab.button);
                visit(widget_lookup(widget_lookup(home(), of->page_set), tab.page));
            }
        }
        pick("combo_box_ex_dev", "VKT531A");
    }
};

TEST_F(look, everything_begins_at_one_left_edge) {
    for (const auto& [w, h] : sizes) {
        for_pages(w, h, [](widget* page) {
            int left = 100000;
            for (widget* card : cards_of(page)) left = std::min(left, place(card).x);
            EXPECT_EQ(left, 24);
        });
        for (const char* name : {"app_name", "label_dev", "view10_tabs", "table_button_change", "version_name"})
            EXPECT_EQ(place(at(name)).x, 24) << name << " at " << w;
        EXPECT_EQ(place(at("state_word")).right(), w - 24);
    }
}

TEST_F(look, cards_are_whole_and_do_not_overlap) {
    for (const auto& [w, h] : sizes)
        for_pages(w, h, [](widget* page) {
            const std::vector<widget*> cards = cards_of(page);
            EXPECT_FALSE(cards.empty());
            for (widget* card : cards) {
                EXPECT_LE(place(card).right(), place(page).right()) << widget_name(card);
                for (widget* inside : all_below(card)) {
                    if (widget_get_prop_int(inside, "w", 0) == 0) continue;
                    EXPECT_LE(place(inside).right(), place(card).right() - 8) << widget_name(inside);
                }
            }
            for (widget* view : all_below(page)) {
                if (widget_type(view) != "scroll_view") continue;
                for (widget* card : cards_of(view))
                    EXPECT_LE(place(card).right(), place(view).right()) << widget_name(card);
            }
            EXPECT_LE(place(page).right() + 16, place(at("code_card")).x);
        });
}

TEST_F(look, titles_of_neighbours_stand_at_one_height) {
    for (const auto& [w, h] : sizes)
        for_pages(w, h, [](widget* page) {
            std::vector<std::pair<box, box>> titled; // card and its title
            for (widget* card : cards_of(page))
                for (widget* inside : all_below(card))
                    if (begins(inside, "title_")) titled.emplace_back(place(card), place(inside));
            EXPECT_FALSE(titled.empty());
            for (const auto& [card, title] : titled)
                for (const auto& [other, other_title] : titled) {
                    const bool side_by_side = card.y < other.bottom() && other.y < card.bottom();
                    EXPECT_TRUE(!side_by_side || title.y == other_title.y) << title.y << " and " << other_title.y;
                }
        });
}

TEST_F(look, units_stand_eight_pixels_behind_their_fields) {
    std::size_t seen = 0;
    for (const auto& [w, h] : sizes)
        for_pages(w, h, [&seen](widget* page) {
            const std::vector<widget*> all = all_below(page);
            for (std::size_t i = 1; i < all.size(); i++) {
                if (!begins(all[i], "unit_")) continue;
                seen++;
                EXPECT_EQ(place(all[i]).x - place(all[i - 1]).right(), 8) << widget_name(all[i - 1]);
                EXPECT_FALSE(widget_get_text_utf8(all[i]).empty());
            }
        });
    EXPECT_GE(seen, 4U * 30);
}

TEST_F(look, no_choice_is_cut) {
    std::size_t seen = 0;
    for (const auto& [w, h] : sizes)
        for_pages(w, h, [&seen](widget* page) {
            std::string script =
                tk_format("expect home_page/combo_box_ex_dev tooltip %s\n",
                          user_word(widget_get_prop_str(at("combo_box_ex_dev"), "toolTip", "")).c_str());
            for (widget* box : all_below(page)) {
                if (widget_type(box) != "combo_box") continue;
                seen++;
                script +=
                    tk_format("expect home_page/%s/%s tooltip %s\n", widget_name(page).c_str(),
                              widget_name(box).c_str(), user_word(widget_get_prop_str(box, "toolTip", "")).c_str());
            }
            // What is cut would stand in the tooltip as well.
            EXPECT_EQ(user_does(script), "");
        });
    EXPECT_GE(seen, 4U * 15);
}

TEST_F(look, every_number_has_a_unit_beside_it_and_in_its_tooltip) {
    for_pages(1280, 750, [](widget* page) {
        const std::vector<widget*> all = all_below(page);
        for (std::size_t i = 0; i < all.size(); i++) {
            if (widget_type(all[i]) != "spin_box") continue;
            const std::string unit =
                i + 1 < all.size() && begins(all[i + 1], "unit_") ? widget_get_text_utf8(all[i + 1]) : "";
            EXPECT_NE(unit, "") << widget_name(all[i]);
            EXPECT_THAT(widget_get_prop_str(all[i], "toolTip", ""), testing::HasSubstr(unit))
                << widget_name(all[i]);
        }
    });
}

TEST_F(look, the_number_of_channels_is_as_wide_as_two_digits) {
    pick("combo_box_ex_dev", "VKT610B");
    settle();
    EXPECT_LE(place(at("spin_box_3_vkt610b")).w, 80) << "two digits and the cursor";
}

TEST_F(look, the_calculators_cards_keep_sixteen_pixels_from_its_edge) {
    pick("combo_box_ex_dev", "VKT610B");
    for (const auto& [w, h] : sizes) {
        ASSERT_TRUE(user_window_size(w, h));
        widget* dialog = window_open("page_vkt610b_bps_canfd1");
        ASSERT_NE(dialog, nullptr);
        settle();
        const box outer = place(dialog);
        EXPECT_GE(outer.y, 0);
        EXPECT_LE(outer.bottom(), h);
        const std::vector<widget*> cards = cards_of(dialog);
        EXPECT_EQ(cards.size(), 2U);
        for (widget* card : cards) {
            EXPECT_EQ(place(card).x - outer.x, 16) << w;
            EXPECT_EQ(outer.right() - place(card).right(), 16) << w;
            for (widget* inside : all_below(card))
                EXPECT_LE(place(inside).right(), place(card).right()) << widget_name(inside);
        }
        window_manager_close_window_force(window_manager(), dialog);
        settle();
    }
}

} // namespace
