// The handlers of this folder's commands: traffic control and host tracking.
#pragma once

#include "order/command.h"

int cmd_qos(int argc, char** argv, const CommandEntry* entry);
int cmd_ctrule(int argc, char** argv, const CommandEntry* entry);
int cmd_ddos_fy(int argc, char** argv, const CommandEntry* entry);
int cmd_ddos(int argc, char** argv, const CommandEntry* entry);
int cmd_hi(int argc, char** argv, const CommandEntry* entry);
int cmd_tmp_qos_xz(int argc, char** argv, const CommandEntry* entry);
int cmd_spzn(int argc, char** argv, const CommandEntry* entry);
int cmd_hictlist_show(int argc, char** argv, const CommandEntry* entry);
int cmd_ip_options_srr(int argc, char** argv, const CommandEntry* entry);
int cmd_skb_delay(int argc, char** argv, const CommandEntry* entry);
int cmd_alg(int argc, char** argv, const CommandEntry* entry);
int cmd_vek_netlink(int argc, char** argv, const CommandEntry* entry);
int cmd_igmp(int argc, char** argv, const CommandEntry* entry);
int cmd_ac_server(int argc, char** argv, const CommandEntry* entry);
int cmd_ap_balanced(int argc, char** argv, const CommandEntry* entry);
int cmd_ap_rssi(int argc, char** argv, const CommandEntry* entry);
int cmd_ap_rssi_5g(int argc, char** argv, const CommandEntry* entry);
int cmd_ap_rssi_3w(int argc, char** argv, const CommandEntry* entry);
int cmd_prio_5g(int argc, char** argv, const CommandEntry* entry);
int cmd_rssi(int argc, char** argv, const CommandEntry* entry);
