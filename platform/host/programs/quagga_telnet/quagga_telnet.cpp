// quagga_telnet: the routing client, which sets up FRR's daemons through vtysh. Its words are the protocol's
// and the section's number, an action, and what the action needs:
//
//   4 0 dev           add DEV AREA, del DEV AREA, delall, init
//   4 1 interface     mod DEV PASSIVE COST AGE HELLO PRI RETRANS, add DEV, del DEV, delall, init
//   4 2 parm          init
//   4 3 info          database, route, neighbor, interface
//   2 0 subnet        add SUBNET AREA, del SUBNET AREA, delall, init
//   2 1 interface     mod DEV IP PASSIVE AUTH PASSWORD COST AGE HELLO PRI RETRANS NETWORK,
//                     add DEV, del DEV, delall, init
//   2 2 parm          init: with the id that "vek ospf router_id" has set
//   2 3 vlink         add AREA ID HELLO RETRANS DELAY AGE AUTH PASSWORD, del AREA ID, delall, init
//   2 4 info          database, route, neighbor, interface
//   3 0 subnet        add SUBNET, del SUBNET, delall, init
//   3 1 keychain      add NAME KEY_ID KEY, del NAME, init
//   3 2 interface     mod DEV IP PASSIVE AUTH TYPE PASSWORD SPLIT SEND RECEIVE,
//                     add DEV, del DEV, delall, init
//   3 3 parm          init, delall
//   3 4 info          get
//   5 0 dev           add DEV, del DEV, delall, init
//   5 1 interface     mod DEV PASSIVE SPLIT, add DEV, del DEV, delall, init
//   5 2 parm          init, delall
//   5 3 info          get
//   1 0 router        add DST GW DEV, del DST GW DEV, info, init
//
// AUTH is none (0), text (1) or md5 (2), TYPE string (0) or keychain (1), SPLIT 0, 1 or 2 (with poisoned
// reverse), SEND and RECEIVE 1, 2 or "1 2", PASSIVE 0 or 1. An empty word is the default; an empty IP (or
// 0.0.0.0) all of the interface's addresses, an empty GW or DEV none. delall takes away all that the section
// has; so does init, and then starts the protocol.
#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <stdexcept>

#include "platform/order.h"
#include "programs/quagga_telnet/frr.h"
#include "programs/quagga_telnet/words.h"
#include "records/general.h"
#include "records/order.h"

