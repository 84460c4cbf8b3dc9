// The DHCP server of a scenario: leases, and the counters that only packets move.
#include "records/dhcp.h"

#include "lab/sections.h"
#include "records/order.h"
#include "state/settings.h"

namespace {

constexpr const char* kDropped = "drop_num";

// "age": for how many seconds the host has had it. It stays that old, as if it were renewed time and again.
void load_lease(Store& store, const Node& node) {
  DhcpLease lease = {};
  lease.state = 1;
  uint64_t age = 0;
  read_record(node, lease, {"ip", "mac", "in_dev", "lease"},
              [&age](const std::string& name, const Node& value) {
                if (name == "start") value.fail("unknown member");
                if (name == "age") read_value(value, age);
                return name == "age";
              });
  if (store.execute("INSERT OR IGNORE INTO dhcp_lease VALUES"
                    "  (:ip, :mac, :hostname, :in_dev, :state, :type, :lease, :age)",
                    lease, Column{"age", age}) == 0) {
    node.fail("a second lease of this ip");
  }
}

void load_leases(Store& store, const Node& node) {
  node.each_element([&store](const Node& element) { load_lease(store, element); });
}

void clear_leases(Store& store) { store.execute("DELETE FROM dhcp_lease"); }

int64_t count_leases(Store& store) { return store.number("SELECT count(*) FROM dhcp_lease"); }

struct PoolCounters {
  char dev[16];
  uint32_t rcv;
  uint32_t send;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("rcv", r.rcv), field("send", r.send);
  }
};

void load_counters(Store& store, const Node& node) {
  node.each_member([&store](const std::string& name, const Node& value) {
    if (name == kDropped) {
      set_setting(store, kModuleDhcp, kDropped, static_cast<uint32_t>(value.number(0, UINT32_MAX)));
    } else if (name == "pools") {
      value.each_element([&store](const Node& element) {
        PoolCounters counters = {};
        read_record(element, counters, {"dev"});
        store.put("dhcp_counter", counters);
      });
    } else {
      value.fail("unknown member");
    }
  });
}

void clear_counters(Store& store) {
  store.execute("DELETE FROM setting WHERE module = ? AND name = ?", kModuleDhcp, std::string_view(kDropped));
  store.execute("DELETE FROM dhcp_counter");
}

int64_t count_counters(Store& store) { return store.number("SELECT count(*) FROM dhcp_counter"); }

}  // namespace

const Section kLeasesSection = {"leases", load_leases, clear_leases, count_leases};
const Section kDhcpSection = {"dhcp", load_counters, clear_counters, count_counters};
