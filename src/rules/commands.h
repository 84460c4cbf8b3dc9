// The handlers of this folder's commands: access rules and content filters.
#pragma once

#include "order/command.h"

int cmd_rule(int argc, char** argv, const CommandEntry* entry);
int cmd_urlfilter(int argc, char** argv, const CommandEntry* entry);
int cmd_hpostfixfilter(int argc, char** argv, const CommandEntry* entry);
int cmd_hpostforbid(int argc, char** argv, const CommandEntry* entry);
int cmd_bbsfilter(int argc, char** argv, const CommandEntry* entry);
