// A toolkit with a resource folder of its own, and a user for it: real pointer and key events only.
#pragma once

#include "toolkit/ravel/qt/detail.h"
#include "toolkit/ravel/ravel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

/// Starts the toolkit: 1000 by 600 pixels, the program's styles, strings and images, no
/// layouts.
void start_stage();
void end_stage();
/// For a process that is to abort: its resource folder goes with it.
void end_stage_at_abort();
/// Writes ui/NAME.ui.
void write_layout(const std::string& name, const std::string& text);
/// The folder of the layouts, with a slash at its end.
std::string layout_folder();

// Pieces of Designer files. `at` is "x y w h" in pixels.
std::string ui_file(const std::string& root_class, const std::string& inside);
std::string ui_window(const std::string& inside);
std::string ui_dialog(const std::string& inside);
std::string ui_widget(const std::string& class_name, const std::string& name, const std::string& at,
                      const std::string& inside = "");
std::string ui_text(const std::string& property, const std::string& value);
std::string ui_number(const std::string& property, int value);
std::string ui_flag(const std::string& property, bool value);
std::string ui_dynamic(const std::string& property, const std::string& value);

/// Lets everything that waits happen: events, layout, posted jobs.
void settle();
/// Settles until `done` answers true, at most `limit_ms`. Answers what it said last.
bool wait_until(const std::function<bool()>& done, int limit_ms = 5000);

// What a user does. Each settles afterwards.
void click(widget* w);
void click_at(widget* w, int x, int y);
void press(widget* w);
void release(widget* w);
/// Moves the pointer with the button down.
void drag(widget* w, int x, int y);
void wheel(widget* w, int delta);
void key(const std::string& name);
void type(const std::string& text);

/// Counts what handlers were told, as "name:event" in order.
class listener {
  public:
    void hear(widget* w, event_type type);
    std::vector<std::string> take();
    int count() const { return static_cast<int>(heard_.size()); }

  private:
    std::vector<std::string> heard_;
};

/// What the log and the console receive while it lives.
class said {
  public:
    said();
    ~said();
    said(const said&) = delete;
    said& operator=(const said&) = delete;
    /// Since the last call.
    std::string take() { return std::exchange(text_, {}); }

  private:
    std::string text_;
};

class stage : public testing::Test {
  protected:
    static void TearDownTestSuite() { end_stage(); }
    void SetUp() override;
    void TearDown() override;

    /// Writes a layout and opens it.
    widget* open(const std::string& text, const std::string& name = "win");
    /// A widget of the window opened last.
    widget* at(const std::string& name) const { return widget_lookup(win, name.c_str()); }

    widget* win = nullptr;
    listener told;
};
