"""What tools/lint must refuse and what it must let pass. Bad words are put together from halves, so that this file
passes too."""

import lint_names

# Rule, path, bad text.
REFUSED = [
    ("layer", "toolkit/core/a.cpp", "#include <Q" "String>"),
    ("layer", "app/a.cpp", "#include <Qt" "Core>"),
    ("layer", "app/a.cpp", "void f(Q" "Widget* w);"),
    ("layer", "tests/app/a.cpp", "Q" "_OBJECT"),
    ("layer", "dev_a/pages/a.cpp", "auto x = Q" "t::red;"),
    ("layer", "toolkit/core/a.cpp", '#include "toolkit/ravel/ravel.h"'),
    ("layer", "toolkit/ravel/a.cpp", "#include <Q" "String>"),
    ("layer", "toolkit/ravel/a.h", '#include "toolkit/ravel/qt/detail.h"'),
    ("layer", "app/a.cpp", '#include "toolkit/ravel/qt/detail.h"'),
    ("layer", "dev_b/pages/a.cpp", '#include "toolkit/table_view/qt/rows.h"'),
    ("layer", "tests/app/a.cpp", '#include "toolkit/ravel/qt/window_stack.h"'),
    ("layer", "toolkit/ravel/qt/a.cpp", '#include "toolkit/table_view/table_view.h"'),
    ("layer", "platform/a.cpp", '#include "toolkit/core/log.h"'),
    ("layer", "serial/a.cpp", '#include "app/home_page.h"'),
    ("layer", "serial/a.cpp", '#include "dev_b/codec.h"'),
    ("layer", "serial/a.cpp", '#include "toolkit/ravel/widget.h"'),
    ("layer", "session/a.cpp", '#include "fields/family_pages.h"'),
    ("layer", "session/a.cpp", '#include "dev_b/family.h"'),
    ("layer", "f7/a.cpp", '#include "dev_a/family.h"'),
    ("layer", "dev_b/a.cpp", '#include "f7/frame.h"'),
    ("layer", "fields/a.cpp", '#include "dev_generic/fields.h"'),
    ("layer", "app/home_page.cpp", '#include "dev_a/pages/vkt510a_pages.h"'),
    ("layer", "app/a.cpp", '#include "dev_b/family.h"'),
    ("layer", "cli/a.cpp", '#include "dev_b/family.h"'),
    ("layer", "cli/a.cpp", '#include "toolkit/ravel/ravel.h"'),
    ("layer", "profile/a.cpp", '#include "cli/context.h"'),
    ("layer", "app/families.cpp", '#include "dev_b/family.h"'),
    ("layer", "dev_a/a.cpp", '#include "dev_b/codec.h"'),
    ("layer", "dev_a/a.cpp", '#include "dev_a/pages/page.h"'),
    ("layer", "dev_b/pages/a.cpp", '#include "dev_a/codec.h"'),
    ("layer", "monitor/a.cpp", '#include "app/navigator.h"'),
    ("layer", "monitor/a.cpp", '#include "assistant/engine.h"'),
    ("layer", "sim/a.cpp", '#include "session/family.h"'),
    ("layer", "app/a.cpp", '#include "sim/module.h"'),
    ("layer", "app/a.cpp", '#include "home_page.h"'),
    ("layer", "app/a.cpp", "#include <unistd.h>"),
    ("layer", "serial/a.cpp", "#include <sys/stat.h>"),
    ("layer", "serial/a.cpp", "#include <windows.h>"),
    ("layer", "platform/posix/a.cpp", "#include <windows.h>"),
    ("layer", "app/a.cpp", "#include <pthread.h>"),
    ("system-switch", "app/a.cpp", "#ifdef _WIN32"),
    ("system-switch", "toolkit/core/a.cpp", "#if defined(__linux__) && 1"),
    ("system-switch", "serial/a.h", "#  elif WIN32"),
    ("widget-name", "app/a.cpp", 'widget_need(home, "mledit2");'),
    ("widget-name", "app/a.cpp", 'f(widget_lookup(widget_lookup(home, "pages"), "page_chang"), 1);'),
    ("widget-name", "app/a.cpp", 'show(home, "view11", true);'),
    ("widget-name", "app/a.cpp", 'for (const char* name : {"view1", "vie"}) f(widget_lookup(home, name));'),
    ("widget-name", "app/a.cpp", 'constexpr binding all[] = {{"button", click, f}, {"buton2", click, f}};'),
    ("widget-name", "dev_a/pages/a.cpp", 'constexpr page_row r[] = {\n {.name = "mledit", .what = &f::mask},\n {.name = "medit"}};'),
    ("widget-name", "dev_b/pages/a.cpp", 'template <int N>\nconstexpr page_row r[] = {{.name = of<"edit_check7_vkt610b_canfd#", N>},\n'
     '{.name = of<"edit_check9_vkt610b_canfd#", N>}};'),
    ("widget-name", "dev_b/pages/a.cpp", 'constexpr lost_line l[] = {{"page_can", "mledi", changing, "text"}};'),
    ("widget-name", "dev_b/pages/a.cpp", 'constexpr page_row r[] = {{.name = "mledit"}, filter("mledi", "key")};'),
    ("widget-name", "fields/a.cpp", 'constexpr page_tab t[] = {{"table_button_spi", "page_sp", page_spi_init}};'),
    ("widget-name", "fields/a.cpp", 'std::array<page_table, 1> t = {{{"page_can", rows, {}, "scroll_view"}}};'),
    ("widget-name", "dev_b/pages/a.cpp",
     'constexpr inner_pages p = {"vkt610b_uart_pages", {{"tab_button_uart3", "page_vkt610b_uart_1", init}}};'),
    ("length", "app/a.cpp", "int x;\n" * 601),
    ("unfinished", "app/a.cpp", "int x; // TO" "DO later"),
    ("unfinished", "README.md", "FIX" "ME"),
    ("unfinished", "run.sh", "# XX" "X"),
    ("unfinished", "res/default/ui/a.ui", "HA" "CK"),
    ("skipped-test", "tests/app/a.cpp", "GTEST_S" "KIP();"),
    ("skipped-test", "tests/app/a.cpp", "TEST(a, DIS" "ABLED_b) {}"),
    ("skipped-test", "tests/app/a.cpp", "TEST_F(DIS" "ABLED_a, b) {}"),
    ("fixed-sleep", "tests/app/a.cpp", "std::this_thread::sleep_f" "or(1s);"),
    ("fixed-sleep", "tests/app/a.cpp", "us" "leep(1000);"),
    ("unequal-regex", "tests/app/a.cpp", "EXPECT_THAT(a, Contains" "Regex(b));"),
    ("fixed-sleep", "tests/app/a.cpp", "sleep_" "ms(10);"),
    ("fixed-sleep", "tests/app/a.cpp", "worker_sleep_" "ms(10);"),
    ("fixed-sleep", "tests/toolkit/ravel/a.cpp", "QTest::q" "Wait(10);"),
    ("fixed-sleep", "tests/program/a.sh", "    sl" "eep 1"),
    ("fixed-sleep", "tests/program/a.sh", "start & sl" "eep 0.5"),
    ("fixed-sleep", "tests/program/a.drive", "sl" "eep 500"),
    ("source-of-truth", "app/a.cpp", "// as the spe" "cification wants"),
    ("source-of-truth", "docs/a.md", "see des" "ign.md"),
    ("source-of-truth", "app/a.cpp", "// the doc " "says so"),
    ("numbered-source", "app/a.cpp", "// Par" "t 2.2"),
    ("numbered-source", "app/a.cpp", "// see Par" "ts 3 and 4"),
    ("tracker", "CHANGELOG.md", "- ports (#" "12)"),
    ("tracker", "app/a.cpp", "// iss" "ue 2"),
    ("tracker", "app/a.cpp", "// by the rul" "ing"),
    ("machine-path", "run.sh", "cd /wo" "rk/main"),
    ("machine-path", "docs/a.md", "in `/ho" "me/someone`"),
    ("registry", "packages.txt", "https://de" "b.debian.org/debian"),
    ("registry", "docs/a.md", "PyP" "I.org"),
    ("script", "run.sh", "#!/ bin / bash"),
    ("script", "tools/a", "#!/bin/bash\nif true; do"),
    ("machinery", "docs/a.md", "made by a sub" "agent"),
    ("machinery", "docs/a.md", "an LL" "M"),
]

