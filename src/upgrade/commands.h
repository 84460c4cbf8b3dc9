// The handlers of this folder's commands: upgrades of kernel modules.
#pragma once

#include "order/command.h"

int cmd_wget(int argc, char** argv, const CommandEntry* entry);
