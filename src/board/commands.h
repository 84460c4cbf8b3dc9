// The handlers of this folder's commands: the switch chip and the board.
#pragma once

#include "order/command.h"

int cmd_rtl(int argc, char** argv, const CommandEntry* entry);
int cmd_turn_phy(int argc, char** argv, const CommandEntry* entry);
int cmd_led(int argc, char** argv, const CommandEntry* entry);
int cmd_watchdog(int argc, char** argv, const CommandEntry* entry);
int cmd_param(int argc, char** argv, const CommandEntry* entry);
int cmd_usblog(int argc, char** argv, const CommandEntry* entry);
int cmd_zentrik_plugin(int argc, char** argv, const CommandEntry* entry);
int cmd_syslog(int argc, char** argv, const CommandEntry* entry);
