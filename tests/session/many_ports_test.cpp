// Sixteen devices on sixteen ports, side by side: what each module received is its own, byte for byte.
#include "dev_a/family.h"
#include "dev_b/family.h"
#include "dev_generic/family.h"
#include "serial/port_lease.h"
#include "sim/module.h"
#include "sim/wire.h"
#include "tests/support/scratch_folder.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <condition_variable>
#include <filesystem>
#include <mutex>

namespace {

constexpr std::size_t ports = 16;
constexpr int first_port = 21; // COM21 to COM36
constexpr int patience_ms = 20000;
constexpr const family_descriptor* families[] = {&vkt510a_family, &generic_family, &vkt610b_family};

/// Opens when so many have come: those who were there meanwhile were there at once.
class barrier {
  public:
    /// Comes, and waits for the others.
    void come() {
        std::unique_lock hold(lock_);
        ++here_;
        changed_.notify_all();
        in_time_ = wait(hold) && in_time_;
    }
    /// True when all have come, and none of them waited in vain. Waits for it.
    bool was_complete() {
        std::unique_lock hold(lock_);
        return wait(hold) && here_ == ports && in_time_;
    }

  private:
    bool wait(std::unique_lock<std::mutex>& hold) {
        return changed_.wait_for(hold, std::chrono::milliseconds(patience_ms), [this] { return here_ >= ports; });
    }

