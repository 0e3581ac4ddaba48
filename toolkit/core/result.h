// Result codes that every operation of the toolkit and of the program returns.
#pragma once

enum ret_t : int {
    RET_OK = 0,
    RET_INIT_FAILED = 1, ///< an init routine, or a dropped report, that could not do its work
    RET_FAIL = 2,        ///< failed, or not found
    RET_NOT_IMPL = 3,    ///< not supported
    RET_REMOVE = 7,      ///< from an idle job or timer: remove me
    RET_REPEAT = 8,      ///< from an idle job or timer: call me again
    RET_BAD_PARAMS = 16, ///< an argument is missing or malformed
};
