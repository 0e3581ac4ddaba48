// A connected B module and the traffic of a page, without the page.
#pragma once

#include "monitor/traffic.h"
#include "tests/support/console_capture.h"
#include "tests/support/session_fixture.h"

#include <optional>

class traffic_stage : public session_test {
  protected:
    void SetUp() override {
        session_test::SetUp();
        csv_file = (folder / "can_record_data.csv").string();
        settings_file = (folder / "setting.json").string();
        plug("VKT610B");
        connect();
        make();
        console.emplace();
    }
    void TearDown() override {
        page.reset();
        console.reset();
        com::watch_calls({});
        session_test::TearDown();
    }
    void make() { page = std::make_unique<traffic>(traffic_files{settings_file, csv_file}); }

    int begin(traffic_run run = traffic_run::run) {
        return page->start(
            session(), [this] { refreshes++; }, run);
    }
    /// Started, the module in transfer mode, and nobody at work but those that receive and send.
    void open(traffic_run run = traffic_run::run) {
        ASSERT_EQ(begin(run), 0);
        ASSERT_TRUE(wait([this] { return module->mode() == "transfer" && workers_running() == 2; }));
    }
    static bool wait(const std::function<bool()>& done) { return idle_run_until(done, session_patience_ms); }
    /// Left, and through.
    void close() {
        bool left = false;
        ASSERT_EQ(page->leave([&left] { left = true; }), RET_OK);
        ASSERT_TRUE(wait([&left] { return left; }));
    }
    /// The module sends these bytes.
    void send(const std::vector<uint8_t>& bytes) { module->babble(bytes); }
    bool wait_received(uint64_t frames) {
        return wait([this, frames] { return page->counters().frames_received >= frames; });
    }
    bool wait_read(uint64_t bytes) {
        return wait([this, bytes] { return page->counters().bytes_read >= bytes; });
    }
    bool wait_done() {
        return wait([this] { return page->send_done(); });
    }
    bool wait_link(traffic_link link) {
        return wait([this, link] { return page->link() == link; });
    }
    std::vector<uint32_t> identifiers() const {
        std::vector<traffic_record> rows(page->size());
        rows.resize(page->rows(0, rows).copied);
        std::vector<uint32_t> out;
        for (const traffic_record& row : rows) out.push_back(row.identifier);
        return out;
    }
    std::string csv() const {
        std::string text;
        fs_read_all(csv_file.c_str(), &text);
        return text;
    }
    /// What the module received since the mode text that put it into transfer mode.
    std::vector<uint8_t> module_got() const {
        static constexpr uint8_t text[] = {'t', 'r', 'a', 'n', 's', 'f', 'e', 'r', 0};
        const std::vector<uint8_t> all = module->received();
        const auto at = std::find_end(all.begin(), all.end(), std::begin(text), std::end(text));
        return at == all.end() ? all : std::vector<uint8_t>(at + std::size(text), all.end());
    }
    bool module_gets(const std::vector<uint8_t>& bytes) {
        return wait([&] { return module_got() == bytes; });
    }
    /// A standard CAN frame of the module's first channel, with two data bytes.
    static std::vector<uint8_t> frame(uint8_t identifier) {
        return {0xAA, 0x07, 0x03, 0x01, 0x00, identifier, 0, 0, 0, 0xD0, 0xD1};
    }

    std::unique_ptr<traffic> page;
    std::optional<console_capture> console;
    std::string csv_file, settings_file;
    int refreshes = 0;
};
