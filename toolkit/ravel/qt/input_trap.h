// Only the top window or dialog gets input: everything else is dropped on its way.
#pragma once

void install_input_trap();
void remove_input_trap();
