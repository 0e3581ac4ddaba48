// make_bps_lists FOLDER: writes the 144 timing lists into an existing folder.
#include "tools/make_bps_lists/bps_lists.h"

#include <cstdio>

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: make_bps_lists FOLDER\n", stderr);
        return 2;
    }
    if (bps_lists_write(argv[1]) != RET_OK) {
        std::fprintf(stderr, "make_bps_lists: cannot write into %s\n", argv[1]);
        return 1;
    }
    return 0;
}
