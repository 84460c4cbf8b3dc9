// The handlers of this folder's commands: traffic control and host tracking.
#pragma once

#include "order/command.h"

int cmd_qos(int argc, char** argv, const CommandEntry* entry);
int cmd_ctrule(int argc, char** argv, const CommandEntry* entry);
int cmd_ddos_fy(int argc, char** argv, const CommandEntry* entry);
int cmd_ddos(int argc, char** argv, const CommandEntry* entry);
int cmd_hi(int argc, char** argv, const CommandEntry* entry);
