// Texts of the B family's sessions, as they stand in existing logs.
#pragma once

#include "session/session_texts.h"

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
                                          "send: read product config info\n[%d-%d-%d]write: ",
                                          "send: read product config info\n [%d-%d-%d]read: "};
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
