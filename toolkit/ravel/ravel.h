// Start-up, main loop, assets and locale of the toolkit.
#pragma once

#include "toolkit/core/date_time.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/log.h"
#include "toolkit/core/object.h"
#include "toolkit/core/result.h"
#include "toolkit/core/text.h"
#include "toolkit/core/thread.h"
#include "toolkit/ravel/widget.h"
#include "toolkit/ravel/window_manager.h"

enum class app_type : uint8_t { simulator = 1, desktop = 2 };

/// First step of start-up: makes the calling thread the GUI thread. Before anything else of the toolkit.
ret_t tk_pre_init();
/// Makes the native window (hidden until tk_run, or until the first window opens) of `width` by `height` pixels,
/// held to at least 320 by 240 and at most 16384 by 16384, with `name` as its title, and takes layouts, styles,
/// strings and images from `res_root` (relative to the working directory). When it is shown it is made no larger
/// than its screen has room for. RET_FAIL when the resources cannot be found.
ret_t tk_init(int32_t width, int32_t height, app_type type, const char* name, const char* res_root);
/// Registers the widget classes beyond the basic ones.
ret_t tk_ext_widgets_init();
/// Runs the main loop until the main window is closed (or tk_quit). Open modal dialogs are unwound first.
ret_t tk_run();
/// Ends tk_run with `status` as tk_exit_status().
ret_t tk_quit(int status);
int tk_exit_status();
/// Takes the toolkit down: destroys all windows and refuses further idle work.
ret_t tk_exit();

app_type system_info_get_app_type();
ret_t tk_set_lcd_orientation(int32_t degrees);
/// Sets the application font: "default" is the first of the style's font families that is installed.
ret_t system_info_set_default_font(const char* name);

/// Theme of layouts, styles and images. Only "default" is there; RET_NOT_IMPL for others.
ret_t assets_manager_set_theme(const char* theme);
bool assets_has_theme(const char* name);
/// Loads the style sheet of the theme. RET_FAIL when it is missing.
ret_t assets_manager_preload_style();
ret_t tk_init_assets();
/// Whether the system's own palette has light text on dark ground. GUI thread, after tk_init.
bool system_info_is_dark();
/// Takes the theme's dark colours (or the light ones, as at first) for all windows, open ones too. RET_FAIL when
/// the theme has none. GUI thread, after tk_init.
ret_t theme_set_dark(bool dark);
bool theme_is_dark();

/// Chooses the language of strings ("zh", "CN").
ret_t locale_info_change(const char* language, const char* country);
/// The translation of a key in the current language; the key itself when there is none.
std::string locale_info_tr(const char* key);

/// Plays a script of user actions (docs/driving.md) once the main loop runs; its first failure ends the program
/// with status 3. RET_FAIL when the file cannot be read. The program calls it with the variable VKT_DRIVE.
ret_t tk_drive(const char* script_path);
