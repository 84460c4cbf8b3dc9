// The command table: the tool's vocabulary, one row a command, and what the table itself answers.
#include "main/command_table.h"

#include <cstring>

#include "args/print.h"
#include "audit/commands.h"
#include "auth/commands.h"
#include "board/commands.h"
#include "net/commands.h"
#include "order/commands.h"
#include "routing/commands.h"
#include "rules/commands.h"
#include "traffic/commands.h"
#include "upgrade/commands.h"

namespace {

int cmd_help(int argc, char** argv, const CommandEntry* entry);

}  // namespace

// Their words stay taken and their usage stays on show.
int cmd_usage_only(int, char**, const CommandEntry* entry) { return print_usage(entry); }

// clang-format off
const CommandEntry kCommandTable[] = {
    {"errinfo", cmd_errinfo, "num string"},
    {"rzglset", cmd_usage_only,
     "type[0 | 1 | 3] tq  notify_type[0|1|2] lanip port web_exit web_anyuser pc_no_auth second_auth_en"},
    {"rzglget", cmd_usage_only, " "},
    {"rzglapi", cmd_rzglapi, "login/logout/white/black/checkonline/getonline/auth/portal"},
    {"pc_noauth", cmd_usage_only, "list"},
    {"third_portal", cmd_usage_only, "set get conf"},
    {"third", cmd_usage_only, "serverstate mode dns_exp_get redirct_mode"},
    {"rzglpreset", cmd_usage_only, "fip dns host mac"},
    {"rzglpreget", cmd_usage_only, ""},
    {"tcpmssset", cmd_usage_only, "mod_1 mod_2 max max_ipv6 val"},
    {"mrcl_ips", cmd_usage_only, "id name fn"},
    {"mrcl_en", cmd_usage_only, "id name en"},
    {"mrcl_checkip", cmd_usage_only, "ip"},
    {"?", cmd_help, "help"},
    {"help", cmd_help, "help"},
    {"devmg", cmd_devmg, "add del set get list"},
    {"arp", cmd_arp, "set get add del list delall"},
    {"dns", cmd_dns,
     "set get list type_add type_mod type_get type_del dnsc_clear getip special_debug info debug url"},
    {"qos", cmd_qos,
     "set get state speed_set typelist spset splist sprule dns_ip ext_set ext_get level skb devinfo\n\t "
     "sb_tj_init ip_rule_list speed_limit speed_coeff"},
    {"mr", cmd_mr, "mode onlywan get jh val dns zc list lr_add lr_del lr_list flow"},
    {"dhcp", cmd_dhcp, "add del show member_list bind"},
    {"dhcp_reserve", cmd_dhcp_reserve, "add del delall show "},
    {"dhcp_not_assign", cmd_dhcp_not_assign, "add del delall show "},
    {"ctrule", cmd_ctrule, "add del list defset defget"},
    {"ddos_fy", cmd_ddos_fy, "mac_set mac_get set"},
    {"ddos", cmd_ddos, "mac_set mac_get wan_attack protect_set protect_get lan_protect_set lan_protect_get"},
    {"hi", cmd_hi, "list runinfo ct qq gxcfg_set gxcfg_get set_ageing snmpscan"},
    {"tmp_qos_xz", cmd_tmp_qos_xz, "set"},
    {"pppoe", cmd_pppoe, "set_base set_opt devmg show"},
    {"user", cmd_user, "add del list group_add group_del group_list autoscan get_auto voucher_list"},
    {"anyip", cmd_usage_only, "set get list"},
    {"rule", cmd_rule, "acc mroute  filter whitelist"},
    {"br", cmd_usage_only, "set get del"},
    {"wssock", cmd_usage_only, "set get"},
    {"wget", cmd_wget, "download readold"},
    {"http_wget", cmd_usage_only, "path"},
    {"hpostfixfilter", cmd_hpostfixfilter, "add del list global"},
    {"hpostforbid", cmd_hpostforbid, "add del list global"},
    {"bbsfilter", cmd_bbsfilter, "add del delall list global"},
    {"urlfilter", cmd_urlfilter, "add del delall list global"},
    {"urlrd", cmd_usage_only, "add del list"},
    {"url", cmd_usage_only, "add del list"},
    {"dnsrd", cmd_usage_only, "init/add/del/delall/setgroup/show"},
    {"urlnewrd", cmd_usage_only, "init/add/del/delall/setgroup/show"},
    {"fbr", cmd_usage_only,
     "set get cmp_list yx_gid debug shibie_conf shibie_send info_list info_cnt pid_list path_list "
     "name_list udpbuf_list fip_list port_list udpport_list fip_port_delall fip_json port_json "
     "pool_show "},
    {"wanxx", cmd_usage_only, "set get"},
    {"msg", cmd_usage_only, "add del list"},
    {"smtp", cmd_usage_only,
     "vek smtp set en user_addr server_addr\n"
     "vek smtp get\n"
     "vek smtp except switch 0/1\n"
     "vek smtp except add user\n"
     "vek smtp except del user\n"
     "vek smtp except show\n"},
    {"macfilter", cmd_usage_only, "defaut_set defaut_get add del list delall"},
    {"mirror", cmd_usage_only, "set get"},
    {"cap_pack", cmd_usage_only, "set get"},
    {"malloc", cmd_malloc, ""},
    {"ap_balanced", cmd_ap_balanced, "num trys"},
    {"ap_rssi", cmd_ap_rssi, "set/get num"},
    {"ap_rssi_5g", cmd_ap_rssi_5g, "set/get num"},
    {"ap_rssi_3w", cmd_ap_rssi_3w, "set/get num"},
    {"5g_prio", cmd_prio_5g, "conf debug"},
    {"ac_server", cmd_ac_server, "mode"},
    {"rtl", cmd_rtl,
     "rtl reg r [addr]\n"
     "rtl reg w [addr] [val]   -- [addr] and [val] are in hex\n"
     "rtl vlan set [vid] [membermask] [untagmask] [fid]\n"
     "rtl vlan get [vid]\t-- [membermask] [untagmask] are in hex\n"
     "rtl pvid set [port] [pvid] [priority]\n"
     "rtl pvid get [port]\n"
     "rtl port get [port]\n"
     "rtl port set [port] [up/down] [auto/force] [10/100/1000] [F/H]\n"
     "rtl mirror set [dst_port] [src_rxmsk] [src_txmsk] [port_iso]\n"
     "rtl mirror get\t--\t[src_rxmsk] [src_txmsk] are in hex, port_iso: en/dis \n"
     "rtl acl add/del mac_value mac_mask smac/dmac port_value port_mask action\n"
     "rtl mib get/reset port/global [port]\n"
     "rtl phy r/w addr [val] -- addr and val in hex \n"
     "rtl rate set/get ingress/egress [port] [rate] - [rate] unit is 1 kbps \n"
     "rtl acl_etype add/del [etype] [portmask] - parameter in hex mode\n"
     "rtl delay set/get [port] [tx] [rx]\n"
     "rtl dump table\n"
     "rtl clear table\n"
     "rtl switch id\n"},
    {"lvrule", cmd_usage_only, "add del list rsa"},
    {"shibie", cmd_usage_only, "qosparm_set qosparm_get tj_get sj_conf\n"},
    {"radiusset", cmd_usage_only, "type( not=0 kelvo=1 other=2) get_user auth_mode"},
    {"radiusget", cmd_usage_only, " "},
    {"pingfast", cmd_usage_only, "fast_en tracert_en fip dns"},
    {"home_page", cmd_usage_only, "set get"},
    {"pppoe_br", cmd_pppoe_br, "set get more_add more_del more_get vlanid_list mac_dev_list"},
    {"ver_info", cmd_usage_only, ""},
    {"ver_flag", cmd_usage_only, ""},
    {"spzn", cmd_spzn, "set get"},
    {"vlan", cmd_usage_only, "set get list"},
    {"ppp_fast", cmd_ppp_fast, "set get"},
    {"bridge", cmd_usage_only, "set get mac_show"},
    {"x86_lan_vlan", cmd_usage_only, "en[0/1]"},
    {"hictlist_show", cmd_hictlist_show, "set get"},
    {"param", cmd_param, "erase"},
    {"syslog", cmd_syslog, "type_id data"},
    {"router_domain", cmd_usage_only, "set get"},
    {"lan_mac", cmd_usage_only, "set get"},
    {"pppoe_group", cmd_pppoe_group, "add del list speed_set"},
    {"fls", cmd_fls, ""},
    {"dns_more", cmd_usage_only, "hitype dnswan dnstype dnstype_item dnswan_rule opt dnsips dnssb"},
    {"dns_more_check", cmd_usage_only, "restart"},
    {"usblog", cmd_usblog, "save"},
    {"sj", cmd_sj, "set/get en[0/1] info_en ct_num url_num qq_num mail_num bbs_num"},
    {"sj2", cmd_sj2,
     "set/get en[0/1] ct_num qq_num mail_num httpget_num post_num post_len\n"
     " httpget_info\n"
     " post_info_get\n"
     " zhanghao_get\n"
     " ctinfo_get\n"
     " mail_get\n"
     " mem"},
    {"macuser", cmd_macuser, "set/get/list/mac_del/id_del"},
    {"ospfv3", cmd_ospfv3, "dev add/del/delall"},
    {"ospf", cmd_ospf, "subnet add/del/delall"},
    {"rip", cmd_rip, "subnet add/del/delall"},
    {"ripng", cmd_ripng, "dev add/del/delall"},
    {"ipv6", cmd_ipv6, "router add/del/info"},
    {"zebra", cmd_zebra, "check_log"},
    {"rssi", cmd_rssi, "get"},
    {"usb_acc", cmd_usage_only, "en ip mac"},
    {"ip_options_srr", cmd_ip_options_srr, "set get"},
    {"vek_netlink", cmd_vek_netlink, " register pid\n unregister pid\n list"},
    {"led", cmd_led, "on/off"},
    {"turn_phy", cmd_turn_phy, "on|off"},
    {"igmp", cmd_igmp, "mode show debug"},
    {"skb_delay", cmd_skb_delay, "set get"},
    {"alg", cmd_alg, "set get"},
    {"ip_group", cmd_usage_only, "list"},
    {"user_group", cmd_usage_only, "list"},
    {"zentrik_plugin", cmd_zentrik_plugin, "set get clean filename"},
    {"watchdog", cmd_watchdog, "start stop ping"},
    {nullptr, nullptr, nullptr},
};
// clang-format on

namespace {

int cmd_help(int, char**, const CommandEntry*) {
  for (const CommandEntry* row = kCommandTable; row->name != nullptr; ++row) {
    print("%s\t%s\n", row->name, row->usage);
  }
  return 0;
}

}  // namespace

int run_command(int argc, char** argv) {
  if (argc < 2) {
    cmd_help(argc, argv, nullptr);
    return 1;
  }
  for (const CommandEntry* row = kCommandTable; row->name != nullptr; ++row) {
    if (strcmp(argv[1], row->name) != 0) continue;
    if (row->handler == nullptr) {
      print_error("%s is no fun\n", row->name);
      return 1;
    }
    return row->handler(argc, argv, row);
  }
  print_error("no order,please help\n");
  return 1;
}
