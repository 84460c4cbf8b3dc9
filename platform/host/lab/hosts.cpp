// The sections of the host table: hosts with their connections, the third table, the run counters.
#include "lab/hosts.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <utility>

#include "lab/sections.h"
#include "modules/host.h"
#include "order/order_records.h"
#include "settings.h"
#include "traffic/hi_records.h"

namespace {

// clang-format off
#define AT(record, field) offsetof(record, field), sizeof(record::field)

// "age": for how many seconds the host has been known; "idle": since when it has been silent.
constexpr Field kHostFields[] = {
    {"ip", Field::kAddress, AT(HostEntry, ip), true},
    {"local_mac", Field::kMac, AT(HostEntry, local_mac), true},
    {"hostname", Field::kText, AT(HostEntry, hostname)},
    {"devname", Field::kText, AT(HostEntry, devname)},
    {"age", Field::kNumber, AT(HostEntry, creat_tm)},
    {"idle", Field::kNumber, AT(HostEntry, last_tm)},
    {"flag", Field::kNumber, AT(HostEntry, flag)},
    {"arp_ip", Field::kIp4, AT(HostEntry, arp_ip)},
    {"local_ip", Field::kIp4, AT(HostEntry, local_ip)},
    {"real_mac", Field::kMac, AT(HostEntry, real_mac)},
    {"sp_up", Field::kNumber, AT(HostEntry, sp_up)},
    {"sp_down", Field::kNumber, AT(HostEntry, sp_down)},
    {"up_bytes", Field::kNumber, AT(HostEntry, up_bytes)},
    {"up_packets", Field::kNumber, AT(HostEntry, up_packets)},
    {"down_bytes", Field::kNumber, AT(HostEntry, down_bytes)},
    {"down_packets", Field::kNumber, AT(HostEntry, down_packets)},
    {"speed_limit_up", Field::kSigned, AT(HostEntry, speed_limit_up)},
    {"speed_limit_down", Field::kSigned, AT(HostEntry, speed_limit_down)},
    {"tmp_speed_limit_up", Field::kSigned, AT(HostEntry, tmp_speed_limit_up)},
    {"tmp_speed_limit_down", Field::kSigned, AT(HostEntry, tmp_speed_limit_down)},
    {"block", Field::kNumber, AT(HostEntry, block)},
    {"no_snmp", Field::kNumber, AT(HostEntry, no_snmp)},
    {"portal", Field::kNumber, AT(HostEntry, portal)},
    {"portal_text", Field::kText, AT(HostEntry, portal_text)},
    {"user_login_type", Field::kNumber, AT(HostEntry, user_login_type)},
    {"user_card_type", Field::kNumber, AT(HostEntry, user_card_type)},
    {"auto_jb", Field::kNumber, AT(HostEntry, auto_jb)},
    {"typeid", Field::kNumber, AT(HostEntry, typeid_)},
    {"typeid_user", Field::kNumber, AT(HostEntry, typeid_user)},
    {"apidx", Field::kNumber, AT(HostEntry, apidx)},
    {"5g", Field::kNumber, AT(HostEntry, is_5g)},
    {"mr_id", Field::kNumber, AT(HostEntry, mr_id)},
    {"pppdp_mr_id", Field::kNumber, AT(HostEntry, pppdp_mr_id)},
    {"vlanid", Field::kNumber, AT(HostEntry, vlanid)},
    {"third0", Field::kNumber, AT(HostEntry, third0)},
    {"third1", Field::kNumber, AT(HostEntry, third1)},
    {"third2", Field::kNumber, AT(HostEntry, third2)},
    {"device_name", Field::kText, AT(HostEntry, device_name)},
    {"user_agent", Field::kText, AT(HostEntry, user_agent)},
    {"sys_type", Field::kNumber, AT(HostEntry, sys_type)},
    {"pc_flag", Field::kNumber, AT(HostEntry, pc_flag)},
    {"in_devname", Field::kText, AT(HostAiEntry, in_devname)},
    {"vek_out_id", Field::kNumber, AT(HostAiEntry, vek_out_id)},
    {"ssid", Field::kText, AT(HostAiEntry, ssid)},
    {"ssid_out_id", Field::kNumber, AT(HostAiEntry, ssid_out_id)},
};
static_assert(offsetof(HostAiEntry, host) == 0);

constexpr Field kConnectionFields[] = {
    {"far_ip", Field::kAddress, AT(HostConnection, far_ip), true},
    {"protocol", Field::kNumber, AT(HostConnection, protocol), true},
    {"in_port", Field::kPort, AT(HostConnection, in_port)},
    {"far_port", Field::kPort, AT(HostConnection, far_port)},
    {"id", Field::kNumber, AT(HostConnection, id)},
    {"tm", Field::kNumber, AT(HostConnection, tm)},
    {"name", Field::kText, AT(HostConnection, name)},
    {"packets_up", Field::kNumber, AT(HostConnection, packets_up)},
    {"packets_down", Field::kNumber, AT(HostConnection, packets_down)},
    {"s_up", Field::kNumber, AT(HostConnection, s_up)},
    {"s_down", Field::kNumber, AT(HostConnection, s_down)},
    {"sz_up", Field::kNumber, AT(HostConnection, sz_up)},
    {"sz_down", Field::kNumber, AT(HostConnection, sz_down)},
    {"z_up", Field::kNumber, AT(HostConnection, z_up)},
    {"z_down", Field::kNumber, AT(HostConnection, z_down)},
};

constexpr Field kThirdFields[] = {
    {"ip", Field::kAddress, AT(ThirdEntry, ip), true},
    {"mac", Field::kMac, AT(ThirdEntry, mac), true},
    {"age", Field::kNumber, AT(ThirdEntry, creat_tm)},
    {"clt_installed", Field::kNumber, AT(ThirdEntry, clt_installed)},
    {"device_type", Field::kNumber, AT(ThirdEntry, device_type)},
};

#undef AT
// clang-format on

uint64_t moment(uint64_t seconds_ago) {
  const auto present = static_cast<uint64_t>(time(nullptr));
  return seconds_ago < present ? present - seconds_ago : 0;
}

template <typename Record>
const uint8_t (&bytes_of(const Record& record))[sizeof(Record)] {
  return reinterpret_cast<const uint8_t(&)[sizeof(Record)]>(record);
}

void load_host(Store& store, const Node& node) {
  HostAiEntry entry = {};
  std::optional<Node> connections;
  read_fields(node, kHostFields, &entry, [&connections](const std::string& name, const Node& value) {
    if (name != "connections") return false;
    connections.emplace(value);
    return true;
  });
  if (store.number("SELECT count(*) FROM host WHERE ip = ?", entry.host.ip) != 0) {
    node.fail("a second host of this ip");
  }
  add_host(store, entry);
  if (!connections) return;
  connections->each_element([&](const Node& element) {
    HostConnection connection = {};
    read_fields(element, kConnectionFields, &connection);
    store.execute("INSERT INTO host_connection (host, entry) VALUES (?, ?)", entry.host.ip,
                  bytes_of(connection));
  });
}

void clear_hosts(Store& store) {
  // What orders have set for them goes with them.
  store.execute("DELETE FROM host_real_mac WHERE ip IN (SELECT ip FROM host)");
  store.execute("DELETE FROM host_redirect WHERE ip IN (SELECT ip FROM host)");
  store.execute("DELETE FROM host");
}

void load_hosts(Store& store, const Node& node) {
  node.each_element([&store](const Node& element) { load_host(store, element); });
  if (store.number("SELECT count(*) FROM host") > kMaxHosts) {
    node.fail("more than " + std::to_string(kMaxHosts) + " hosts");
  }
}

void load_third(Store& store, const Node& node) {
  node.each_element([&store](const Node& element) {
    ThirdEntry entry = {};
    read_fields(element, kThirdFields, &entry);
    if (store.execute("INSERT OR IGNORE INTO host_third VALUES (?, ?, ?, ?, ?)", entry.ip, entry.mac,
                      moment(entry.creat_tm), entry.clt_installed, entry.device_type) == 0) {
      element.fail("a second entry of this ip");
    }
  });
}

void clear_third(Store& store) { store.execute("DELETE FROM host_third"); }

void load_counters(Store& store, const Node& node) {
  node.each_member([&store](const std::string& name, const Node& value) {
    const auto counter = std::ranges::find(kHostCounters, name, &HostCounter::name);
    if (counter == std::end(kHostCounters)) value.fail("unknown counter");
    set_setting(store, kModuleHost, counter->name, static_cast<uint32_t>(value.number(0, UINT32_MAX)));
  });
}

void clear_counters(Store& store) {
  for (const HostCounter& counter : kHostCounters) {
    store.execute("DELETE FROM setting WHERE module = ? AND name = ?", kModuleHost,
                  std::string_view(counter.name));
  }
}

}  // namespace

const Section kHostsSection = {"hosts", load_hosts, clear_hosts, "SELECT count(*) FROM host"};
const Section kThirdSection = {"third", load_third, clear_third, "SELECT count(*) FROM host_third"};
const Section kCountersSection = {
    "counters", load_counters, clear_counters,
    "SELECT count(*) FROM setting WHERE module = 13 AND name NOT LIKE 'ageing%'"};

void add_host(Store& store, const HostAiEntry& made) {
  HostAiEntry entry = made;
  HostEntry& host = entry.host;
  host.creat_tm = moment(host.creat_tm);
  const uint64_t idle = std::exchange(host.last_tm, 0);
  // An IPv4 host that nothing else is said of answers ARP for its own address.
  const uint32_t family = 4;
  if (host.arp_ip == 0 && memcmp(host.ip, &family, sizeof family) == 0) {
    memcpy(&host.arp_ip, host.ip + sizeof family, sizeof host.arp_ip);
  }
  store.execute("INSERT INTO host (ip, idle, entry) VALUES (?, ?, ?)", host.ip, idle, bytes_of(entry));
}
