// The sections of the host table: hosts with their connections, the third table, the run counters.
#include "lab/hosts.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <utility>

#include "lab/sections.h"
#include "modules/host.h"
#include "records/host.h"
#include "records/order.h"
#include "state/settings.h"

namespace {

// clang-format off
// "age": for how many seconds the host has been known; "idle": since when it has been silent.
constexpr Field kHostFields[] = {
    {"ip", AT(HostEntry, ip), Field::kAddress, true},
    {"local_mac", AT(HostEntry, local_mac), Field::kMac, true},
    {"hostname", AT(HostEntry, hostname), Field::kText},
    {"devname", AT(HostEntry, devname), Field::kText},
    {"age", AT(HostEntry, creat_tm), Field::kNumber},
    {"idle", AT(HostEntry, last_tm), Field::kNumber},
    {"flag", AT(HostEntry, flag), Field::kNumber},
    {"arp_ip", AT(HostEntry, arp_ip), Field::kIp4},
    {"local_ip", AT(HostEntry, local_ip), Field::kIp4},
    {"real_mac", AT(HostEntry, real_mac), Field::kMac},
    {"sp_up", AT(HostEntry, sp_up), Field::kNumber},
    {"sp_down", AT(HostEntry, sp_down), Field::kNumber},
    {"up_bytes", AT(HostEntry, up_bytes), Field::kNumber},
    {"up_packets", AT(HostEntry, up_packets), Field::kNumber},
    {"down_bytes", AT(HostEntry, down_bytes), Field::kNumber},
    {"down_packets", AT(HostEntry, down_packets), Field::kNumber},
    {"speed_limit_up", AT(HostEntry, speed_limit_up), Field::kSigned},
    {"speed_limit_down", AT(HostEntry, speed_limit_down), Field::kSigned},
    {"tmp_speed_limit_up", AT(HostEntry, tmp_speed_limit_up), Field::kSigned},
    {"tmp_speed_limit_down", AT(HostEntry, tmp_speed_limit_down), Field::kSigned},
    {"block", AT(HostEntry, block), Field::kNumber},
    {"no_snmp", AT(HostEntry, no_snmp), Field::kNumber},
    {"portal", AT(HostEntry, portal), Field::kNumber},
    {"portal_text", AT(HostEntry, portal_text), Field::kText},
    {"user_login_type", AT(HostEntry, user_login_type), Field::kNumber},
    {"user_card_type", AT(HostEntry, user_card_type), Field::kNumber},
    {"auto_jb", AT(HostEntry, auto_jb), Field::kNumber},
    {"typeid", AT(HostEntry, typeid_), Field::kNumber},
    {"typeid_user", AT(HostEntry, typeid_user), Field::kNumber},
    {"apidx", AT(HostEntry, apidx), Field::kNumber},
    {"5g", AT(HostEntry, is_5g), Field::kNumber},
    {"mr_id", AT(HostEntry, mr_id), Field::kNumber},
    {"pppdp_mr_id", AT(HostEntry, pppdp_mr_id), Field::kNumber},
    {"vlanid", AT(HostEntry, vlanid), Field::kNumber},
    {"third0", AT(HostEntry, third0), Field::kNumber},
    {"third1", AT(HostEntry, third1), Field::kNumber},
    {"third2", AT(HostEntry, third2), Field::kNumber},
    {"device_name", AT(HostEntry, device_name), Field::kText},
    {"user_agent", AT(HostEntry, user_agent), Field::kText},
    {"sys_type", AT(HostEntry, sys_type), Field::kNumber},
    {"pc_flag", AT(HostEntry, pc_flag), Field::kNumber},
    {"in_devname", AT(HostAiEntry, in_devname), Field::kText},
    {"vek_out_id", AT(HostAiEntry, vek_out_id), Field::kNumber},
    {"ssid", AT(HostAiEntry, ssid), Field::kText},
    {"ssid_out_id", AT(HostAiEntry, ssid_out_id), Field::kNumber},
};
static_assert(offsetof(HostAiEntry, host) == 0);

constexpr Field kConnectionFields[] = {
    {"far_ip", AT(HostConnection, far_ip), Field::kAddress, true},
    {"protocol", AT(HostConnection, protocol), Field::kNumber, true},
    {"in_port", AT(HostConnection, in_port), Field::kPort},
    {"far_port", AT(HostConnection, far_port), Field::kPort},
    {"id", AT(HostConnection, id), Field::kNumber},
    {"tm", AT(HostConnection, tm), Field::kNumber},
    {"name", AT(HostConnection, name), Field::kText},
    {"packets_up", AT(HostConnection, packets_up), Field::kNumber},
    {"packets_down", AT(HostConnection, packets_down), Field::kNumber},
    {"s_up", AT(HostConnection, s_up), Field::kNumber},
    {"s_down", AT(HostConnection, s_down), Field::kNumber},
    {"sz_up", AT(HostConnection, sz_up), Field::kNumber},
    {"sz_down", AT(HostConnection, sz_down), Field::kNumber},
    {"z_up", AT(HostConnection, z_up), Field::kNumber},
    {"z_down", AT(HostConnection, z_down), Field::kNumber},
};

constexpr Field kThirdFields[] = {
    {"ip", AT(ThirdEntry, ip), Field::kAddress, true},
    {"mac", AT(ThirdEntry, mac), Field::kMac, true},
    {"age", AT(ThirdEntry, creat_tm), Field::kNumber},
    {"clt_installed", AT(ThirdEntry, clt_installed), Field::kNumber},
    {"device_type", AT(ThirdEntry, device_type), Field::kNumber},
};

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

int64_t count_hosts(Store& store) { return store.number("SELECT count(*) FROM host"); }

void load_hosts(Store& store, const Node& node) {
  node.each_element([&store](const Node& element) { load_host(store, element); });
  if (count_hosts(store) > kMaxHosts) {
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

int64_t count_third(Store& store) { return store.number("SELECT count(*) FROM host_third"); }

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

int64_t count_counters(Store& store) {
  int64_t count = 0;
  for (const HostCounter& counter : kHostCounters) {
    count += store.number("SELECT count(*) FROM setting WHERE module = ? AND name = ?", kModuleHost,
                          std::string_view(counter.name));
  }
  return count;
}

}  // namespace

const Section kHostsSection = {"hosts", load_hosts, clear_hosts, count_hosts};
const Section kThirdSection = {"third", load_third, clear_third, count_third};
const Section kCountersSection = {"counters", load_counters, clear_counters, count_counters};

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