# Path, good text.
PASSED = [
    ("app/families.cpp", '#include "dev_b/pages/vkt610b_pages.h"'),
    ("dev_a/a.cpp", '#include "f7/frame.h"'),
    ("app/a.cpp", 'widget_need(home, "mledit"); // widget_need(home, "nobody")\nwidget_lookup(home, name);'),
    ("app/a.cpp", 'widget_lookup(home, tk_format("canfd%d_x", n).c_str()); other(home, "nobody"); list.show(1, "nobody", 2);'),
    ("dev_b/pages/a.cpp", 'widget_lookup(page, "combo_box_ex_bps_vkt610b_canfd2");  // a twin by the include\'s rename'),
    ("dev_b/pages/a.cpp", 'constexpr page_row r[] = {{.name = "mledit", .refused_as = "nobody"}};'),
    ("dev_b/pages/a.cpp", 'constexpr page_table t{"page_vkt610b_uart", {}, rules};'),
    ("toolkit/ravel/qt/a.cpp", 'widget_need(home, "nobody");'),
    ("toolkit/ravel/qt/a.cpp", '#include "toolkit/ravel/widget.h"\n#include <Q' "String>\nQ" "String s;"),
    ("toolkit/table_view/qt/a.cpp", '#include "toolkit/ravel/qt/detail.h"\n#include "toolkit/table_view/table_view.h"'),
    ("tests/toolkit/ravel/a.cpp", '#include "tests/support/user.h"\n#include "toolkit/ravel/qt/detail.h"'),
    ("tests/toolkit/ravel/a.cpp", "#include <Q" "Test>"),
    ("app/a.cpp", '// a Q' 'Widget is behind it\nconst char* s = "Q' 'Widget";'),
    ("app/a.cpp", '#include "toolkit/ravel/ravel.h"\n#include "fields/family_pages.h"\n#include <string>'),
    ("dev_b/pages/a.cpp", '#include "dev_b/codec.h"\n#include "fields/family_pages.h"'),
    ("platform/com_port.h", "#ifdef _WIN32"),
    ("platform/posix/a.cpp", "#include <unistd.h>\n#include <sys/ioctl.h>"),
    ("toolkit/core/thread.cpp", "#include <pthread.h>\n#if defined(__SANITIZE_THREAD__)"),
    ("tests/serial/a.cpp", '#include "sim/module.h"\n#include <unistd.h>\n#ifdef _WIN32'),
    ("app/a.cpp", "int x;\n" * 600),
    ("tests/toolkit/core/sleep_test.cpp", "sleep_" "ms(10);"),
    ("serial/a.cpp", "sleep_" "ms(60000);"),
    ("tests/toolkit/ravel/a.cpp", "QTest::qWa" "itFor(done, 1000); asleep(1); wait_for(x);"),
    ("tests/program/a.sh", "mktemp -d out.XXXXXX # no sleep here"),
    ("tests/program/a.sh", "until test -s out; do sleep 0.02; done"),
    ("tools/a", "#!/usr/bin/env python3\nif True: pass"),
    ("tests/program/a.drive", "#! sim COM7=VKT531A"),
    ("app/a.cpp", "// the serial session; a part of the page; parts 1 and 2 of a frame; an issue with ports"),
    ("res/default/styles/a.qss", "color: #123456;"),
    ("docs/a.md", "ISO 11898-1 is the public standard; the helper program; /dev/ttyS0; ../work/x; network/"),
]


