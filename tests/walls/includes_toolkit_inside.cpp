#include "toolkit/ravel/widget.h"

#include "toolkit/ravel/qt/detail.h" // refused: Q[A-Z]\w+\W.*(No such file|file not found)

int main() { return widget_lookup(nullptr, "a") == nullptr ? 0 : 1; }
