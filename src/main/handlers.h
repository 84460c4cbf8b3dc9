// The command handlers, in the order of the command table.
#pragma once

#include "order/command.h"

int cmd_errinfo(int argc, char** argv, const CommandEntry* entry);
int cmd_rzglapi(int argc, char** argv, const CommandEntry* entry);
int cmd_devmg(int argc, char** argv, const CommandEntry* entry);
int cmd_arp(int argc, char** argv, const CommandEntry* entry);
int cmd_qos(int argc, char** argv, const CommandEntry* entry);
int cmd_mr(int argc, char** argv, const CommandEntry* entry);
int cmd_rule(int argc, char** argv, const CommandEntry* entry);
int cmd_user(int argc, char** argv, const CommandEntry* entry);
int cmd_hi(int argc, char** argv, const CommandEntry* entry);
int cmd_malloc(int argc, char** argv, const CommandEntry* entry);
int cmd_fls(int argc, char** argv, const CommandEntry* entry);
int cmd_macuser(int argc, char** argv, const CommandEntry* entry);
