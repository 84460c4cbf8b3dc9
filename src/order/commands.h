// The handlers of this folder's commands: general services of the kernel modules.
#pragma once

#include "order/command.h"

int cmd_errinfo(int argc, char** argv, const CommandEntry* entry);
int cmd_malloc(int argc, char** argv, const CommandEntry* entry);
int cmd_fls(int argc, char** argv, const CommandEntry* entry);
