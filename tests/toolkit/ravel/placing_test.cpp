// Where the layouts of a layout file place their items.
#include "tests/toolkit/ravel/stage.h"

namespace {

/// A layout in a box of 300 by 200 pixels.
class placing : public stage {
  protected:
    void in_box(const std::string& layout) { open(ui_window(ui_widget("QWidget", "box", "0 0 300 200", layout))); }
    /// "x y w h" inside the box.
    std::string place(const char* name) const {
        std::string text;
        for (const char* part : {"x", "y", "w", "h"})
            text += std::to_string(widget_get_prop_int(at(name), part, -1)) + " ";
        return text.substr(0, text.size() - 1);
    }
    static std::string tight() { return ui_number("margin", 0) + ui_number("spacing", 0); }
    static std::string item(const std::string& content, const std::string& attributes = "") {
        return "<item " + attributes + ">" + content + "</item>";
    }
    static std::string frame(const char* name) { return ui_widget("QFrame", name, ""); }
    static std::string size(const char* property, int w, int h) {
        return tk_format("<property name=\"%s\"><size><width>%d</width><height>%d</height></size></property>",
                         property, w, h);
    }
    static std::string fixed(const char* name) {
        return ui_widget("QFrame", name, "", size("minimumSize", 50, 30) + size("maximumSize", 50, 30));
    }
    static std::string spacer(const char* orientation, const char* type, int w, int h) {
        std::string text = "<spacer><property name=\"orientation\"><enum>Qt::" + std::string(orientation) +
                           "</enum></property>" + size("sizeHint", w, h);
        if (*type != '\0')
            text += "<property name=\"sizeType\"><enum>QSizePolicy::" + std::string(type) + "</enum></property>";
        return text + "</spacer>";
    }
};

TEST_F(placing, a_grid_has_stretches_and_spans) {
    in_box("<layout class=\"QGridLayout\" rowstretch=\"1,3,4\" columnstretch=\"2,1\">" + tight() +
           item(frame("a"), "row=\"0\" column=\"0\"") + item(frame("b"), "row=\"0\" column=\"1\" rowspan=\"2\"") +
           item(frame("c"), "row=\"1\" column=\"0\"") + item(frame("d"), "row=\"2\" column=\"0\" colspan=\"2\"") +
           "</layout>");
    EXPECT_EQ(place("a"), "0 0 200 25");
    EXPECT_EQ(place("b"), "200 0 100 100");
    EXPECT_EQ(place("c"), "0 25 200 75");
    EXPECT_EQ(place("d"), "0 100 300 100");
}

TEST_F(placing, a_grid_has_least_sizes_spacings_and_margins) {
    in_box("<layout class=\"QGridLayout\" rowstretch=\"0,1\" columnstretch=\"0,1\" rowminimumheight=\"40,10\" "
           "columnminimumwidth=\"70,5\">" +
           ui_number("margin", 9) + ui_number("topMargin", 11) + ui_number("rightMargin", 12) +
           ui_number("bottomMargin", 13) + ui_number("horizontalSpacing", 6) + ui_number("verticalSpacing", 8) +
           item(frame("a"), "row=\"0\" column=\"0\"") + item(frame("b"), "row=\"1\" column=\"1\"") + "</layout>");
    EXPECT_EQ(place("a"), "9 11 70 40");
    EXPECT_EQ(place("b"), "85 59 203 128");
}

// The style's own are 9 pixels.
TEST_F(placing, a_margin_that_is_left_open_is_the_style_s) {
    const std::pair<const char*, const char*> places[] = {{"leftMargin", "30 9 261 182"},
                                                          {"topMargin", "9 30 282 161"},
                                                          {"rightMargin", "9 9 261 182"},
                                                          {"bottomMargin", "9 9 282 161"}};
    for (const auto& [side, expected] : places) {
        in_box("<layout class=\"QVBoxLayout\">" + ui_number(side, 30) + item(frame("a")) + "</layout>");
        EXPECT_EQ(place("a"), expected) << side;
    }
    in_box("<layout class=\"QVBoxLayout\">" + item(frame("a")) + "</layout>");
    EXPECT_EQ(place("a"), "9 9 282 182");
}

TEST_F(placing, an_item_may_be_aligned) {
    in_box("<layout class=\"QGridLayout\">" + tight() +
           item(fixed("a"), "row=\"0\" column=\"0\" alignment=\"Qt::AlignRight|Qt::AlignBottom\"") + "</layout>");
    EXPECT_EQ(place("a"), "250 170 50 30");
    in_box("<layout class=\"QVBoxLayout\">" + tight() +
           item(fixed("a"), "alignment=\"Qt::AlignHCenter|Qt::AlignTop\"") + "</layout>");
    EXPECT_EQ(place("a"), "125 0 50 30");
}

TEST_F(placing, a_box_has_stretches) {
    in_box("<layout class=\"QHBoxLayout\" stretch=\"1,2\">" + tight() + item(frame("a")) + item(frame("b")) +
           "</layout>");
    EXPECT_EQ(place("a"), "0 0 100 200");
    EXPECT_EQ(place("b"), "100 0 200 200");
    in_box("<layout class=\"QVBoxLayout\" stretch=\"0,1\">" + tight() + item(fixed("a")) +
           item("<layout class=\"QHBoxLayout\" stretch=\"3,1\">" + tight() + item(frame("b")) + item(frame("c")) +
                "</layout>") +
           "</layout>");
    EXPECT_EQ(place("b"), "0 30 225 170");
    EXPECT_EQ(place("c"), "225 30 75 170");
}

TEST_F(placing, spacers_take_what_is_left_or_their_own_size) {
    const auto row = [&](const std::string& gap) {
        in_box("<layout class=\"QHBoxLayout\">" + tight() + item(fixed("a")) + item(gap) + item(fixed("b")) +
               item(gap) + "</layout>");
        return widget_get_prop_int(at("b"), "x", -1);
    };
    EXPECT_EQ(row(spacer("Horizontal", "", 0, 0)), 50 + 100);
    EXPECT_EQ(row(spacer("Horizontal", "Expanding", 0, 0)), 50 + 100);
    const auto column = [&](const std::string& gap, const std::string& rest) {
        in_box("<layout class=\"QVBoxLayout\">" + tight() + item(fixed("a")) + item(gap) + item(fixed("b")) +
               item(rest) + "</layout>");
        return widget_get_prop_int(at("b"), "y", -1);
    };
    const std::string rest = spacer("Vertical", "", 0, 0);
    EXPECT_EQ(column(rest, rest), 30 + 70);
    EXPECT_EQ(column(spacer("Vertical", "Fixed", 5, 17), rest), 30 + 17);
    const std::string rest_across = spacer("Horizontal", "Expanding", 0, 0);
    in_box("<layout class=\"QHBoxLayout\">" + tight() + item(fixed("a")) +
           item(spacer("Horizontal", "Fixed", 17, 5)) + item(fixed("b")) + item(rest_across) + "</layout>");
    EXPECT_EQ(widget_get_prop_int(at("b"), "x", -1), 50 + 17);
}

TEST_F(placing, a_form_has_labels_fields_and_whole_rows) {
    const std::string line = ui_number("horizontalSpacing", 10) + ui_number("verticalSpacing", 0) +
                             "<property name=\"fieldGrowthPolicy\"><enum>QFormLayout::AllNonFixedFieldsGrow</enum>"
                             "</property>" +
                             ui_number("margin", 0);
    in_box("<layout class=\"QFormLayout\">" + line + item(fixed("label"), "row=\"0\" column=\"0\"") +
           item(fixed("field"), "row=\"0\" column=\"1\"") +
           item(ui_widget("QFrame", "whole", "", size("minimumSize", 10, 40)),
                "row=\"1\" column=\"0\" colspan=\"2\"") +
           "</layout>");
    EXPECT_EQ(place("label"), "0 0 50 30");
    EXPECT_EQ(place("field"), "60 0 50 30");
    EXPECT_EQ(widget_get_prop_int(at("whole"), "y", -1), 30);
    EXPECT_EQ(widget_get_prop_int(at("whole"), "w", -1), 300);
}

TEST_F(placing, size_policies_hold) {
    const auto policy = [](const char* across, const char* down, int stretch_across, int stretch_down) {
        return tk_format("<property name=\"sizePolicy\"><sizepolicy hsizetype=\"%s\" vsizetype=\"%s\">"
                         "<horstretch>%d</horstretch><verstretch>%d</verstretch></sizepolicy></property>",
                         across, down, stretch_across, stretch_down);
    };
    const auto pair = [&](const char* box, const std::string& first, const std::string& second) {
        in_box("<layout class=\"" + std::string(box) + "\">" + tight() +
               item(ui_widget("QPushButton", "a", "", size("minimumSize", 20, 20) + first)) +
               item(ui_widget("QPushButton", "b", "", size("minimumSize", 20, 20) + second)) + "</layout>");
    };
    pair("QHBoxLayout", policy("Expanding", "Expanding", 1, 0), policy("Expanding", "Expanding", 4, 0));
    EXPECT_EQ(place("a"), "0 0 60 200");
    EXPECT_EQ(place("b"), "60 0 240 200");
    pair("QVBoxLayout", policy("Expanding", "Expanding", 0, 3), policy("Expanding", "Expanding", 0, 1));
    EXPECT_EQ(place("a"), "0 0 300 150");
    EXPECT_EQ(place("b"), "0 150 300 50");
    pair("QHBoxLayout", policy("Ignored", "Expanding", 0, 0), policy("Fixed", "Expanding", 0, 0));
    const int own = widget_get_prop_int(at("b"), "w", -1);
    EXPECT_LT(own, 150);
    EXPECT_EQ(widget_get_prop_int(at("a"), "w", -1), 300 - own);
    pair("QVBoxLayout", policy("Expanding", "Fixed", 0, 0), policy("Expanding", "Ignored", 0, 0));
    EXPECT_LT(widget_get_prop_int(at("a"), "h", -1), 100);
    EXPECT_EQ(widget_get_prop_int(at("b"), "h", -1), 200 - widget_get_prop_int(at("a"), "h", -1));
}

} // namespace
