// Every text of the sessions that reaches the screen or the log for a failed step. Blanks and line ends differ from
// text to text on purpose: readers of existing logs search for them as they are.
#pragma once

#include "serial/io_result.h"

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

// Leaving configuration mode.
inline constexpr const char* text_mode_switch = "模式转换中.....";
inline constexpr const char* text_mode_transfer = "现在设备为传输模式";
inline constexpr const char* text_transfer_write = "写操作失败";

/// The last report of leaving a module, by how its write ended.
const char* leave_text(io_step end);
