// The home page's layout on screen with the B family's pages and device object, for tests of them.
#pragma once

#include "config/dev_obj.h"
#include "config/pages/family_pages.h"
#include "dev_b/pages/vkt610b_pages.h"
#include "tests/support/toolkit_stage.h"
#include "tests/support/user.h"
#include "toolkit/core/log.h"
#include "toolkit/ravel/window_manager.h"

#include <gmock/gmock.h>
#include <string>

class b_stage : public testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

    static const family_pages& pages() { return *family_pages_of(family::b); }
    /// Shows the tab that holds a page, the page within it, and fills it. `name` is a tab's page or one inside it.
    widget* show(const char* name);
    widget* on_page(const char* name) const { return widget_lookup(page, name); }
    std::string shown(const char* name) const { return widget_get_text_utf8(on_page(name)); }
    bool enabled(const char* name) const { return widget_get_enable(on_page(name)); }

    uint32_t value(const std::string& key) const {
        return tk_object_get_prop_uint32(b->props, key.c_str(), 0xDEAD);
    }
    void set8(const std::string& key, uint8_t v) const { tk_object_set_prop_uint8(b->props, key.c_str(), v); }
    void set32(const std::string& key, uint32_t v) const { tk_object_set_prop_uint32(b->props, key.c_str(), v); }

    std::string code() const { return widget_get_text_utf8(widget_lookup(home, "mledit")); }
    /// The register's bytes in the listing, least significant first, without the checksum: "03000000".
    std::string listed(int reg) const;
    /// What the console and the log received since the last call.
    std::string console();
    /// Plays lines; "@" stands for the path of the page shown.
    void does(std::string script);
    /// Whether the device's mutex is free, as it is between handlers.
    bool unlocked() const;

    widget* home = nullptr;
    widget* page = nullptr;
    dev_obj* b = nullptr;

  private:
    std::string console_;
    std::string page_path_;
};

/// Name of a test whose parameter is a channel's digit.
inline std::string channel_name(const testing::TestParamInfo<char>& one) {
    return std::string("channel_") + one.param;
}