namespace {

// ---- What the sections have ----

struct Section {
  int protocol;
  int number;
  const char* daemon;
  const char* process;   // the head of the protocol's own block; null: it has none
  const char* head;      // of the section's blocks, or its beginning where it ends in a blank
  const char* line;      // the beginning of its lines; null: those that no other section has
  const char* not_line;  // but not those
};

// clang-format off
constexpr Section kSections[] = {
    {4, 0, "ospf6d", "router ospf6", "interface ", "ipv6 ospf6 area ", nullptr},
    {4, 1, "ospf6d", "router ospf6", "interface ", "ipv6 ospf6 ", "ipv6 ospf6 area "},
    {4, 2, "ospf6d", "router ospf6", "router ospf6", nullptr, nullptr},
    {4, 3, "ospf6d", "router ospf6", nullptr, nullptr, nullptr},
    {2, 0, "ospfd", "router ospf", "router ospf", "network ", nullptr},
    {2, 1, "ospfd", "router ospf", "interface ", "ip ospf ", "ip ospf area "},
    {2, 2, "ospfd", "router ospf", "router ospf", nullptr, nullptr},
    {2, 3, "ospfd", "router ospf", "router ospf", "area ", nullptr},
    {2, 4, "ospfd", "router ospf", nullptr, nullptr, nullptr},
    {3, 0, "ripd", "router rip", "router rip", "network ", nullptr},
    {3, 1, "ripd", "router rip", "key chain ", nullptr, nullptr},
    {3, 2, "ripd", "router rip", "interface ", "ip rip ", nullptr},
    {3, 3, "ripd", "router rip", "router rip", nullptr, nullptr},
    {3, 4, "ripd", "router rip", nullptr, nullptr, nullptr},
    {5, 0, "ripngd", "router ripng", "router ripng", "network ", nullptr},
    {5, 1, "ripngd", "router ripng", "interface ", "ipv6 ripng ", nullptr},
    {5, 2, "ripngd", "router ripng", "router ripng", nullptr, nullptr},
    {5, 3, "ripngd", "router ripng", nullptr, nullptr, nullptr},
    {1, 0, "staticd", nullptr, "ipv6 route ", nullptr, nullptr},
};
// clang-format on

bool has_line(const Section& section, const std::string& line) {
  const std::string bare = without_no(line);
  if (section.line == nullptr) {
    return !bare.starts_with("network ") && !bare.starts_with("passive-interface ") && !is_vlink(bare) &&
           bare != "exit";
  }
  if (!bare.starts_with(section.line)) return false;
  if (section.line == std::string("area ")) return is_vlink(bare);
  return section.not_line == nullptr || !bare.starts_with(section.not_line);
}

Owns lines_of(const Section& section) {
  return [&section](const std::string& line) { return has_line(section, line); };
}
// Those that a modification sets: whatever else an interface has stays.
Owns set_lines_of(const Section& section) {
  return [&section](const std::string& line) {
    constexpr const char* kSet[] = {"authentication", "authentication-key",  "message-digest-key",
                                    "cost",           "dead-interval",       "hello-interval",
                                    "priority",       "retransmit-interval", "passive",
                                    "network",        "split-horizon",       "send",
                                    "receive"};
    const Words words = words_of(without_no(line));
    return has_line(section, line) && words.size() > 2 && std::ranges::find(kSet, words[2]) != std::end(kSet);
  };
}
Owns only(const std::string& line) {
  return [line](const std::string& each) { return each == line; };
}

bool is_passive(const std::string& line) { return line.starts_with("passive-interface "); }

// ---- The actions ----

void clear(const Section& section, const Words&) {
  const std::vector<Block> blocks = running().blocks;
  for (const Block& block : blocks) {
    const std::string& head = block.head;
    const bool is_prefix = std::string(section.head).ends_with(' ');
    if (is_prefix ? !head.starts_with(section.head) : head != section.head) continue;
    if (is_prefix && section.line == nullptr) {
      configure({"no " + head});  // the block is the entry
    } else {
      settle(head, lines_of(section), {});
    }
  }
  // Those of RIP and RIPng stand with the protocol.
  const bool has_interfaces = section.head == std::string("interface ");
  if (has_interfaces && section.protocol != 4) settle(section.process, is_passive, {});
}

void start_anew(const Section& section, const Words& words) {
  clear(section, words);
  if (section.process != nullptr) configure({section.process});
}

void end_process(const Section& section, const Words&) {
  if (has_block(section.process)) configure({std::string("no ") + section.process});
}

// The id that "vek ospf router_id" has set; 0.0.0.0: FRR chooses one.
void set_up_ospf(const Section& section, const Words&) {
  struct {
    OrderRecord header;
    OspfRouterId id;
  } order = {{kModuleGeneral, sizeof order, 0, kOspfRouterId}, {}};
  if (tesvel_order_opt_fun(&order, sizeof order) != 0 || order.header.result != 0) {
    refuse("the router id cannot be read");
  }
  Words wanted;
  char text[INET_ADDRSTRLEN];
  const char* const id = inet_ntop(AF_INET, &order.id.router_id, text, sizeof text);
  if (order.id.router_id.value != 0) wanted = {std::string("ospf router-id ") + id};
  configure({section.process});
  settle(section.process, lines_of(section), wanted);
}

void add_interface(const Section&, const Words& words) { configure({"interface " + device(words[0])}); }

void del_interface(const Section& section, const Words& words) {
  const std::string dev = device_name(words[0]);
  if (!has_block("interface " + dev)) refuse("no such entry");
  settle("interface " + dev, lines_of(section), {});
  if (section.protocol != 4) settle(section.process, only("passive-interface " + dev), {});
}

void set_passive(const Section& section, const std::string& dev, bool is_wanted) {
  const std::string line = "passive-interface " + dev;
  settle(section.process, only(line), is_wanted ? Words{line} : Words{});
}

// -- OSPFv3 --

void add_dev(const Section& section, const Words& words) {
  const std::string dev = device(words[0]);
  const std::string line = "ipv6 ospf6 area " + area(words[1]);
  configure({section.process});
  settle("interface " + dev, lines_of(section), {line});
}

void del_dev(const Section& section, const Words& words) {
  const std::string where = words[1].empty() ? "" : area(words[1]);
  take_away("interface " + device_name(words[0]), [&](const std::string& line) {
    return has_line(section, line) && (where.empty() || is_same_area(words_of(line)[3], where));
  });
}

// A neighbour would be lost before it could say hello again.
void check_age(const std::string& age, const std::string& hello) {
  const std::optional<uint32_t> after = number_of(age);
  const std::optional<uint32_t> every = number_of(hello);
  if (after && every && *after <= *every) refuse("neighbours age within one hello interval");
}

// The numbers that both versions of OSPF have for an interface; the ending stands behind each line.
void add_numbers(Words& lines, const std::string& begin, const std::string& end, const Words& words,
                 size_t first) {
  constexpr struct {
    const char* name;
    uint32_t least;
    uint32_t most;
  } kNumbers[] = {{"cost", 1, 65535},
                  {"dead-interval", 1, 65535},
                  {"hello-interval", 1, 65535},
                  {"priority", 0, 255},
                  {"retransmit-interval", 1, 65535}};
  check_age(words[first + 1], words[first + 2]);
  for (const auto& each : kNumbers) {
    const std::string& word = words[first++];
    if (word.empty()) continue;
    lines.push_back(begin + each.name + " ");
    lines.back() += number(each.name, word, each.least, each.most) + end;
  }
}

void mod_ospf6_interface(const Section& section, const Words& words) {
  const std::string dev = device(words[0]);
  Words lines;
  if (choice("passive", words[1], {"0", "1"}) == 1) lines.emplace_back("ipv6 ospf6 passive");
  add_numbers(lines, "ipv6 ospf6 ", "", words, 2);
  settle("interface " + dev, set_lines_of(section), lines);
}

// -- OSPF --

void add_ospf_subnet(const Section& section, const Words& words) {
  const std::string subnet = network(AF_INET, words[0]);
  const std::string where = area(words[1]);
  for (const std::string& line : owned(section.process, lines_of(section))) {
    const Words there = words_of(line);
    if (there[1] != subnet) continue;
    if (!is_same_area(there.back(), where)) refuse("subnet " + subnet + " is in area " + there.back());
    return;
  }
  configure({section.process, "network " + subnet + " area " + where});
}

void del_ospf_subnet(const Section& section, const Words& words) {
  const std::string subnet = network(AF_INET, words[0]);
  const std::string where = words[1].empty() ? "" : area(words[1]);
  take_away(section.process, [&](const std::string& line) {
    const Words there = words_of(line);
    return has_line(section, line) && there[1] == subnet &&
           (where.empty() || is_same_area(there.back(), where));
  });
}

// The lines of a mode and its password: they begin alike for interfaces and for virtual links.
void add_auth(Words& lines, const std::string& begin, const std::string& end, const std::string& mode_word,
              const std::string& password) {
  const size_t mode = auth_mode(mode_word);
  if (mode == kNoAuth) {
    if (!password.empty()) refuse("a password without authentication");
    return;
  }
  in_addr ip = {};
  if (inet_pton(AF_INET, password.c_str(), &ip) == 1)
    refuse_word("password", password);  // FRR reads an address
  const bool is_md5 = mode == kMd5Auth;
  lines.push_back(begin + "authentication" + (is_md5 ? " message-digest" : "") + end);
  lines.push_back(begin + (is_md5 ? "message-digest-key 1 md5 " : "authentication-key ") +
                  token("password", password, is_md5 ? 16 : 8) + end);
}

void mod_ospf_interface(const Section& section, const Words& words) {
  const std::string dev = device(words[0]);
  const std::string ip = address_of(dev, words[1]);
  const std::string end = ip.empty() ? "" : " " + ip;
  Words lines;
  if (choice("passive", words[2], {"0", "1"}) == 1) lines.push_back("ip ospf passive" + end);
  add_auth(lines, "ip ospf ", end, words[3], words[4]);
  add_numbers(lines, "ip ospf ", end, words, 5);
  if (!words[10].empty()) {
    static constexpr auto kNetworks =
        std::to_array<const char*>({"broadcast", "non-broadcast", "point-to-multipoint", "point-to-point"});
    if (std::ranges::find(kNetworks, words[10]) == kNetworks.end()) refuse_word("network", words[10]);
    lines.push_back("ip ospf network " + words[10]);
  }
  // Those of the same address, or of none; the kind of network has none.
  const Owns is_set = set_lines_of(section);
  settle(
      "interface " + dev,
      [&](const std::string& line) {
        if (!is_set(line)) return false;
        in_addr last = {};
        const bool has_ip = inet_pton(AF_INET, words_of(line).back().c_str(), &last) == 1;
        return line.starts_with("ip ospf network ") ||
               (has_ip ? line.ends_with(" " + ip) && !ip.empty() : ip.empty());
      },
      lines);
}

Owns vlink_of(const std::string& where, const std::string& id) {
  return [where, id](const std::string& line) {
    if (!is_vlink(line)) return false;
    const Words words = words_of(line);
    return is_same_area(words[1], where) && words[3] == id;
  };
}

void add_vlink(const Section& section, const Words& words) {
  const std::string where = area(words[0]);
  const std::string id = address(AF_INET, "router id", words[1]);
  if (id == "0.0.0.0") refuse_word("router id", id);
  check_age(words[5], words[2]);
  const std::string begin = "area " + where + " virtual-link " + id;
  std::string first = begin;
  constexpr const char* kNumbers[] = {"hello-interval", "retransmit-interval", "transmit-delay",
                                      "dead-interval"};
  for (size_t i = 0; i < std::size(kNumbers); ++i) {
    const std::string& word = words[2 + i];
    if (!word.empty()) first += std::string(" ") + kNumbers[i] + " " + number(kNumbers[i], word, 1, 65535);
  }
  Words lines = {first};
  add_auth(lines, begin + " ", "", words[6], words[7]);
  configure({section.process});
  settle(section.process, vlink_of(where, id), lines);
}

void del_vlink(const Section& section, const Words& words) {
  take_away(section.process, vlink_of(area(words[0]), address(AF_INET, "router id", words[1])));
}

// -- RIP and RIPng --

std::string rip_network(const Section& section, const std::string& word) {
  return "network " + (section.protocol == 3 ? network(AF_INET, word) : device_name(word));
}

void add_rip_subnet(const Section& section, const Words& words) {
  if (section.protocol == 5) device(words[0]);
  configure({section.process, rip_network(section, words[0])});
}

void del_rip_subnet(const Section& section, const Words& words) {
  take_away(section.process, only(rip_network(section, words[0])));
}

void add_key(const Section&, const Words& words) {
  const std::string name = token("name", words[0], 64);
  const std::string id = number("key id", words[1], 0, INT32_MAX);
  configure({"key chain " + name, "key " + id, "key-string " + token("key", words[2], 64)});
}

void del_key_chain(const Section&, const Words& words) {
  configure({"no key chain " + token("name", words[0], 64)});
}

void add_split_horizon(Words& lines, const std::string& begin, const std::string& word) {
  const size_t split = word.empty() ? 1 : choice("split horizon", word, {"0", "1", "2"});
  if (split == 0) lines.push_back("no " + begin + "split-horizon");
  if (split == 2) lines.push_back(begin + "split-horizon poisoned-reverse");
}

void mod_rip_interface(const Section& section, const Words& words) {
  const std::string dev = device(words[0]);
  address_of(dev, words[1]);  // RIP has its settings for all of the interface
  const bool is_to_be_passive = choice("passive", words[2], {"0", "1"}) == 1;
  Words lines;
  const size_t mode = auth_mode(words[3]);
  const bool has_chain = choice("password type", words[4], {"string", "keychain"}) == 1;
  if (mode == kNoAuth && !words[5].empty()) refuse("a password without authentication");
  if (mode != kNoAuth) {
    lines.push_back(std::string("ip rip authentication mode ") + (mode == kMd5Auth ? "md5" : "text"));
    lines.push_back(has_chain ? "ip rip authentication key-chain " + token("name", words[5], 64)
                              : "ip rip authentication string " + token("password", words[5], 15));
  }
  add_split_horizon(lines, "ip rip ", words[6]);
  for (const auto& [name, word] : {std::pair("send", words[7]), std::pair("receive", words[8])}) {
    if (word.empty()) continue;
    if (word != "1" && word != "2" && word != "1 2") refuse_word("version", word);
    lines.push_back(std::string("ip rip ") + name + " version " + word);
  }
  settle("interface " + dev, set_lines_of(section), lines);
  set_passive(section, dev, is_to_be_passive);
}

void mod_ripng_interface(const Section& section, const Words& words) {
  const std::string dev = device(words[0]);
  const bool is_to_be_passive = choice("passive", words[1], {"0", "1"}) == 1;
  Words lines;
  add_split_horizon(lines, "ipv6 ripng ", words[2]);
  settle("interface " + dev, set_lines_of(section), lines);
  set_passive(section, dev, is_to_be_passive);
}

// -- Static routes --

std::string route_line(const Words& words, std::string (*device_of)(const std::string&)) {
  const std::string destination = network(AF_INET6, words[0]);
  in6_addr to = {};
  inet_pton(AF_INET6, destination.substr(0, destination.find('/')).c_str(), &to);
  if (IN6_IS_ADDR_MULTICAST(&to) || IN6_IS_ADDR_V4MAPPED(&to)) refuse_word("network", words[0]);
  std::string line = "ipv6 route " + destination;
  const bool has_gateway = !words[1].empty() && words[1] != "::";
  if (!has_gateway && words[2].empty()) refuse("a route needs a gateway or an interface");
  if (has_gateway) {
    const std::string gateway = address(AF_INET6, "gateway", words[1]);
    in6_addr ip = {};
    inet_pton(AF_INET6, gateway.c_str(), &ip);
    if (IN6_IS_ADDR_MULTICAST(&ip) || IN6_IS_ADDR_LOOPBACK(&ip)) refuse_word("gateway", gateway);
    if (IN6_IS_ADDR_LINKLOCAL(&ip) && words[2].empty()) refuse("gateway " + gateway + " needs an interface");
    line += " " + gateway;
  }
  return words[2].empty() ? line : line + " " + device_of(words[2]);
}

void add_route(const Section&, const Words& words) { configure({route_line(words, device)}); }

void del_route(const Section&, const Words& words) {
  const std::string line = route_line(words, device_name);
  if (!has_block(line)) refuse("no such entry");
  configure({"no " + line});
}

// ---- The table ----

struct Action {
  int protocol;
  int section;
  const char* word;
  size_t words;  // behind it
  void (*run)(const Section& section, const Words& words);
  const char* show = nullptr;  // what an action without a function shows
};

// clang-format off
constexpr Action kActions[] = {
    {4, 0, "add", 2, add_dev}, {4, 0, "del", 2, del_dev}, {4, 0, "delall", 0, clear}, {4, 0, "init", 0, start_anew},
    {4, 1, "mod", 7, mod_ospf6_interface}, {4, 1, "init", 0, start_anew}, {4, 1, "add", 1, add_interface},
    {4, 1, "del", 1, del_interface}, {4, 1, "delall", 0, clear},
    {4, 2, "init", 0, start_anew},
    {4, 3, "database", 0, nullptr, "show ipv6 ospf6 database"}, {4, 3, "route", 0, nullptr, "show ipv6 ospf6 route"},
    {4, 3, "neighbor", 0, nullptr, "show ipv6 ospf6 neighbor"}, {4, 3, "interface", 0, nullptr, "show ipv6 ospf6 interface"},
    {2, 0, "add", 2, add_ospf_subnet}, {2, 0, "del", 2, del_ospf_subnet}, {2, 0, "delall", 0, clear},
    {2, 0, "init", 0, start_anew},
    {2, 1, "mod", 11, mod_ospf_interface}, {2, 1, "init", 0, start_anew}, {2, 1, "add", 1, add_interface},
    {2, 1, "del", 1, del_interface}, {2, 1, "delall", 0, clear},
    {2, 2, "init", 0, set_up_ospf},
    {2, 3, "add", 8, add_vlink}, {2, 3, "del", 2, del_vlink}, {2, 3, "delall", 0, clear}, {2, 3, "init", 0, start_anew},
    {2, 4, "database", 0, nullptr, "show ip ospf database"}, {2, 4, "route", 0, nullptr, "show ip ospf route"},
    {2, 4, "neighbor", 0, nullptr, "show ip ospf neighbor"}, {2, 4, "interface", 0, nullptr, "show ip ospf interface"},
    {3, 0, "add", 1, add_rip_subnet}, {3, 0, "del", 1, del_rip_subnet}, {3, 0, "delall", 0, clear},
    {3, 0, "init", 0, start_anew},
    {3, 1, "add", 3, add_key}, {3, 1, "del", 1, del_key_chain}, {3, 1, "init", 0, start_anew},
    {3, 2, "mod", 9, mod_rip_interface}, {3, 2, "init", 0, start_anew}, {3, 2, "add", 1, add_interface},
    {3, 2, "del", 1, del_interface}, {3, 2, "delall", 0, clear},
    {3, 3, "init", 0, start_anew}, {3, 3, "delall", 0, end_process},
    {3, 4, "get", 0, nullptr, "show ip rip\nshow ip rip status"},
    {5, 0, "add", 1, add_rip_subnet}, {5, 0, "del", 1, del_rip_subnet}, {5, 0, "delall", 0, clear},
    {5, 0, "init", 0, start_anew},
    {5, 1, "mod", 3, mod_ripng_interface}, {5, 1, "init", 0, start_anew}, {5, 1, "add", 1, add_interface},
    {5, 1, "del", 1, del_interface}, {5, 1, "delall", 0, clear},
    {5, 2, "init", 0, start_anew}, {5, 2, "delall", 0, end_process},
    {5, 3, "get", 0, nullptr, "show ipv6 ripng\nshow ipv6 ripng status"},
    {1, 0, "add", 3, add_route}, {1, 0, "del", 3, del_route}, {1, 0, "info", 0, nullptr, "show ipv6 route"},
    {1, 0, "init", 0, clear},
};
// clang-format on

void run(const Words& words) {
  if (words.size() < 3) refuse("quagga_telnet PROTOCOL SECTION ACTION [WORD...]");
  for (const Action& action : kActions) {
    if (words[0] != std::to_string(action.protocol) || words[1] != std::to_string(action.section) ||
        words[2] != action.word) {
      continue;
    }
    const Words others(words.begin() + 3, words.end());
    if (others.size() != action.words) refuse("wrong number of words");
    const Section& section = *std::ranges::find_if(kSections, [&](const Section& each) {
      return each.protocol == action.protocol && each.number == action.section;
    });
    if (std::ranges::find(running().daemons, section.daemon) == running().daemons.end()) {
      refuse(std::string(section.daemon) + " is not running");
    }
    if (action.run != nullptr) {
      action.run(section, others);
    } else {
      fputs(vtysh({action.show}).c_str(), stdout);
    }
    return;
  }
  refuse_word("action", words[0] + " " + words[1] + " " + words[2]);
}

}  // namespace

int main(int argc, char** argv) {
  try {
    run(Words(argv + std::min(argc, 1), argv + argc));
    return fflush(stdout) == 0 ? 0 : 1;
  } catch (const std::exception& error) {
    fprintf(stderr, "quagga_telnet: %s\n", error.what());
  }
  return 1;
}
