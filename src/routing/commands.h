// The handlers of this folder's commands: routing daemons, and their log.
#pragma once

#include "order/command.h"

int cmd_ospfv3(int argc, char** argv, const CommandEntry* entry);
int cmd_ospf(int argc, char** argv, const CommandEntry* entry);
int cmd_rip(int argc, char** argv, const CommandEntry* entry);
int cmd_ripng(int argc, char** argv, const CommandEntry* entry);
int cmd_ipv6(int argc, char** argv, const CommandEntry* entry);
int cmd_zebra(int argc, char** argv, const CommandEntry* entry);
