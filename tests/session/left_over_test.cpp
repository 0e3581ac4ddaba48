// What becomes of the rest of a reply when a session has failed, and what is said of a port that refuses then.
#include "tests/support/session_fixture.h"

#include <algorithm>
#ifndef _WIN32
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace {

class left_over : public session_test {
  protected:
    void SetUp() override {
        session_test::SetUp();
        session_timing_get().quiet_ms = 1;
        plug("VKT531A");
        connect();
    }
    void TearDown() override {
        com::watch_calls({});
        session_test::TearDown();
    }
    /// A write that the module refuses.
    void fail() {
        module->plan({.what = sim::fault::refuse});
        ASSERT_TRUE(run(session_kind::write));
        ASSERT_EQ(heard.events.back(), "failed 2 检测配置失败");
    }
};

TEST_F(left_over, is_dropped_and_looked_for_once_more) {
    std::vector<std::string> calls;
    com::watch_calls([&calls](const std::string& call) { calls.push_back(call); });
    fail();
    com::watch_calls({});
    ASSERT_GE(calls.size(), 2U);
    EXPECT_EQ(calls[calls.size() - 2], "PurgeComm 8");
    EXPECT_EQ(calls.back(), "ClearCommError");
}

#ifndef _WIN32 // there the far end's bytes cannot be looked at on their way
class talkative : public left_over {
  protected:
    void SetUp() override {
        left_over::SetUp();
        node_ = ::open(module->port_path().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        ASSERT_GE(node_, 0);
    }
    void TearDown() override {
        ::close(node_);
        left_over::TearDown();
    }
    /// Lets the module send a byte each time that the session looks whether something came after its purge, but
    /// `times` times at most. How often the session purged.
    int purges_while_it_talks(int times) {
        int purges = 0;
        com::watch_calls([&](const std::string& call) { // on the session's thread
            if (call == "PurgeComm 8") ++purges;
            if (call != "ClearCommError" || purges == 0 || times-- <= 0) return;
            module->babble({0x42});
            int waiting = 0;
            while (ioctl(node_, FIONREAD, &waiting) == 0 && waiting == 0) {
            }
        });
        fail();
        com::watch_calls({});
        return purges;
    }

  private:
    int node_ = -1;
};

TEST_F(talkative, what_still_comes_is_dropped_too) { EXPECT_EQ(purges_while_it_talks(2), 3); }

TEST_F(talkative, a_module_that_never_stops_holds_nobody) { EXPECT_EQ(purges_while_it_talks(1000), 10); }
#endif

// The failure's own cause counts; that of the purge only where it says that the device is gone.
TEST_F(left_over, a_port_that_refuses_to_drop_it_is_no_cause_and_is_left_alone) {
    std::vector<std::string> calls;
    com::watch_calls([&calls](const std::string& call) { calls.push_back(call); });
    com::fault_set(com::call::purge_comm, 0, 1, 87);
    fail();
    com::watch_calls({});
    EXPECT_EQ(calls.back(), "PurgeComm 8");
    EXPECT_EQ(heard.causes, std::vector<std::string>{""});
}

TEST_F(left_over, a_port_that_is_gone_by_then_is_the_cause_if_there_is_no_other) {
    com::fault_set(com::call::purge_comm, 0, 1, 1167);
    fail();
    EXPECT_EQ(heard.causes, std::vector<std::string>{"COM7: 已拔出 (error 1167)\nlost"});
    heard = {};
    com::fault_set(com::call::clear_comm_error, 2, 1, 1167); // the look after the purge
    fail();
    EXPECT_EQ(heard.causes, std::vector<std::string>{"COM7: 已拔出 (error 1167)\nlost"});
    heard = {};
    com::fault_set(com::call::write_file, 0, 1, 87);
    com::fault_set(com::call::purge_comm, 0, 1, 1167);
    ASSERT_TRUE(run(session_kind::write));
    EXPECT_EQ(heard.causes, std::vector<std::string>{"COM7: 系统错误 (error 87)\n"});
}

} // namespace
