// What is plugged into the ports of the switch chip: a link as the scenario says, or an interface of Linux.
#include "lab/sections.h"
#include "linux/net.h"
#include "modules/switch_chip.h"

namespace {

void load_port(Store& store, const Node& node) {
  SwitchPortFacts facts = {};
  facts.speed = 2;
  facts.duplex = 1;
  uint32_t mbps = 1000;
  bool has_facts = false;
  read_record(node, facts, {"port"}, [&](const std::string& name, const Node& value) {
    if (name != "port" && name != "dev") has_facts = true;
    if (name == "speed") mbps = static_cast<uint32_t>(value.number(0, UINT16_MAX));
    return name == "speed";
  });
  const auto* speed = std::ranges::find(kSwitchSpeeds, mbps);
  if (speed == std::end(kSwitchSpeeds) || mbps == 0) node.fail("the speed is 10, 100, 1000 or 2500");
  facts.speed = static_cast<uint8_t>(speed - kSwitchSpeeds);
  if (facts.port >= kSwitchPorts) node.fail("the ports are 0 to " + std::to_string(kSwitchPorts - 1));
  if (facts.link > 1 || facts.duplex > 1) node.fail("link and duplex are 0 or 1");
  if (facts.dev[0] != '\0' && (has_facts || !is_interface_name(text(facts.dev)))) {
    node.fail("dev is an interface of Linux, of which Linux tells all else");
  }
  if (store.number("SELECT count(*) FROM switch_port_fact WHERE port = ?", facts.port) != 0) {
    node.fail("a second entry of this port");
  }
  store.put("switch_port_fact", facts);
}

void load_ports(Store& store, const Node& node) {
  node.each_element([&store](const Node& element) { load_port(store, element); });
}

void clear_ports(Store& store) {
  store.execute("DELETE FROM switch_port_fact");
  store.execute("DELETE FROM switch_counter_reset");
}

int64_t count_ports(Store& store) { return store.number("SELECT count(*) FROM switch_port_fact"); }

}  // namespace

const Section kSwitchPortsSection = {"switch_ports", load_ports, clear_ports, count_ports};