# Layouts, and the names that can be found once they are built.
LAYOUTS = {
    "window": '<ui><widget class="QWidget" name="root"><widget class="QWidget" name="one"><property name="include">'
              '<string>part</string></property></widget><widget class="QWidget" name="two"><property name="include">'
              '<string>part</string></property><property name="rename"><string>ch1=ch2, a=b</string></property></widget>'
              '</widget></ui>',
    "part": '<ui><widget class="QWidget" name="part"><widget class="QLabel" name="ch1_a"/></widget></ui>',
    "row": '<ui><widget class="QWidget" name="row"><widget class="QLabel" name="item"/></widget></ui>',
}
LAYOUT_NAMES = {"window", "root", "one", "two", "part", "pbrt", "ch1_a", "ch2_b", "row", "item"}


def run(check_text):
    """Runs every case; says what went wrong; 0 when nothing did."""
    wrong = 0
    if lint_names.names_of_layouts(LAYOUTS) != LAYOUT_NAMES:
        print(f"self-test: names of the layouts: {sorted(lint_names.names_of_layouts(LAYOUTS))}")
        wrong += 1
    if lint_names.unused_types(["constexpr binding all[] = {};"]) != sorted(set(lint_names.ROWS) - {"binding"}):
        print("self-test: a type without tables is not noticed")
        wrong += 1
    for rule, path, text in REFUSED:
        names = {name for _, name, _ in check_text(path, text)}
        if names != {rule}:
            print(f"self-test: {path}: {text[:60]!r} should break {rule} alone, broke {sorted(names) or 'nothing'}")
            wrong += 1
    for path, text in PASSED:
        findings = list(check_text(path, text))
        if findings:
            print(f"self-test: {path}: {text[:60]!r} should pass, gave {findings}")
            wrong += 1
    print(f"lint --self-test: {len(REFUSED)} bad and {len(PASSED)} good texts, {wrong} wrong")
    return 1 if wrong else 0
