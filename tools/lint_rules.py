"""What tools/lint refuses. Patterns are written with one-letter classes ("T[O]DO") so that this file passes its own
rules."""

import re
from collections import namedtuple

# ---- layers ---------------------------------------------------------------------------------------------------------

CORE = ["platform", "toolkit/core"]
VIEW = ["toolkit/ravel", "toolkit/table_view"]
SESSION = CORE + ["serial", "session"]
SHELL = CORE + VIEW + ["shell"]
FIELDS = SESSION + SHELL + ["profile", "fields"]
FAMILIES = ["dev_generic", "dev_a", "dev_b"]
ENGINES = SESSION + ["f7"] + FAMILIES + ["profile", "edits", "monitor", "assistant"]
PAGES = [f"{folder}/pages" for folder in FAMILIES]
ALL = ENGINES + FIELDS + PAGES + ["monitor/pages", "assistant/pages", "app", "cli"]

# Folder: the folders whose headers its files may include, besides its own. Arrows go down only; the longest folder
# that holds a file counts. What does not include toolkit/ravel builds without a window system; what stands in qt/ is
# behind the wall.
LAYERS = {
    "platform": [],
    "toolkit/core": ["platform"],
    "toolkit/ravel": CORE,
    "toolkit/ravel/qt": CORE + ["toolkit/ravel"],
    "toolkit/table_view": CORE + ["toolkit/ravel"],
    "toolkit/table_view/qt": CORE + ["toolkit/ravel", "toolkit/ravel/qt", "toolkit/table_view"],
    "serial": CORE,
    "session": CORE + ["serial"],
    "f7": SESSION,
    "dev_generic": SESSION + ["f7"],
    "dev_a": SESSION + ["f7"],
    "dev_b": SESSION,
    "profile": SESSION,
    "edits": SESSION + ["profile"],
    "monitor": SESSION,
    "assistant": SESSION,
    "shell": CORE + VIEW,
    "fields": SESSION + SHELL + ["profile"],
    "dev_generic/pages": FIELDS + ["f7", "dev_generic"],
    "dev_a/pages": FIELDS + ["f7", "dev_a"],
    "dev_b/pages": FIELDS + ["dev_b"],
    "monitor/pages": FIELDS + ["monitor"],
    "assistant/pages": FIELDS + ["assistant"],
    "app": [room for room in ALL if room not in FAMILIES + PAGES + ["f7", "cli"]],
    "cli": [room for room in ENGINES if room not in FAMILIES + ["f7"]],
    "sim": ["platform"],
    "tools": ALL,
    "bench": ALL + ["sim", "tools"],
    "fuzz": ALL + ["sim", "tools"],
    "tests": ALL + ["sim", "tools", "fuzz"],
    "tests/toolkit/ravel": VIEW + CORE + ["toolkit/ravel/qt", "toolkit/table_view/qt", "tests"],
    "tests/walls": VIEW + ["toolkit/ravel/qt"],
}

# One file of each program names the families; bit timing belongs to one of them.
EXTRA_LAYERS = {"app/families.cpp": PAGES, "cli/families.cpp": FAMILIES,
                "cli/commands_timing.cpp": ["dev_b"]}

# The last are texts that must not compile.
GUI_LIBRARY_ROOMS = ("toolkit/ravel/qt/", "toolkit/table_view/qt/", "tests/toolkit/ravel/", "tests/walls/")
SYSTEM_ROOMS = ("platform/", "sim/", "tests/")
# System headers: pattern, and where they may be included. pthread.h is there on both systems.
SYSTEM_HEADERS = [
    (r"pthread\.h", ("platform/", "sim/", "tests/", "toolkit/core/")),
    (r"(windows|winsock2|ws2tcpip|objbase|io|direct|psapi)\.h", ("platform/windows/", "platform/entry/", "sim/", "tests/")),
    (r"(unistd|fcntl|termios|poll|dirent|dlfcn|pty|spawn|semaphore|sched|strings|syslog|grp|pwd)\.h|(sys|linux|net|netinet|arpa|asm)/.*",
     ("platform/posix/", "platform/entry/", "sim/", "tests/")),
]

