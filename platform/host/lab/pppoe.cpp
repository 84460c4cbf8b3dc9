// The PPPoE services of a scenario: packets counted, what probes find, the state of bridging, sessions'
// headers. The server's clients are in the accounts' sessions.
#include "records/pppoe.h"

#include "lab/sections.h"
#include "records/ppp_fast.h"
#include "records/pppoe_br.h"

namespace {

constexpr int kMaxMacs = 2048;  // the list of them is not longer

struct CounterFacts {
  PppoeServerConfig config;

  static constexpr void each_field(auto& r, auto&& field) {
    field("rcv_padi", r.config.rcv_padi), field("send_pado", r.config.send_pado);
  }
};

struct ProbeFacts {
  PppoeProbe probe;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.probe.dev), field("status", r.probe.status), field("username", r.probe.username),
        field("userpwd", r.probe.userpwd), field("numbers", r.probe.numbers);
  }
};

struct OutFacts {
  PppoeBridgeOut out;

  static constexpr void each_field(auto& r, auto&& field) {
    field("name", r.out.name), field("state", r.out.state), field("times", r.out.times);
  }
};

struct SessionFacts {
  PppFastBinding binding;

  static constexpr void each_field(auto& r, auto&& field) {
    field("ppp_dev", r.binding.ppp_dev), field("header", r.binding.header), field("int", r.binding.int_flag);
  }
};

// Each element a row.
template <typename Facts>
void load_rows(Store& store, const Node& node, std::initializer_list<std::string_view> key,
               const char* insert) {
  node.each_element([&](const Node& element) {
    Facts facts = {};
    read_record(element, facts, key);
    if (store.execute(insert, facts) == 0) {
      element.fail("a second entry of this " + std::string(*key.begin()));
    }
  });
}

void load_pppoe(Store& store, const Node& node) {
  CounterFacts counters = {};
  read_record(node, counters, {}, [&store](const std::string& name, const Node& value) {
    if (name != "probes") return false;
    load_rows<ProbeFacts>(store, value, {"dev"},
                          "INSERT OR IGNORE INTO pppoe_probe_fact VALUES (:dev, :status, :username, :userpwd,"
                          "  :numbers_1, :numbers_2, :numbers_3, :numbers_4)");
    return true;
  });
  store.execute("INSERT INTO pppoe_fact VALUES (0, :rcv_padi, :send_pado)", counters);
}

void clear_pppoe(Store& store) {
  store.execute("DELETE FROM pppoe_fact");
  store.execute("DELETE FROM pppoe_probe_fact");
}

int64_t count_pppoe(Store& store) {
  return store.number("SELECT (SELECT count(*) FROM pppoe_fact) + (SELECT count(*) FROM pppoe_probe_fact)");
}

void load_bridge(Store& store, const Node& node) {
  node.each_member([&store](const std::string& name, const Node& value) {
    if (name == "out") {
      load_rows<OutFacts>(store, value, {"name"},
                          "INSERT OR IGNORE INTO pppoe_br_out_fact VALUES (:name, :state, :times)");
    } else if (name == "macs") {
      load_rows<PppoeBridgeMac>(store, value, {"lan_mac", "wan_mac"},
                                "INSERT OR IGNORE INTO pppoe_br_mac VALUES (:lan_mac, :wan_mac, :init_wanid,"
                                "  :flag, :changed, :set_wanid, :in_dev, :vlanid, :vlanid2, :ltm)");
      if (store.number("SELECT count(*) FROM pppoe_br_mac") > kMaxMacs) {
        value.fail("more than " + std::to_string(kMaxMacs) + " entries");
      }
    } else {
      value.fail("unknown member");
    }
  });
}

void clear_bridge(Store& store) {
  store.execute("DELETE FROM pppoe_br_out_fact");
  store.execute("DELETE FROM pppoe_br_mac");
}

int64_t count_bridge(Store& store) {
  return store.number(
      "SELECT (SELECT count(*) FROM pppoe_br_out_fact) + (SELECT count(*) FROM pppoe_br_mac)");
}

void load_sessions(Store& store, const Node& node) {
  load_rows<SessionFacts>(store, node, {"ppp_dev"},
                          "INSERT OR IGNORE INTO ppp_fast_fact VALUES (:ppp_dev, :dst, :src, :ether_type,"
                          "  :ver_type, :code, :header_session_id, :length, :protocol, :int)");
}

void clear_sessions(Store& store) { store.execute("DELETE FROM ppp_fast_fact"); }

int64_t count_sessions(Store& store) { return store.number("SELECT count(*) FROM ppp_fast_fact"); }

}  // namespace

const Section kPppoeSection = {"pppoe", load_pppoe, clear_pppoe, count_pppoe};
const Section kPppoeBridgeSection = {"pppoe_br", load_bridge, clear_bridge, count_bridge};
const Section kPppFastSection = {"ppp_fast", load_sessions, clear_sessions, count_sessions};
