// The handlers of this folder's commands: the behaviour audit.
#pragma once

#include "order/command.h"

int cmd_sj(int argc, char** argv, const CommandEntry* entry);
int cmd_sj2(int argc, char** argv, const CommandEntry* entry);