# ---- text rules -----------------------------------------------------------------------------------------------------

Rule = namedtuple("Rule", "name pattern files message")

CODE = r"\.(cpp|h|cc|hpp)$"
ANY = r""
TESTS = r"^tests/.*\.(cpp|h|drive|sh|py)$"

# The file that tests the toolkit's own sleeping.
SLEEP_EXEMPT = {"tests/toolkit/core/sleep_test.cpp"}


def rule(name, pattern, files, message):
    return Rule(name, re.compile(pattern), re.compile(files), message)


TEXT_RULES = [
    rule("unfinished", r"\b(T[O]DO|F[I]XME|X[X]X|H[A]CK)\b", ANY, "finish it, or leave it out"),
    rule("skipped-test", r"\b(GTEST_S[K]IP|Q[S]KIP)\b|\bTEST(_[FP])?\(\s*\w+,\s*D[I]SABLED_|\bTEST(_[FP])?\(\s*D[I]SABLED_",
         TESTS, "a test runs or is not there"),
    # A shell script that waits for something looks again every few hundredths of a second.
    rule("fixed-sleep", r"\b(sleep_f[o]r|sleep_u[n]til|us[l]eep|nano[s]leep|(worker_)?sleep_[m]s|q[S]leep|q[W]ait|S[l]eep)\s*\(|"
         r"(^\s*|[;&|]\s*|\bdo\s+|\bthen\s+)sl[e]ep\s+(?!0\.0)[0-9.]+", TESTS, "wait for a condition or an event"),
    # GoogleTest's regular expressions are the system's on one side and its own few on the other.
    rule("unequal-regex", r"\b(Contains|Matches)R[e]gex\b", TESTS, "use std::regex: it is the same on both systems"),
    rule("source-of-truth", r"(?i)\bthe sp[e]c(ification)?\b|\bsp[e]c\.md\b|\b(des[i]gn|lo[o]k|exam[p]les)\.md\b|"
         r"\bthe docs? s[a]ys\b|\bdocument(ation)? s[a]ys\b", ANY, "say why in this system's own words"),
    rule("numbered-source", r"\bP[a]rts? [1-9](\.\d+)?\b", ANY, "say why in this system's own words"),
    rule("tracker", r"(?i)\biss[u]es? #?\d+\b|\br[u]lings?\b|(?<![&\w])\(#\d+\)", ANY, "no trackers in the tree"),
    rule("machine-path", r"(?<![\w.$}])/(w[o]rk|ro[o]t|ho[m]e/\w+)\b|/tmp/v[k]t\b", ANY, "no paths of one machine"),
    rule("registry", r"(?i)\b(de[b]\.debian\.org|pyp[i]\.org|pythonh[o]sted\.org|npm[j]s\.(org|com)|crates\.i[o]|"
         r"proxy\.golan[g]\.org|rubyg[e]ms\.org|ghcr\.i[o]|docker\.i[o])", ANY, "no hosts of package registries"),
    rule("machinery", r"(?i)\b(sub-?ag[e]nts?|ai ag[e]nts?|language mod[e]ls?|chat ?b[o]ts?|an ag[e]nt|the ag[e]nt)\b|"
         r"\bLL[M]s?\b", ANY, "the system only, not how it was made"),
]

MAX_LINES = 600
# Files that are one table: path, and why they may be long.
LONG_TABLES = {}

TEXT_NAMES = re.compile(r"\.(cpp|h|cc|hpp|py|sh|cmake|md|txt|json|yml|yaml|ui|qss|ts|svg|drive|desktop|supp|in|rc|manifest)$|"
                        r"(^|/)\.?[^./]+$")
DATA_FOLDERS = ("tools/bps_data_list/",)