    std::mutex lock_;
    std::condition_variable changed_;
    std::size_t here_ = 0;
    bool in_time_ = true;
};

/// A module is asked for the first time: by its handshake (B: mode text), for its image, and to be written.
struct meeting_points {
    barrier connect, read, write;
};

/// The defaults with this module's own UART interval (byte 44) and SPI time (byte 57).
std::vector<uint8_t> f7_memory(std::size_t i, uint8_t spi_time) {
    std::vector<uint8_t> image = {
        0x01, 0x08, 0x01, 0x00, 0x08, 0x00, 0x00, 0x00, 0x00, 0x08, // 0
        0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // 10
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // 20
        0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // 30
        0x00, 0x00, 0x02, 0x00, 0x02, 0x00, 0x00, 0x08, 0x00, 0x00, // 40
        0x00, 0x00, 0x04, 0x00, 0x40, 0x1A, 0x0F, 0x05, 0x01, 0x01, // 50
    };
    image[44] = static_cast<uint8_t>(0xA0 + i);
    image[57] = spi_time;
    return image;
}

void append(std::vector<uint8_t>& to, const std::vector<uint8_t>& bytes) {
    to.insert(to.end(), bytes.begin(), bytes.end());
}

/// What a module of the 60-byte families receives in the three sessions, with its firmware request or without.
std::vector<uint8_t> f7_received(std::size_t i, bool with_firmware) {
    std::vector<uint8_t> all = {0xF7, 0xF8, 0x02, 0x04, 0x0A, 0x15, 0x12, 0x03, 0x07};
    if (with_firmware) append(all, {0xF7, 0xF8, 0x04, 0x00, 0x0B});
    append(all, {0xF7, 0xF8, 0x03, 0x00, 0x0C});
    append(all, {0xF7, 0xF8, 0x01, 0x3C});
    append(all, f7_memory(i, static_cast<uint8_t>(0x40 + i)));
    // 66 with the defaults: without their 02 and 05, with A0 + i and 40 + i, whose low digits are the same.
    all.push_back(0x66 ^ 0x02 ^ 0x05 ^ 0xA0 ^ 0x40);
    return all;
}

uint32_t b_read_value(std::size_t i) { return 0x11223300u + static_cast<uint32_t>(i); }
uint32_t b_edited_value(std::size_t i) { return 0x44556600u + static_cast<uint32_t>(i); }

/// Every register 0, but the sixteen filters' own: what is read in register 7, what is edited in 26.
std::vector<uint8_t> b_memory(std::size_t i, uint32_t edited) {
    std::vector<uint8_t> memory(140);
    for (std::size_t n = 0; n < 4; n++) {
        memory[4 * 7 + n] = static_cast<uint8_t>(b_read_value(i) >> (8 * n));
        memory[4 * 26 + n] = static_cast<uint8_t>(edited >> (8 * n));
    }
    return memory;
}

/// The checksum is the simulated module's own.
std::vector<uint8_t> b_received(std::size_t i) {
    std::vector<uint8_t> all = {'c', 'o', 'n', 'f', 'i', 'g', 0, 0xAA, 0x02, 0x05, 0xFF, 0x35, 0x46};
    const std::vector<uint8_t> memory = b_memory(i, b_edited_value(i));
    for (uint8_t r = 0; r < 34; r++) {
        std::vector<uint8_t> frame = {0xAA, 0x07, 0x02, 0xFF, r};
        frame.insert(frame.end(), memory.begin() + 4 * r, memory.begin() + 4 * r + 4);
        const uint16_t crc = sim::crc_check(frame.data(), frame.size());
        append(frame, {static_cast<uint8_t>(crc & 0xFF), static_cast<uint8_t>(crc >> 8)});
        append(all, frame);
    }
    return all;
}

/// What a family brings to this test.
struct family_case {
    const char* model;
    const char* read_key;
    const char* edited_key;
    std::vector<uint8_t> (*memory)(std::size_t i);
    std::vector<uint8_t> (*received)(std::size_t i);
};
constexpr family_case generic_case = {"VKT531A", "uart_f_distance", "spi_ff_time",
                                      [](std::size_t i) { return f7_memory(i, 0x05); },
                                      [](std::size_t i) { return f7_received(i, false); }};
constexpr family_case a_case = {"VKT510A", "uart_distance_vkt510a", "spi_time_vkt510a",
                                [](std::size_t i) { return f7_memory(i, 0x05); },
                                [](std::size_t i) { return f7_received(i, true); }};
constexpr family_case b_case = {"VKT610B", "canfd1_scherm_vkt610b", "canfd2_check3_e_vkt610b",
                                [](std::size_t i) { return b_memory(i, 0); }, b_received};

struct mix {
    const char* name;
    std::vector<const family_case*> cases; ///< in turn
};

/// One of the sixteen.
struct place {
    const family_case* what;
    std::string port;
    std::unique_ptr<sim::module_t> module;
    std::unique_ptr<dev_obj> dev;
    uint32_t finished = 0;
    std::vector<std::string> failures;
};

class many_ports : public testing::TestWithParam<mix> {
  protected:
    void SetUp() override {
        idle_restart();
        idle_set_gui_thread();
        std::filesystem::create_directories(folder);
        session_log_path() = (folder / "p_v_info.txt").string();
        session_timing_get() = {.read_wait_ms = patience_ms, .mode_step_ms = 2};
        port_timing_get() = {.drain_wait_ms = patience_ms, .timeouts = {5000, 0, patience_ms, 0, patience_ms}};
        for (std::size_t i = 0; i < ports; i++) set_up(i);
    }
    void TearDown() override {
        for (place& at : places) at.dev.reset();
        for (place& at : places) at.module.reset();
        while (idle_dispatch() > 0) {
        }
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    void set_up(std::size_t i) {
        place& at = places[i];
        at.what = GetParam().cases[i % GetParam().cases.size()];
        at.port = tk_format("COM%d", first_port + static_cast<int>(i));
        sim::model which{};
        ASSERT_TRUE(sim::model_from_name(at.what->model, &which));
        std::string why;
        at.module = sim::module_start(which, at.port, &why, watcher());
        ASSERT_NE(at.module, nullptr) << why;
        at.module->set_memory(at.what->memory(i));
        at.dev = dev_open(families, at.what->model, reports(at));
        ASSERT_NE(at.dev, nullptr);
    }
    /// On the module's thread, before it answers: it waits until all sixteen have been asked.
    sim::request_watcher watcher() {
        return [this, written = false](const char* kind, const std::vector<uint8_t>&) mutable {
            const std::string_view what = kind;
            if (what == "handshake" || what == "mode") meet.connect.come();
            if (what == "read") meet.read.come();
            if (what == "write" && !std::exchange(written, true)) meet.write.come();
        };
    }
    session_reports reports(place& at) {
        const auto post = [](std::function<void()> job) {
            idle_queue([job = std::move(job)] {
                job();
                return RET_OK;
            });
        };
        return {
            .progress = {},
            .failed =
                [&at, post](const session_failure& failure) {
                    post([&at, text = failure.text] { at.failures.push_back(text); });
                },
            .image = [&at,
                      post](uint32_t,
                            const session_bytes& image) { post([&at, image] { dev_accept(*at.dev, image); }); },
            .connected = {},
            .finished = [&at, post](uint32_t) { post([&at] { at.finished++; }); },
        };
    }

    /// The same session of all sixteen, started one right after the other.
    void run_all(session_kind kind, barrier& all_asked) {
        for (place& at : places) {
            session_input input = dev_session_input(*at.dev, kind, false);
            input.port_text = at.port;
            input.model = at.what->model;
            ASSERT_EQ(at.dev->session.start(kind, std::move(input)), RET_OK) << at.port;
        }
        const auto ended = [](const place& at) { return !at.dev->session.running(); };
        ASSERT_TRUE(idle_run_until([&] { return std::ranges::all_of(places, ended); }, 2 * patience_ms));
        while (idle_dispatch() > 0) {
        }
        EXPECT_TRUE(all_asked.was_complete()) << "no session may wait for another's end";
        for (const place& at : places) EXPECT_THAT(at.failures, testing::IsEmpty()) << at.port;
    }

    std::filesystem::path folder = scratch_folder("vkt_many_ports");
    meeting_points meet; // before the modules, whose threads use it
    std::array<place, ports> places;
};

TEST_P(many_ports, connect_read_edit_and_write_side_by_side) {
    ASSERT_FALSE(HasFatalFailure());
    run_all(session_kind::connect, meet.connect);
    run_all(session_kind::read, meet.read);
    for (std::size_t i = 0; i < ports; i++) {
        place& at = places[i];
        tk_object* props = at.dev->props.get();
        const bool is_b = at.what == &b_case;
        EXPECT_EQ(tk_object_get_prop_uint32(props, at.what->read_key, 0),
                  is_b ? b_read_value(i) : static_cast<uint32_t>(0xA0 + i));
        tk_object_set_prop_uint32(props, at.what->edited_key,
                                  is_b ? b_edited_value(i) : static_cast<uint32_t>(0x40 + i));
        ASSERT_EQ(dev_encode(*at.dev, at.what->edited_key), RET_OK);
    }
    run_all(session_kind::write, meet.write);
    for (std::size_t i = 0; i < ports; i++) {
        EXPECT_EQ(places[i].module->received(), places[i].what->received(i)) << places[i].port;
        EXPECT_EQ(places[i].module->count().unknown, 0u);
        EXPECT_EQ(places[i].finished, 3u);
        EXPECT_EQ(places[i].dev->session.last_run(), 3u);
        EXPECT_EQ(places[i].dev->session.operation(), session_kind::none);
    }
}

const mix mixes[] = {
    {"generic", {&generic_case}},
    {"a", {&a_case}},
    {"b", {&b_case}},
    {"all", {&generic_case, &a_case, &b_case}},
};
void PrintTo(const mix& one, std::ostream* out) { *out << one.name; }

INSTANTIATE_TEST_SUITE_P(families, many_ports, testing::ValuesIn(mixes),
                         [](const auto& one) { return std::string(one.param.name); });

} // namespace
