// How many bytes each session writes and asks for, in order.
#include "tests/support/session_fixture.h"

namespace {

struct transfers {
    const char* name;
    const char* model;
    session_kind kind;
    std::vector<std::string> calls;
    int times = 1;
};

const transfers sessions[] = {
    {"generic_connect", "VKT531A", session_kind::connect, {"WriteFile 9", "ReadFile 6"}},
    {"generic_read", "VKT531A", session_kind::read, {"WriteFile 5", "ReadFile 65"}},
    {"generic_write", "VKT531A", session_kind::write, {"WriteFile 65", "ReadFile 6"}},
    {"a_connect", "VKT510A", session_kind::connect, {"WriteFile 9", "ReadFile 6", "WriteFile 5", "ReadFile 11"}},
    {"a_read", "VKT510A", session_kind::read, {"WriteFile 5", "ReadFile 65"}},
    {"a_write", "VKT510A", session_kind::write, {"WriteFile 65", "ReadFile 6"}},
    {"b_connect", "VKT610B", session_kind::connect, {"WriteFile 7"}},
    {"b_read", "VKT610B", session_kind::read, {"WriteFile 6", "ReadFile 146"}},
    {"b_write", "VKT610B", session_kind::write, {"WriteFile 11", "ReadFile 7"}, 34},
};
void PrintTo(const transfers& one, std::ostream* out) { *out << one.name; }

class transfers_test : public session_test, public testing::WithParamInterface<transfers> {
  protected:
    void TearDown() override {
        com::watch_calls({});
        session_test::TearDown();
    }
};

TEST_P(transfers_test, are_those_of_the_protocol) {
    plug(GetParam().model);
    if (GetParam().kind != session_kind::connect) connect();
    std::vector<std::string> calls; // by one thread at a time
    com::watch_calls([&calls](const std::string& call) {
        if (call.starts_with("WriteFile") || call.starts_with("ReadFile")) calls.push_back(call);
    });
    ASSERT_TRUE(run(GetParam().kind));
    EXPECT_EQ(heard.events.back(), "finished");
    std::vector<std::string> wanted;
    for (int i = 0; i < GetParam().times; i++)
        wanted.insert(wanted.end(), GetParam().calls.begin(), GetParam().calls.end());
    EXPECT_EQ(calls, wanted);
}
INSTANTIATE_TEST_SUITE_P(sessions, transfers_test, testing::ValuesIn(sessions),
                         [](const auto& one) { return std::string(one.param.name); });

} // namespace
