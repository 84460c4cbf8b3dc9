// The handlers of this folder's commands: interfaces, lines and addressing.
#pragma once

#include "order/command.h"

int cmd_devmg(int argc, char** argv, const CommandEntry* entry);
int cmd_arp(int argc, char** argv, const CommandEntry* entry);
int cmd_mr(int argc, char** argv, const CommandEntry* entry);
int cmd_pppoe(int argc, char** argv, const CommandEntry* entry);
int cmd_pppoe_group(int argc, char** argv, const CommandEntry* entry);
int cmd_pppoe_br(int argc, char** argv, const CommandEntry* entry);
int cmd_ppp_fast(int argc, char** argv, const CommandEntry* entry);
int cmd_dhcp(int argc, char** argv, const CommandEntry* entry);
int cmd_dhcp_reserve(int argc, char** argv, const CommandEntry* entry);
int cmd_dhcp_not_assign(int argc, char** argv, const CommandEntry* entry);
int cmd_dns(int argc, char** argv, const CommandEntry* entry);
