// The sections of the host table: hosts with their connections, the third table, the run counters.
#include "lab/hosts.h"

#include <algorithm>
#include <optional>

#include "lab/sections.h"
#include "modules/host.h"
#include "records/host.h"
#include "records/order.h"
#include "state/settings.h"

namespace {

// Moments are told by how long ago they were: "age", for how many seconds something has been known; "idle",
// since when it has been silent.
bool is_moment(std::string_view name) { return name == "creat_tm" || name == "last_tm" || name == "del_tm"; }

template <typename Record>
const uint8_t (&bytes_of(const Record& record))[sizeof(Record)] {
  return reinterpret_cast<const uint8_t(&)[sizeof(Record)]>(record);
}

void load_host(Store& store, const Node& node) {
  HostAiEntry entry = {};
  std::optional<Node> connections;
  read_record(node, entry, {"ip", "local_mac"}, [&](const std::string& name, const Node& value) {
    if (is_moment(name)) value.fail("unknown member");
    if (name == "connections") {
      connections.emplace(value);
    } else if (name == "age") {
      read_value(value, entry.host.creat_tm);
    } else if (name == "idle") {
      read_value(value, entry.host.last_tm);
    } else {
      return false;
    }
    return true;
  });
  if (store.number("SELECT count(*) FROM host WHERE ip = ?", entry.host.ip) != 0) {
    node.fail("a second host of this ip");
  }
  add_host(store, entry);
  if (!connections) return;
  connections->each_element([&](const Node& element) {
    HostConnection connection = {};
    read_record(element, connection, {"far_ip", "protocol"});
    store.execute("INSERT INTO host_connection (host, entry) VALUES (?, ?)", entry.host.ip,
                  bytes_of(connection));
  });
}

void clear_hosts(Store& store) { store.execute("DELETE FROM host"); }

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
    read_record(element, entry, {"ip", "mac"}, [&entry](const std::string& name, const Node& value) {
      if (is_moment(name)) value.fail("unknown member");
      if (name == "age") read_value(value, entry.creat_tm);
      return name == "age";
    });
    if (store.execute("INSERT OR IGNORE INTO host_third (ip, mac, known, clt_installed, device_type)"
                      "  VALUES (:ip, :mac, :creat_tm, :clt_installed, :device_type)",
                      entry) == 0) {
      element.fail("a second entry of this ip");
    }
  });
}

void clear_third(Store& store) { store.execute("DELETE FROM host_third"); }

int64_t count_third(Store& store) { return store.number("SELECT count(*) FROM host_third"); }

void load_counters(Store& store, const Node& node) {
  if (Node::tells_members()) {
    for (const HostCounter& counter : kHostCounters)
      node.tell_member(counter.name, kind_of(uint32_t{}), false);
  }
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
  // An IPv4 host that nothing else is said of answers ARP for its own address.
  if (host.arp_ip.value == 0) host.arp_ip = ip4(host.ip);
  const uint8_t(&bytes)[sizeof entry] = bytes_of(entry);
  store.execute(
      "INSERT INTO host (ip, since, known, idle, entry) VALUES (:ip, present(), :creat_tm, :last_tm, :entry)",
      host, Column{"entry", std::vector<uint8_t>(bytes, bytes + sizeof bytes)});
}
