// Another theme while the program runs: its sheet, and its pictures.
#include "toolkit/ravel/qt/assets.h"
#include "toolkit/ravel/qt/detail.h"
#include "toolkit/ravel/qt/ui_value.h"
#include "toolkit/ravel/ravel.h"

#include <QApplication>

ret_t theme_set_dark(bool wanted) {
    if (!tk_check_gui_thread(__func__) || qApp == nullptr) return RET_BAD_PARAMS;
    if (theme_is_dark() == wanted) return RET_OK;
    if (!use_sheet(wanted)) return RET_FAIL;
    renew_icons();
    return RET_OK;
}
