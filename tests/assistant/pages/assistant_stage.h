// The serial send assistant in the whole application, with a connected module of the B family.
#pragma once

#include "assistant/pages/serial_send.h"
#include "serial/mode_text.h"
#include "tests/support/app_fixture.h"
#include "tests/support/user.h"
#include "toolkit/core/hex_text.h"
#include "toolkit/core/text.h"
#include "toolkit/table_view/table_view.h"

class assistant_stage : public app_test {
  protected:
    void SetUp() override {
        app_test::SetUp();
        usual_ =
            std::exchange(assistant_timing_get(), {.after_read_ms = 5, .look_again_ms = 2, .port_wait_ms = 200});
        std::filesystem::remove("serial_send.json");
    }
    void TearDown() override {
        app_test::TearDown();
        assistant_timing_get() = usual_;
    }

    static widget* dialog() { return navigator_find("serial_send"); }
    static widget* in(const char* name) { return widget_lookup(dialog(), name); }
    static std::string shown(const char* name) { return widget_get_text_utf8(in(name)); }
    static bool usable(const char* name) { return widget_get_enable(in(name)); }
    static bool checked(const char* name) { return widget_get_value_int(in(name)) != 0; }
    static uint32_t rows(const char* table) { return table_client_get_rows(in(table)); }
    static transcript& log() { return serial_send_assistant().log(); }

    /// What a person does; "~" stands for the dialog.
    static void does(const std::string& script) { EXPECT_EQ(user_does(with_dialog(script)), ""); }
    static std::string tries(const std::string& script) { return user_tries(with_dialog(script)); }

    /// The dialog, opened from the change page without a connection.
    static void open() {
        if (widget_get_text_utf8(at("combo_box_ex_dev")) != "VKT610B") pick("combo_box_ex_dev", "VKT610B");
        EXPECT_EQ(user_does("click home_page/vkt610b_tab_button_change\nclick home_page/button_serial_send"), "");
        ASSERT_TRUE(wait([] { return dialog() != nullptr; }));
    }
    /// The same with a module in transfer mode whose frames carry a check value.
    void open_connected() {
        connect("VKT610B");
        sim::traffic_plan plan;
        plan.check = true;
        module->set_traffic(plan);
        {
            port_lease port = data_session().take_port(1000);
            mode_text_write(port, mode_transfer);
        }
        ASSERT_TRUE(wait([this] { return module->mode() == "transfer"; }));
        open();
    }
    static device_session& data_session();
    /// The module sends these bytes, and they have come in.
    void say(const std::vector<uint8_t>& bytes) {
        const std::size_t before = log().counts().received;
        module->babble(bytes);
        ASSERT_TRUE(wait([&] { return log().counts().received == before + bytes.size(); }));
        settle();
    }
    /// Channel 3, extended CAN FD, identifier 0x12345678, data DE AD 01.
    static std::vector<uint8_t> good() {
        return {0xAB, 0x0A, 0x03, 0x03, 0x88, 0x78, 0x56, 0x34, 0x12, 0xDE, 0xAD, 0x01, 0x23, 0x3E};
    }

  private:
    static std::string with_dialog(std::string text) {
        for (std::size_t at = text.find('~'); at != std::string::npos; at = text.find('~', at))
            text.replace(at, 1, "serial_send");
        return text;
    }
    assistant_timing usual_;
};
