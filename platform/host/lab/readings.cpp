// What is measured in a scenario: how well wireless clients are heard, and what the control of speed by delay
// finds of its devices.
#include "lab/sections.h"
#include "records/host.h"
#include "records/qos.h"

namespace {

void load_signals(Store& store, const Node& node) {
  node.each_element([&store](const Node& element) {
    ClientSignal signal = {};
    read_record(element, signal, {"mac", "rssi"});
    if (store.execute("INSERT OR IGNORE INTO client_signal VALUES (:mac, :rssi)", signal) == 0) {
      element.fail("a second entry of this mac");
    }
  });
}

void clear_signals(Store& store) { store.execute("DELETE FROM client_signal"); }

int64_t count_signals(Store& store) { return store.number("SELECT count(*) FROM client_signal"); }

struct DelayFacts {
  QosDelayControl control;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.control.dev), field("tmp_ip", r.control.tmp_ip), field("up_max", r.control.up_max),
        field("down_max", r.control.down_max), field("up_set", r.control.up_set),
        field("down_set", r.control.down_set);
  }
};

void load_delays(Store& store, const Node& node) {
  node.each_element([&store](const Node& element) {
    DelayFacts facts = {};
    read_record(element, facts, {"dev"});
    if (store.execute("INSERT OR IGNORE INTO qos_delay_fact VALUES (:dev, :tmp_ip, :up_max, :down_max,"
                      "  :up_set, :down_set)",
                      facts) == 0) {
      element.fail("a second entry of this dev");
    }
  });
}

void clear_delays(Store& store) { store.execute("DELETE FROM qos_delay_fact"); }

int64_t count_delays(Store& store) { return store.number("SELECT count(*) FROM qos_delay_fact"); }

}  // namespace

const Section kSignalsSection = {"signals", load_signals, clear_signals, count_signals};
const Section kDelaysSection = {"delays", load_delays, clear_delays, count_delays};
