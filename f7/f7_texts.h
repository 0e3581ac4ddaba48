// Texts of the sessions that carry a 60-byte image. Blanks and line ends differ from text to text on purpose:
// readers of existing logs search for them as they are.
#pragma once

#include "session/session_texts.h"

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
