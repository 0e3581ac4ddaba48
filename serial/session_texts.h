// Every text of the sessions that reaches the screen or the log for a failed step. Blanks and line ends differ from
// text to text on purpose: readers of existing logs search for them as they are.
#pragma once

#include <cstdint>

/// Messages for the ways an exchange's input or output can fail.
struct io_messages {
    const char* create_write_event = "创建写事件失败";
    const char* write = "写配置命令失败";
    const char* wait_write = "等待写操作完成失败";
    const char* write_result = "获取写操作结果失败";
    const char* create_read_event = "创建读事件失败";
    const char* read = "读取写命令应答失败";
    const char* wait_read = "等待读操作完成失败";
    const char* read_result = "获取读操作结果失败";
};

/// An exchange's messages and the heads of its log lines (the tails are io_tails); "%d" are hour, minute and
/// second.
struct io_texts {
    io_messages message;
    const char* write_head;
    const char* read_head;
};

/// What follows the head of a log line.
struct io_tails {
    const char* create_event;
    const char* start;
    const char* wait;
    const char* result;
};
inline constexpr io_tails write_tails = {"create write event failed!\n\n", "write failed!\n\n",
                                         "wait write operation failed!\n\n", "get write result failed!\n\n"};
inline constexpr io_tails read_tails = {"create read event failed!\n\n", "read failed!\n\n",
                                        "wait read operation failed!\n\n", "get read result failed!\n\n"};
/// One more line when the device behind the port is gone.
inline constexpr const char* log_port_lost = "port lost, error %lu\n";

inline constexpr const char* text_bad_port_name = "串口号有误";
inline constexpr const char* text_open_failed = "串口打开失败";
inline constexpr const char* log_open_failed = "\n[%d-%d-%d]open: open serial failed!\n\n";
/// Before a B family log line.
inline constexpr const char* log_model_head = "\n %s \n";

// Progress texts that several sessions share.
inline constexpr const char* text_read_config = "读配置.....";
inline constexpr const char* text_write_config = "写配置.....";
inline constexpr const char* text_check_config = "检测配置.....";
inline constexpr const char* text_init_buttons = "按键初始化.....";
inline constexpr const char* text_connected = "连接成功";
inline constexpr const char* text_read_done = "读配置完成";
inline constexpr const char* text_write_done = "写配置完成";

// Connect.
inline constexpr const char* text_port_settings = "串口参数配置.....";
inline constexpr const char* text_port_settings_6s = "串口参数配置（预计6s）.....";
inline constexpr const char* text_send_handshake = "发送验证命令.....";
inline constexpr const char* text_read_handshake = "接收验证应答.....";
inline constexpr const char* text_check_handshake = "验证产品标识.....";
inline constexpr const char* text_send_firmware = "发送读取命令.....";
inline constexpr const char* text_read_firmware = "接收读取应答.....";
inline constexpr const char* text_check_firmware = "读取固件信息.....";
inline constexpr const char* text_config_mode = "转换为配置模式.....";

// Generic and A family.
inline constexpr io_texts handshake_texts = {{.create_write_event = "创建异步写事件失败"},
                                             "\nsend: check product flage\n[%d-%d-%d]write: ",
                                             "\nsend: check product flage\n [%d-%d-%d]read: "};
inline constexpr io_texts firmware_texts = {{.create_write_event = "创建异步写事件失败"},
                                            "\nsend: read product version info\n[%d-%d-%d]write: ",
                                            "\nsend: read product version info\n [%d-%d-%d]read: "};
inline constexpr io_texts read_texts = {{.write = "读配置命令失败"},
                                        "\nsend: read product config info\n[%d-%d-%d]write: ",
                                        "\nsend: read product config info\n [%d-%d-%d]read: "};
inline constexpr io_texts write_texts = {
    {}, "\nsend: write product info\n[%d-%d-%d]write: ", "\nsend:  write product info\n [%d-%d-%d]read: "};

inline constexpr const char* text_load_config = "上传配置.....";
inline constexpr const char* text_check_failed = "检测配置失败";
inline constexpr const char* text_verify_failed = "校验配置失败";
inline constexpr const char* log_read_header = "\nsend: read product config info(calculate failed!)\n";
inline constexpr const char* log_read_check =
    "\nsend: read product config info(calculate failed!)\n [%d-%d-%d]read: ";
inline constexpr const char* log_write_check = "\nsend: write product info(calculate failed!)\n [%d-%d-%d]read: ";
inline constexpr const char* log_write_refused = "\nsend: write product info (ack failed!)\n [%d-%d-%d]read:";

// B family.
inline constexpr const char* b_wrong_mode = "转换为配置模式失败";
inline constexpr io_texts b_config_texts = {
    {.create_write_event = "创建异步写事件失败", .write = b_wrong_mode},
    "send: config mode\n[%d-%d-%d]write: ",
    "send:  config mode\n [%d-%d-%d]read: ",
};
// One message for all that can go wrong with a reading.
inline constexpr const char* b_no_reply = "读取写命令应答失败";
inline constexpr io_texts b_read_texts = {{.write = "读配置命令失败",
                                           .wait_write = "读配置命令失败",
                                           .write_result = "读配置命令失败",
                                           .create_read_event = b_no_reply,
                                           .wait_read = b_no_reply,
                                           .read_result = b_no_reply},
                                          "send: read product info\n[%d-%d-%d]write: ",
                                          "send:  read product info\n [%d-%d-%d]read: "};
inline constexpr io_texts b_write_texts = {{.wait_write = "写配置命令失败",
                                            .write_result = "写配置命令失败",
                                            .create_read_event = b_no_reply,
                                            .wait_read = b_no_reply,
                                            .read_result = b_no_reply},
                                           "send: write product info\n[%d-%d-%d]write: ",
                                           "send:  write product info\n [%d-%d-%d]read: "};
inline constexpr const char* b_check_failed = "应答帧校验失败";
inline constexpr const char* b_log_read_check = "send:  read product info\n [%d-%d-%d]read: read check failed!";
inline constexpr const char* b_log_write_check = "send:  write product info\n [%d-%d-%d]read: read check failed!\n";

// Leaving configuration mode.
inline constexpr const char* text_mode_switch = "模式转换中.....";
inline constexpr const char* text_mode_transfer = "现在设备为传输模式";
inline constexpr const char* text_transfer_write = "写操作失败";
