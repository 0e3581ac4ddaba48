// The home page's layout on screen with devices of any families, for tests of pages.
#pragma once

#include "fields/family_pages.h"
#include "fields/page_binder.h"
#include "tests/support/console_capture.h"
#include "tests/support/toolkit_stage.h"
#include "tests/support/user.h"
#include "toolkit/ravel/window_manager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <optional>
#include <string>

class home_stage : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    /// From now on it is about this family: makes its device, if it has none yet, and shows its part of the home
    /// page.
    void choose(const family_pages& of);
    /// Shows and fills a page of the family (a tab's, or one inside such a page), and shows the code.
    widget* show(const char* name);
    /// Closes the home page and opens it anew, without any page shown.
    void home_anew();

    widget* on_page(const char* name) const { return widget_lookup(page, name); }
    std::string shown(const char* name) const { return widget_get_text_utf8(on_page(name)); }
    bool enabled(const char* name) const { return widget_get_enable(on_page(name)); }
    std::string code() const { return widget_get_text_utf8(widget_lookup(home, "mledit")); }
    /// What the console and the log received since the last call.
    std::string console() { return console_->take(); }
    /// Plays lines; "@" stands for the path of the page shown.
    void does(std::string script);

    /// A value of the family's device; 0xDEAD for a key that is missing.
    uint32_t value(const std::string& key) const {
        return tk_object_get_prop_uint32(dev->props.get(), key.c_str(), 0xDEAD);
    }
    std::string text(const char* key) const { return tk_object_get_prop_str(dev->props.get(), key, "?"); }
    /// Stores a number behind the page's back and encodes it; nothing is shown.
    void set(const std::string& key, uint32_t number) const;
    /// Makes the store refuse a key; null: none any more.
    void refuse(const char* key) const { tk_object_refuse(dev->props.get(), key); }

    widget* home = nullptr;
    widget* page = nullptr;
    dev_obj* dev = nullptr;

  private:
    widget* page_of_tab(const page_tab& tab, const char* name) const;

    const family_pages* of_ = nullptr;
    std::map<const family_pages*, std::unique_ptr<dev_obj>> devices_;
    std::optional<console_capture> console_;
    std::string page_path_;
};
