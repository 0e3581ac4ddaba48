// The home page's layout on screen with the objects of both families, for tests of pages.
#pragma once

#include "config/cfg_image.h"
#include "config/defaults.h"
#include "config/dev_obj.h"
#include "config/pages/family_pages.h"
#include "config/pages/page_binder.h"
#include "tests/support/toolkit_stage.h"
#include "tests/support/user.h"
#include "toolkit/core/log.h"
#include "toolkit/ravel/window_manager.h"

#include <gmock/gmock.h>
#include <string>

class home_stage : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    /// Shows a page of a family and runs its init routine.
    widget* show_page(const family_pages& pages, const char* name);
    widget* on_page(const char* name) const { return widget_lookup(page, name); }
    std::string code() const { return widget_get_text_utf8(widget_lookup(home, "mledit")); }
    /// What the console received since the last call.
    std::string console();
    /// Plays lines; "@" stands for the path of the page shown.
    void does(std::string script);

    widget* home = nullptr;
    widget* page = nullptr;
    dev_obj* a = nullptr;

  private:
    std::string console_;
    std::string page_path_;
};
