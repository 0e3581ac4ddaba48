// The data page in the whole application, with a connected module of the B family.
#pragma once

#include "monitor/pages/data_page.h"
#include "tests/support/app_fixture.h"
#include "tests/support/user.h"
#include "toolkit/core/text.h"
#include "toolkit/table_view/table_view.h"

#include <fstream>
#include <sstream>

class data_stage : public app_test {
  protected:
    void SetUp() override {
        app_test::SetUp();
        usual_leave_ms_ = std::exchange(data_page_leave_ms(), 20);
        for (const char* file : {"setting.json", "can_record_data.csv"}) std::filesystem::remove(file);
    }
    void TearDown() override {
        app_test::TearDown();
        data_page_leave_ms() = usual_leave_ms_;
    }

    static widget* page() { return navigator_find("data_page"); }
    static widget* on_page(const char* name) { return widget_lookup(page(), name); }
    static std::string shown(const char* name) { return widget_get_text_utf8(on_page(name)); }
    static bool usable(const char* name) { return widget_get_enable(on_page(name)); }
    static bool checked(const char* name) { return widget_get_value_int(on_page(name)) != 0; }
    static uint32_t rows() { return table_client_get_rows(on_page("table_client")); }

    /// What a person does on the page; "~" stands for it.
    static void does(std::string script) {
        EXPECT_EQ(user_does(tk_replaced(std::move(script), "~", "data_page")), "");
    }
    static std::string tries(std::string script) {
        return user_tries(tk_replaced(std::move(script), "~", "data_page"));
    }
    static std::string tk_replaced(std::string text, const std::string& from, const std::string& to) {
        for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
            text.replace(at, from.size(), to);
        return text;
    }

    /// Frames with a check value, as the page wants them at first.
    static sim::traffic_plan frames(uint32_t rate, uint64_t count = 0) {
        sim::traffic_plan plan;
        plan.rate = rate;
        plan.count = count;
        plan.check = true;
        return plan;
    }
    /// None of its own, and what it receives carries no check value.
    static sim::traffic_plan plain() { return {}; }
    /// Connects a module and presses data monitor, up to the page in transfer mode.
    void open_page(const sim::traffic_plan& plan = frames(0)) {
        if (module == nullptr) connect("VKT610B");
        module->set_traffic(plan);
        EXPECT_EQ(run("button_data"), "读配置完成");
        press_ok();
        ASSERT_TRUE(wait([] { return page() != nullptr; }));
        ASSERT_TRUE(wait([] { return shown("state_word") == "传输模式"; }));
        ASSERT_TRUE(wait([this] { return module->mode() == "transfer"; }));
    }
    /// Presses back and waits for the home page.
    static void leave_page() {
        does("click ~/button_back\n");
        ASSERT_TRUE(wait([] { return page() == nullptr && data_page_traffic().link() == traffic_link::none; }));
        settle();
    }
    /// The bytes of the frames that the module received.
    std::vector<std::string> received() const {
        std::vector<std::string> out;
        for (const sim::traffic_note& note : module->traffic_received()) {
            std::string hex;
            for (const uint8_t byte : note.frame) hex += tk_format("%02X", byte);
            out.push_back(hex);
        }
        return out;
    }
    bool wait_received(std::size_t count) {
        return wait([this, count] { return module->traffic_received().size() >= count; });
    }
    /// Until nothing has come in for a while, and all of it is shown.
    static bool quiet() {
        constexpr int64_t quiet_ms = 200;
        uint64_t seen = 0;
        int64_t since = time_now_ms();
        return wait([&] {
            const uint64_t now = data_page_traffic().counters().bytes_read;
            if (std::exchange(seen, now) != now) since = time_now_ms();
            return time_now_ms() - since > quiet_ms && rows() == data_page_traffic().size();
        });
    }
    static std::string csv() { return file_text("can_record_data.csv"); }
    static std::string settings() { return file_text("setting.json"); }
    /// Sends by the button and waits until the next may be sent.
    static void send() {
        does("click ~/button_write\n");
        ASSERT_TRUE(wait([] { return usable("button_write"); }));
    }
    /// Presses the button; the message that comes instead of a frame.
    std::string refused() {
        message_seen.clear();
        answer_message();
        does("click ~/button_write\n");
        EXPECT_TRUE(wait([this] { return !message_seen.empty(); }));
        settle();
        return message_seen;
    }

    uint32_t usual_leave_ms() const { return usual_leave_ms_; }

  private:
    uint32_t usual_leave_ms_ = 0;
};
