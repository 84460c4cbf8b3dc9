// The board's own state: LED and watchdog.
#pragma once

#include <string>

#include "state/store.h"

void set_led(Store& store, bool is_on);

// What there is to say of both, a line each.
std::string describe_board(Store& store);

// As if the machine had been started again.
void restart_board(Store& store);
