// The handlers of this folder's commands: users and authentication.
#pragma once

#include "order/command.h"

int cmd_rzglapi(int argc, char** argv, const CommandEntry* entry);
int cmd_user(int argc, char** argv, const CommandEntry* entry);
int cmd_macuser(int argc, char** argv, const CommandEntry* entry);
