#include "toolkit/ravel/widget.h"

#include <QWidget> // refused: QWidget\W.*(No such file|file not found)

int main() { return widget_lookup(nullptr, "a") == nullptr ? 0 : 1; }
