#include "toolkit/ravel/drive.h"
#include "toolkit/ravel/ravel.h"
#include "toolkit/table_view/table_view.h"

QWidget* native = nullptr; // refused: QWidget\W

int main() { return tk_exit_status(); }
