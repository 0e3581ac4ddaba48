"""What tools/lint must refuse and what it must let pass. Bad words are put together from halves, so that this file
passes too."""

# Rule, path, bad text.
REFUSED = [
    ("layer", "toolkit/core/a.cpp", "#include <Q" "String>"),
    ("layer", "app/a.cpp", "#include <Qt" "Core>"),
    ("layer", "app/a.cpp", "void f(Q" "Widget* w);"),
    ("layer", "tests/app/a.cpp", "Q" "_OBJECT"),
    ("layer", "dev_a/pages/a.cpp", "auto x = Q" "t::red;"),
    ("layer", "toolkit/core/a.cpp", '#include "toolkit/ravel/ravel.h"'),
    ("layer", "platform/a.cpp", '#include "toolkit/core/log.h"'),
    ("layer", "serial/a.cpp", '#include "app/home_page.h"'),
    ("layer", "serial/a.cpp", '#include "dev_b/codec.h"'),
    ("layer", "serial/a.cpp", '#include "toolkit/ravel/widget.h"'),
    ("layer", "config/a.cpp", '#include "config/pages/family_pages.h"'),
    ("layer", "config/a.cpp", '#include "serial/session.h"'),
    ("layer", "dev_a/a.cpp", '#include "dev_b/codec.h"'),
    ("layer", "dev_a/a.cpp", '#include "dev_a/pages/page.h"'),
    ("layer", "dev_b/pages/a.cpp", '#include "dev_a/codec.h"'),
    ("layer", "monitor/a.cpp", '#include "app/navigator.h"'),
    ("layer", "monitor/a.cpp", '#include "assistant/engine.h"'),
    ("layer", "sim/a.cpp", '#include "config/models.h"'),
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
    ("fixed-sleep", "tests/app/a.cpp", "sleep_" "ms(10);"),
    ("fixed-sleep", "tests/app/a.cpp", "worker_sleep_" "ms(10);"),
    ("fixed-sleep", "tests/toolkit/a.cpp", "QTest::q" "Wait(10);"),
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
    ("toolkit/ravel/a.cpp", "#include <Q" "String>\nQ" "String s;"),
    ("tests/toolkit/a.cpp", "#include <Q" "Test>"),
    ("app/a.cpp", '// a Q' 'Widget is behind it\nconst char* s = "Q' 'Widget";'),
    ("app/a.cpp", '#include "toolkit/ravel/ravel.h"\n#include "dev_a/pages/pages.h"\n#include <string>'),
    ("dev_b/pages/a.cpp", '#include "dev_b/codec.h"\n#include "config/pages/family_pages.h"'),
    ("platform/com_port.h", "#ifdef _WIN32"),
    ("platform/posix/a.cpp", "#include <unistd.h>\n#include <sys/ioctl.h>"),
    ("toolkit/core/thread.cpp", "#include <pthread.h>\n#if defined(__SANITIZE_THREAD__)"),
    ("tests/serial/a.cpp", '#include "sim/module.h"\n#include <unistd.h>\n#ifdef _WIN32'),
    ("app/a.cpp", "int x;\n" * 600),
    ("tests/core/sleep_test.cpp", "sleep_" "ms(10);"),
    ("serial/a.cpp", "sleep_" "ms(60000);"),
    ("tests/toolkit/a.cpp", "QTest::qWa" "itFor(done, 1000); asleep(1); wait_for(x);"),
    ("tests/program/a.sh", "mktemp -d out.XXXXXX # no sleep here"),
    ("tests/program/a.sh", "until test -s out; do sleep 0.02; done"),
    ("tools/a", "#!/usr/bin/env python3\nif True: pass"),
    ("tests/program/a.drive", "#! sim COM7=VKT531A"),
    ("app/a.cpp", "// the serial session; a part of the page; parts 1 and 2 of a frame; an issue with ports"),
    ("res/default/styles/a.qss", "color: #123456;"),
    ("docs/a.md", "ISO 11898-1 is the public standard; the helper program; /dev/ttyS0; ../work/x; network/"),
]


def run(check_text):
    """Runs every case; says what went wrong; 0 when nothing did."""
    wrong = 0
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
