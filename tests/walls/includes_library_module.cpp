#include "toolkit/ravel/widget.h"

#include <QtCore/qglobal.h> // refused: qglobal.h\W.*(No such file|file not found)

int main() { return widget_lookup(nullptr, "a") == nullptr ? 0 : 1; }
