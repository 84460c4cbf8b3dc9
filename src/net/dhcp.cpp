// dhcp, dhcp_reserve and dhcp_not_assign: the DHCP server's pools, its leases, and who gets which address.
#include "platform/dhcp.h"

#include <algorithm>

#include "args/print.h"
#include "net/commands.h"
#include "order/order.h"
#include "platform/list.h"
#include "records/dhcp.h"
#include "records/list.h"

namespace {

// ---- Pools ----

// The first address of each of a list's first three ranges. Returns how many there are.
int take_addresses(HostIp4 (&addresses)[3], const char* list) {
  V4Range ranges[3];
  // What is returned may be how many there are in the list.
  const int count = std::min(get_iplist_str_max(ranges, list, 3), 3);
  for (int i = 0; i < count; ++i) addresses[i] = ranges[i].first;
  return count;
}

// A pool is one only where all four lists have something for it.
void take_pools(DhcpSettings<HostIp4>& settings, const Args& args) {
  HostIp4(*const lists[])[3] = {&settings.gwaddr, &settings.snmask, &settings.start_addr, &settings.end_addr};
  int count = 3;
  int word = 5;
  for (auto* list : lists) count = std::min(count, take_addresses(*list, args[word++]));
  for (auto* list : lists) std::fill(*list + count, std::end(*list), HostIp4{});
}

// From the first word up to the domain name, and the two words that are the last of either form.
bool parse_pool(DhcpPool<HostIp4>& pool, const Args& args, int option43_word) {
  DhcpSettings<HostIp4>& settings = pool.settings;
  args.take(3, settings.dev, settings.srv_ip);
  if (settings.srv_ip.value == 0) {
    print_error(" srv_ip err ! %s\n", args[4]);
    return false;
  }
  take_pools(settings, args);
  settings.leasetime = args.number(9);
  take_addresses(settings.dnss, args[10]);
  copy_text(settings.domain_name, args[11]);
  DhcpOption43& option43 = pool.option43;
  option43.length =
      static_cast<uint32_t>(string_to_hex(args[option43_word], option43.bytes, sizeof option43.bytes));
  char* filters[3];
  const int count = split_string(args.get(option43_word + 1), ',', filters, 3);
  for (int i = 0; i < count; ++i) settings.filter[i] = J_atoi(filters[i]);
  return true;
}

bool parse_typed_pool(DhcpPoolRequest& request, const Args& args) {
  request.dhcp_type = args.is(12, "admin") ? 1 : 0;
  return parse_pool(request.pool, args, 13);
}

bool parse_new_pool(DhcpNewPool& request, const Args& args) { return parse_pool(request.pool, args, 12); }

bool parse_pool_name(DhcpPoolRequest& request, const Args& args) {
  copy_text(request.pool.settings.dev, args[3]);
  return true;
}

void print_addresses(const char* title, const Ip4 (&addresses)[3]) {
  print("%s", title);
  for (const Ip4& address : addresses) {
    if (address.value != 0) print("%s,", address);
  }
}

void print_pool(const DhcpPoolAnswer& answer) {
  const DhcpSettings<Ip4>& settings = answer.pool.settings;
  const DhcpOption43& option43 = answer.pool.option43;
  print("dev: %s dhcp_type: %s srv_ip: %s\n", settings.dev, answer.dhcp_type != 0 ? "admin" : "base",
        settings.srv_ip);
  print_addresses("\n gwaddr: ", settings.gwaddr);
  print_addresses("\n snmask: ", settings.snmask);
  print("\nleasetime: %d  domain_name: %s srv_mac: %s\n", settings.leasetime, settings.domain_name,
        answer.pool.srv_mac);
  print_addresses("\n dns: ", settings.dnss);
  print("\n ips: ");
  for (int i = 0; i < 3; ++i) {
    if (settings.start_addr[i].value != 0) print("%s-%s,", settings.start_addr[i], settings.end_addr[i]);
  }
  print("\n filter: ");
  for (int i = 0; i < 3; ++i) {
    if (settings.start_addr[i].value != 0) print("%u,", settings.filter[i]);
  }
  print("\n option43: ");
  const uint32_t length = std::min(option43.length, uint32_t{sizeof option43.bytes});
  for (uint32_t i = 0; i < length; ++i) print("%02X", option43.bytes[i]);
  print("\n rcv:%u,send:%u\n\n", answer.pool.rcv, answer.pool.send);
}

// ---- Leases, the binding switch and the defence against other servers ----

void print_leases(const Answer& answer) {
  print("num: %d\n", answer.get<int32_t>(kListCountOffset));
  print("ipaddr  mac  \t  lease start state type hostname  in_dev\n\n");
  for (const DhcpLease& lease : answer.list<DhcpLease>()) {
    print("%s  %s  ", lease.ip, lease.mac);
    print(" %lu  %lu  %d  %d  %s  %s\n", lease.lease, lease.start, lease.state, lease.type, lease.hostname,
          lease.in_dev);
  }
}

bool parse_bind(DhcpBind& bind, const Args& args) {
  if (args.is(3, "get")) return true;
  bind.operation = 1;
  bind.value = args.number(4);
  return args.is(3, "set") && args.count() > 4;
}

void print_bind(const DhcpBind& bind) { print("state:%d\n\n\n", bind.value); }

bool parse_defense(DhcpDefense& defense, const Args& args) {
  defense.en = args.number(3);
  char* words[kMaxTrustedMacs];
  const int count = split_string(args.get(4), ',', words, kMaxTrustedMacs);
  auto* const slots = reinterpret_cast<DhcpTrustedMac*>(&defense + 1);
  for (int i = 0; i < count; ++i) {
    if (StrToMac(words[i], &slots[defense.mac_num].mac) == 0) ++defense.mac_num;
  }
  return true;
}

void print_defense(const Answer& answer) {
  const auto defense = answer.get<DhcpDefense>(0);
  print("en:%d,drop_num:%d,mac_num:%d\n", defense.en, defense.drop_num, defense.mac_num);
  for (const DhcpTrustedMac& slot : answer.entries<DhcpTrustedMac>(sizeof defense, defense.mac_num)) {
    print("%s,", slot.mac);
  }
  print("\n");
}

// The platform library says what went wrong; callers have always had the usage and its status from these.
int start_server(const Args&, const CommandEntry* entry) {
  start_dhcp_server();
  return print_usage(entry);
}

int stop_server(const Args&, const CommandEntry* entry) {
  stop_dhcp_server();
  return print_usage(entry);
}

int restart_server(const Args& args, const CommandEntry* entry) {
  stop_dhcp_server();
  return start_server(args, entry);
}

// ---- Reservations and addresses that are not handed out ----

bool parse_reservation(DhcpReservation& reservation, const Args& args) {
  args.take(3, reservation.dev, reservation.mac, reservation.ip);
  return reservation.ip.value != 0;
}

void print_reservations(const Answer& answer) {
  const auto count = answer.get<int32_t>(kDhcpCountOffset);
  print("num: %d\nipaddr  mac \n\n", count);
  for (const DhcpReservation& entry : answer.entries<DhcpReservation>(kDhcpEntriesOffset, count)) {
    print("%s  %s   \n", entry.ip, entry.mac);
  }
}

bool parse_exclusion(DhcpExclusion& exclusion, const Args& args) {
  args.take(3, exclusion.dev, exclusion.ip, exclusion.netmask);
  return exclusion.ip.value != 0;
}

void print_exclusions(const Answer& answer) {
  const auto count = answer.get<int32_t>(kDhcpCountOffset);
  print("num: %d\nipaddr \n", count);
  int number = 0;
  for (const DhcpExclusion& entry : answer.entries<DhcpExclusion>(kDhcpEntriesOffset, count)) {
    print("  %d: ", ++number);
    if (entry.netmask.value == 0) {
      print("%s\n", entry.ip);
    } else if (is_mask(ntohl(entry.netmask.value))) {
      print("%s/%s\n", entry.ip, entry.netmask);
    } else {
      print("%s-%s\n", entry.ip, entry.netmask);
    }
  }
}

// ---- Tables ----

// clang-format off
constexpr SubCommand kDhcpServer[] = {
    handled("start", start_server),
    handled("stop", stop_server),
    handled("restart", restart_server),
};

constexpr SubCommand kDhcp[] = {
    {"add", kModuleDhcp, kDhcpAdd, 1024, sizeof(DhcpPoolRequest), 15, "dev srv_ip gwaddr snmask start_addr end_addr leasetime dnss domain_name dhcp_type option43 filter", parse_as<parse_typed_pool>, nullptr},
    {"new_add", kModuleDhcp, kDhcpNewAdd, 10240, sizeof(DhcpNewPool), 14, "dev srv_ip gwaddr snmask start_addr end_addr leasetime dnss domain_name option43 filter", parse_as<parse_new_pool>, nullptr},
    {"del", kModuleDhcp, kDhcpDel, 1024, sizeof(DhcpPoolRequest), 4, "dev", parse_as<parse_pool_name>, nullptr},
    {"show", kModuleDhcp, kDhcpShow, 10240, sizeof(DhcpPoolAnswer), 4, "dev", parse_as<parse_pool_name>, print_as<print_pool>},
    {"member_list", kModuleDhcp, kDhcpMemberList, 40480, 40000, 4, "dev", parse_words<&DhcpLeaseFilter::dev>, print_as<print_leases>},
    {"bind", kModuleDhcp, kDhcpBind, 1024, sizeof(DhcpBind), 4, "set/get [1/0]", parse_as<parse_bind>, print_as<print_bind>},
    {"defense_set", kModuleDhcp, kDhcpDefenseSet, 40480, 40000, 5, "en mac", parse_as<parse_defense>, nullptr},
    {"defense_get", kModuleDhcp, kDhcpDefenseGet, 40480, 40000, 0, "", nullptr, print_as<print_defense>},
    group("server", kDhcpServer),
};

constexpr SubCommand kDhcpReserve[] = {
    {"add", kModuleDhcp, kDhcpReserveAdd, 1024, sizeof(DhcpReservation), 6, "dev mac ip", parse_as<parse_reservation>, nullptr},
    // No MAC at all goes out as zero: the module finds nothing to delete.
    {"del", kModuleDhcp, kDhcpReserveDel, 1024, sizeof(DhcpReservation), 5, "dev mac", parse_words<&DhcpReservation::dev, &DhcpReservation::mac>, nullptr},
    {"delall", kModuleDhcp, kDhcpReserveDelAll, 1024, sizeof(DhcpReservation), 4, "dev", parse_words<&DhcpReservation::dev>, nullptr},
    {"show", kModuleDhcp, kDhcpReserveShow, 40480, 40000, 4, "dev", parse_words<&DhcpReservation::dev>, print_as<print_reservations>},
};

constexpr SubCommand kDhcpNotAssign[] = {
    {"add", kModuleDhcp, kDhcpNotAssignAdd, 1024, sizeof(DhcpExclusion), 6, "dev ip netmask", parse_as<parse_exclusion>, nullptr},
    {"del", kModuleDhcp, kDhcpNotAssignDel, 1024, sizeof(DhcpExclusion), 6, "dev ip netmask", parse_as<parse_exclusion>, nullptr},
    {"delall", kModuleDhcp, kDhcpNotAssignDelAll, 1024, sizeof(DhcpExclusion), 4, "dev", parse_words<&DhcpExclusion::dev>, nullptr},
    {"show", kModuleDhcp, kDhcpNotAssignShow, 40480, 40000, 4, "dev", parse_words<&DhcpExclusion::dev>, print_as<print_exclusions>},
};
// clang-format on

}  // namespace

int cmd_dhcp(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kDhcp, argc, argv, entry);
}

int cmd_dhcp_reserve(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kDhcpReserve, argc, argv, entry);
}

int cmd_dhcp_not_assign(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kDhcpNotAssign, argc, argv, entry);
}
