// Every step of every exchange fails once: message, log line, requests that reached the module, port and flags
// after.
#include "tests/support/session_fixture.h"

#include "toolkit/core/text.h"

using sim::fault;

namespace {

/// The eight ways in which input or output of an exchange fails.
enum class way : uint8_t { write_event, write, wait_write, write_result, read_event, read, wait_read, read_result };

constexpr const char* way_names[] = {"write_event", "write", "wait_write", "write_result",
                                     "read_event",  "read",  "wait_read",  "read_result"};
constexpr const char* log_tails[] = {"create write event failed!\n\n",   "write failed!\n\n",
                                     "wait write operation failed!\n\n", "get write result failed!\n\n",
                                     "create read event failed!\n\n",    "read failed!\n\n",
                                     "wait read operation failed!\n\n",  "get read result failed!\n\n"};

/// One exchange of one session, and what its failures say.
struct exchange_rows {
    const char* name;
    const char* model;
    session_kind kind;
    uint32_t events_before;    ///< events created before the exchange's own two
    uint32_t exchanges_before; ///< good ones in the same session
    uint32_t requests;         ///< that the module has seen in this session when the exchange's own has been sent
    const char* write_head;
    const char* read_head;
    const char* messages[8];
};

const exchange_rows rows[] = {
    {"generic_handshake",
     "VKT531A",
     session_kind::connect,
     1,
     0,
     1,
     "\nsend: check product flage\n[13-5-9]write: ",
     "\nsend: check product flage\n [13-5-9]read: ",
     {"创建异步写事件失败", "写配置命令失败", "等待写操作完成失败", "获取写操作结果失败", "创建读事件失败",
      "读取写命令应答失败", "等待读操作完成失败", "获取读操作结果失败"}},
    {"generic_read",
     "VKT531A",
     session_kind::read,
     1,
     0,
     1,
     "\nsend: read product config info\n[13-5-9]write: ",
     "\nsend: read product config info\n [13-5-9]read: ",
     {"创建写事件失败", "读配置命令失败", "等待写操作完成失败", "获取写操作结果失败", "创建读事件失败",
      "读取写命令应答失败", "等待读操作完成失败", "获取读操作结果失败"}},
    {"generic_write",
     "VKT531A",
     session_kind::write,
     1,
     0,
     1,
     "\nsend: write product info\n[13-5-9]write: ",
     "\nsend:  write product info\n [13-5-9]read: ",
     {"创建写事件失败", "写配置命令失败", "等待写操作完成失败", "获取写操作结果失败", "创建读事件失败",
      "读取写命令应答失败", "等待读操作完成失败", "获取读操作结果失败"}},
    {"a_handshake",
     "VKT510A",
     session_kind::connect,
     1,
     0,
     1,
     "\nsend: check product flage\n[13-5-9]write: ",
     "\nsend: check product flage\n [13-5-9]read: ",
     {"创建异步写事件失败", "写配置命令失败", "等待写操作完成失败", "获取写操作结果失败", "创建读事件失败",
      "读取写命令应答失败", "等待读操作完成失败", "获取读操作结果失败"}},
    {"a_firmware",
     "VKT510A",
     session_kind::connect,
     4,
     1,
     2,
     "\nsend: read product version info\n[13-5-9]write: ",
     "\nsend: read product version info\n [13-5-9]read: ",
     {"创建异步写事件失败", "写配置命令失败", "等待写操作完成失败", "获取写操作结果失败", "创建读事件失败",
      "读取写命令应答失败", "等待读操作完成失败", "获取读操作结果失败"}},
    {"a_read",
     "VKT510A",
     session_kind::read,
     1,
     0,
     1,
     "\nsend: read product config info\n[13-5-9]write: ",
     "\nsend: read product config info\n [13-5-9]read: ",
     {"创建写事件失败", "读配置命令失败", "等待写操作完成失败", "获取写操作结果失败", "创建读事件失败",
      "读取写命令应答失败", "等待读操作完成失败", "获取读操作结果失败"}},
    {"a_write",
     "VKT510A",
     session_kind::write,
     0,
     0,
     1,
     "\nsend: write product info\n[13-5-9]write: ",
     "\nsend:  write product info\n [13-5-9]read: ",
     {"创建写事件失败", "写配置命令失败", "等待写操作完成失败", "获取写操作结果失败", "创建读事件失败",
      "读取写命令应答失败", "等待读操作完成失败", "获取读操作结果失败"}},
    {"b_read",
     "VKT630B",
     session_kind::read,
     1,
     0,
     1,
     "\n VKT630B \nsend: read product config info\n[13-5-9]write: ",
     "\n VKT630B \nsend: read product config info\n [13-5-9]read: ",
     {"创建写事件失败", "读配置命令失败", "读配置命令失败", "读配置命令失败", "读取写命令应答失败",
      "读取写命令应答失败", "读取写命令应答失败", "读取写命令应答失败"}},
    {"b_write_register_0",
     "VKT610B",
     session_kind::write,
     1,
     0,
     1,
     "\n VKT610B \nsend: write product info\n[13-5-9]write: ",
     "\n VKT610B \nsend:  write product info\n [13-5-9]read: ",
     {"创建写事件失败", "写配置命令失败", "写配置命令失败", "写配置命令失败", "读取写命令应答失败",
      "读取写命令应答失败", "读取写命令应答失败", "读取写命令应答失败"}},
    {"b_write_register_33",
     "VKT610B",
     session_kind::write,
     67,
     33,
     34,
     "\n VKT610B \nsend: write product info\n[13-5-9]write: ",
     "\n VKT610B \nsend:  write product info\n [13-5-9]read: ",
     {"创建写事件失败", "写配置命令失败", "写配置命令失败", "写配置命令失败", "读取写命令应答失败",
      "读取写命令应答失败", "读取写命令应答失败", "读取写命令应答失败"}},
    // Nothing is read back here: the reading ways do not exist.
    {"b_config",
     "VKT610B",
     session_kind::connect,
     0,
     0,
     0,
     "\n VKT610B \nsend: config mode\n[13-5-9]write: ",
     nullptr,
     {"创建异步写事件失败", "转换为配置模式失败", "等待写操作完成失败", "获取写操作结果失败", nullptr, nullptr,
      nullptr, nullptr}},
};

struct failure_case {
    exchange_rows row;
    way how;
};

std::string name_of(const failure_case& one) {
    return std::string(one.row.name) + "_" + way_names[static_cast<std::size_t>(one.how)];
}
void PrintTo(const failure_case& one, std::ostream* out) { *out << name_of(one); }

std::vector<failure_case> all_cases() {
    std::vector<failure_case> cases;
    for (const exchange_rows& row : rows)
        for (int i = 0; i < 8; ++i)
            if (row.messages[i] != nullptr) cases.push_back({row, static_cast<way>(i)});
    return cases;
}

class failure_rows : public session_test, public testing::WithParamInterface<failure_case> {
  protected:
    void SetUp() override {
        session_test::SetUp();
        plug(GetParam().row.model);
        if (GetParam().row.kind != session_kind::connect) connect();
    }
    /// Sets the fault; true when the request will reach the module all the same.
    bool spoil() {
        constexpr DWORD odd_error = 87;
        const exchange_rows& row = GetParam().row;
        const uint32_t n = row.exchanges_before;
        switch (GetParam().how) {
        case way::write_event:
            com::fault_set(com::call::create_event, row.events_before, 1, 8);
            return false;
        case way::write:
            com::fault_set(com::call::write_file, n, 1, odd_error);
            return false;
        case way::wait_write:
            // The write pends for ever. The replies before it come late, so that each of them was waited for once.
            com::fault_set(com::call::write_file, n, 1, 997);
            com::fault_set(com::call::wait_for_single_object, n, 1, 6);
            module->plan({.what = fault::late, .times = n, .argument = 30});
            return false;
        case way::write_result:
            com::fault_set(com::call::get_overlapped_result, 2 * n, 1, odd_error);
            return true;
        case way::read_event:
            com::fault_set(com::call::create_event, row.events_before + 1, 1, 8);
            return true;
        case way::read:
            com::fault_set(com::call::read_file, n, 1, odd_error);
            return true;
        case way::wait_read:
            module->plan({.what = fault::silent, .after = n});
            return true;
        case way::read_result:
            com::fault_set(com::call::get_overlapped_result, 2 * n + 1, 1, odd_error);
            return true;
        }
        return false;
    }
};

TEST_P(failure_rows, says_and_logs_its_row) {
    const exchange_rows& row = GetParam().row;
    const auto how = static_cast<std::size_t>(GetParam().how);
    const bool is_connect = row.kind == session_kind::connect;
    const uint32_t before = module->count().requests();
    com::fault_clear();
    const uint32_t seen = row.requests - (spoil() || row.requests == 0 ? 0 : 1);
    ASSERT_TRUE(run(row.kind));
    ASSERT_FALSE(heard.events.empty());
    EXPECT_EQ(heard.events.back(), tk_format("failed %d %s", static_cast<int>(row.kind), row.messages[how]));
    const std::string head = GetParam().how >= way::read_event ? row.read_head : row.write_head;
    ASSERT_EQ(heard.logs.size(), 1u);
    EXPECT_EQ(heard.logs[0], head + log_tails[how]);
    // Silence and a wait without an error have no cause that the system knows of.
    const char* cause = "COM7: 系统错误 (error 87)\n";
    if (GetParam().how == way::wait_write || GetParam().how == way::wait_read) cause = "";
    if (GetParam().how == way::write_event || GetParam().how == way::read_event)
        cause = "COM7: 系统错误 (error 8)\n";
    EXPECT_THAT(heard.causes, testing::ElementsAre(cause));
    EXPECT_TRUE(heard.port_was_free);
    EXPECT_TRUE(port_is_free());
    EXPECT_TRUE(module->wait_requests(before + seen, static_cast<int>(session_patience_ms)));
    EXPECT_EQ(module->count().requests(), before + seen);
    EXPECT_EQ(session().operation(), row.kind);
    EXPECT_EQ(session().connected(), !is_connect);
    EXPECT_EQ(session().port_open(), !is_connect);
}

INSTANTIATE_TEST_SUITE_P(sessions, failure_rows, testing::ValuesIn(all_cases()),
                         [](const auto& one) { return name_of(one.param); });

} // namespace
