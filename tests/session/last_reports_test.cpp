// The end of every session, report by report: what has been given up already when it is made. Who hears that the
// buttons may show can start the next session only where the port is free.
#include "tests/support/session_fixture.h"

#include "toolkit/core/text.h"

namespace {

struct end_of_session {
    const char* name;
    const char* model;
    session_kind kind;
    std::vector<std::string> reports; ///< the last ones; "busy" or "idle" and "held" or "free" at each
};

const end_of_session ends[] = {
    {"generic_connect",
     "VKT531A",
     session_kind::connect,
     {"50 busy held", "90 idle free", "buttons idle free", "100 idle free", "finished idle free"}},
    {"generic_read",
     "VKT531A",
     session_kind::read,
     {"60 busy held", "80 busy held", "image busy held", "90 idle free", "buttons idle free", "100 idle free",
      "finished idle free"}},
    {"generic_write",
     "VKT531A",
     session_kind::write,
     {"70 busy held", "80 idle free", "buttons idle free", "100 idle free", "finished idle free"}},
    {"a_connect",
     "VKT510A",
     session_kind::connect,
     {"80 busy held", "90 idle held", "buttons idle held", "100 idle held", "finished idle held"}},
    {"a_read",
     "VKT510A",
     session_kind::read,
     {"40 busy held", "image busy held", "80 idle free", "buttons idle free", "100 idle free",
      "finished idle free"}},
    {"a_write",
     "VKT510A",
     session_kind::write,
     {"70 busy held", "80 idle free", "buttons idle free", "100 idle free", "finished idle free"}},
    {"b_connect",
     "VKT610B",
     session_kind::connect,
     {"24 busy held", "90 idle held", "buttons idle held", "100 idle held", "finished idle held"}},
    {"b_read",
     "VKT610B",
     session_kind::read,
     {"50 busy held", "image idle held", "80 idle free", "buttons idle free", "100 idle free",
      "finished idle free"}},
    {"b_write",
     "VKT610B",
     session_kind::write,
     {"68 busy held", "80 idle free", "buttons idle free", "100 idle free", "finished idle free"}},
};
void PrintTo(const end_of_session& one, std::ostream* out) { *out << one.name; }

class last_reports : public session_test, public testing::WithParamInterface<end_of_session> {
  protected:
    /// On the session's thread.
    void note(const std::string& what) {
        const char* busy = session().operation() == session_kind::none ? " idle" : " busy";
        said.push_back(what + busy + (port_is_free() ? " free" : " held"));
    }
    std::vector<std::string> said; ///< by one thread at a time
};

class last_reports_of_bytes : public session_test {
  protected:
    std::vector<std::string> said;
};

TEST_F(last_reports_of_bytes, every_request_and_reply_stands_between_its_steps) {
    plug("VKT531A");
    dev = dev_open(all_families, "VKT531A",
                   {.progress = [this](const session_progress& p) { said.push_back(tk_format("%u", p.percent)); },
                    .moved =
                        [this](const session_traffic& t) {
                            said.push_back((t.sent ? "> " : "< ") + hex_list(t.bytes, "%02X", " "));
                        },
                    .failed = [](const session_failure&) {},
                    .image = [](uint32_t, const session_bytes&) {},
                    .connected = [] {},
                    .finished = [](uint32_t) {}});
    ASSERT_TRUE(run(session_kind::connect));
    const std::vector<std::string> connected = {
        "20", "40", "> F7 F8 02 04 0A 15 12 03 07", "40", "< F7 F8 02 13 1E 00", "50", "90", "100"};
    EXPECT_EQ(said, connected);
}

TEST_F(last_reports_of_bytes, what_a_module_hears_when_it_is_left_is_one_of_them) {
    plug("VKT610B");
    std::vector<std::string> moved;
    dev = dev_open(all_families, "VKT610B",
                   {.progress = [](const session_progress&) {},
                    .moved = [&](const session_traffic& t) { moved.emplace_back(t.bytes.begin(), t.bytes.end()); },
                    .failed = [](const session_failure&) {},
                    .image = [](uint32_t, const session_bytes&) {},
                    .connected = [] {},
                    .finished = [](uint32_t) {}});
    ASSERT_TRUE(run(session_kind::connect));
    moved.clear();
    disconnect();
    EXPECT_EQ(moved, std::vector<std::string>{std::string("transfer", 9)});
}

TEST_P(last_reports, come_in_order_and_at_their_moments) {
    plug(GetParam().model);
    dev = dev_open(all_families, GetParam().model,
                   {.progress = [this](const session_progress& p) { note(tk_format("%u", p.percent)); },
                    .failed = [this](const session_failure&) { note("failed"); },
                    .image = [this](uint32_t, const session_bytes&) { note("image"); },
                    .connected = [this] { note("buttons"); },
                    .finished = [this](uint32_t) { note("finished"); }});
    ASSERT_TRUE(run(session_kind::connect));
    if (GetParam().kind != session_kind::connect) {
        said.clear();
        ASSERT_TRUE(run(GetParam().kind));
    }
    const std::vector<std::string>& wanted = GetParam().reports;
    ASSERT_GE(said.size(), wanted.size());
    EXPECT_EQ(std::vector(said.end() - static_cast<std::ptrdiff_t>(wanted.size()), said.end()), wanted);
    EXPECT_TRUE(port_is_free());
    EXPECT_EQ(session().operation(), session_kind::none);
}
INSTANTIATE_TEST_SUITE_P(sessions, last_reports, testing::ValuesIn(ends),
                         [](const auto& one) { return std::string(one.param.name); });

} // namespace
