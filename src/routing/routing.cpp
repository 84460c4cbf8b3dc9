// ospfv3, ospf, rip, ripng and ipv6: a command line for the routing client each, run by the shell; and zebra,
// which keeps the routing log short.
#include <cstdio>
#include <cstdlib>

#include "args/print.h"
#include "order/order.h"
#include "platform/file.h"
#include "records/general.h"
#include "records/order.h"
#include "routing/commands.h"

namespace {

// As the client numbers them.
enum Protocol : uint8_t { kIpv6 = 1, kOspf, kRip, kOspfv3, kRipng };

// clang-format off
constexpr const char* kWords[] = {
    nullptr, "add", "database", "del", "delall", "dev", "get", "info", "init", "interface", "keychain", "mod",
    "neighbor", "parm", "route", "router", "subnet", "vlink"};
enum Word : uint8_t {
    kAny, kAdd, kDatabase, kDel, kDelall, kDev, kGet, kInfo, kInit, kInterface, kKeychain, kMod,
    kNeighbor, kParm, kRoute, kRouter, kSubnet, kVlink};
// clang-format on
static_assert(std::size(kWords) == kVlink + 1);

enum Kind : uint8_t {
  kQuoted,
  kBare,   // the action goes on without quotes
  kAlone,  // the section needs no action behind it: what goes on is this one
  kUsage,  // the section or action is missing or unknown
};

struct Row {
  Protocol protocol;
  uint8_t section_number;
  Word section;
  Word action;
  Kind kind = kQuoted;
  uint8_t min_words = 0;  // of all words, the tool's name included
  uint8_t passed = 0;     // words behind the action that go on
  const char* usage = nullptr;
};

// The first row that fits counts. Some rows pass on more words than they need, and some usages name other
// words than are taken: callers know both as they are.
// clang-format off
constexpr Row kRows[] = {
    {kOspfv3, 0, kDev, kAdd, kQuoted, 5, 2, "ospfv3 dev add [dev] [area_id]"},
    {kOspfv3, 0, kDev, kDel, kQuoted, 5, 2, "ospfv3 dev del [dev] [area_id]"},
    {kOspfv3, 0, kDev, kDelall},
    {kOspfv3, 0, kDev, kInit},
    {kOspfv3, 0, kDev, kAny, kUsage, 0, 0, "ospfv3 dev add/del/delall/init"},
    {kOspfv3, 1, kInterface, kMod, kBare, 11, 7, "ospfv3 interface mod dev passive cost neighbor_age hello_interval pri retrans_interval"},
    {kOspfv3, 1, kInterface, kInit},
    {kOspfv3, 1, kInterface, kAdd, kQuoted, 5, 1, "ospfv3 interface add dev"},
    {kOspfv3, 1, kInterface, kDel, kQuoted, 5, 1, "ospfv3 interface del dev"},
    {kOspfv3, 1, kInterface, kDelall},
    {kOspfv3, 1, kInterface, kAny, kUsage, 0, 0, "ospfv3 interface mod/init/add/del/delall"},
    {kOspfv3, 2, kParm, kInit},
    {kOspfv3, 2, kParm, kAny, kUsage, 0, 0, "ospfv3 parm init"},
    {kOspfv3, 3, kInfo, kDatabase},
    {kOspfv3, 3, kInfo, kRoute},
    {kOspfv3, 3, kInfo, kNeighbor},
    {kOspfv3, 3, kInfo, kInterface},
    {kOspfv3, 3, kInfo, kAny, kUsage, 0, 0, "ospfv3 info database/route/neighbor/interface"},
    {kOspfv3, 0, kAny, kAny, kUsage, 0, 0, "ospfv3 dev/interface/parm/info"},

    {kOspf, 0, kSubnet, kAdd, kQuoted, 5, 2, "ospf subnet add subnet area_id"},
    {kOspf, 0, kSubnet, kDel, kQuoted, 5, 2, "ospf subnet del subnet area_id"},
    {kOspf, 0, kSubnet, kDelall},
    {kOspf, 0, kSubnet, kInit},
    {kOspf, 0, kSubnet, kAny, kUsage, 0, 0, "ospf subnet add/del/mod/delall"},
    {kOspf, 1, kInterface, kMod, kBare, 15, 11, "ospf interface mod devname ip passive auth_mode auth_password cost neighbor_age hello_interval pri retrans_interval network"},
    {kOspf, 1, kInterface, kInit},
    {kOspf, 1, kInterface, kAdd, kQuoted, 5, 1, "ospf interface add devname"},
    {kOspf, 1, kInterface, kDel, kQuoted, 5, 1, "ospf interface del devname"},
    {kOspf, 1, kInterface, kDelall},
    {kOspf, 1, kInterface, kAny, kUsage, 0, 0, "ospf interface mod/init"},
    {kOspf, 2, kParm, kInit},
    {kOspf, 2, kParm, kAny, kUsage, 0, 0, "ospf parm init"},
    {kOspf, 3, kVlink, kAdd, kQuoted, 12, 8, "ospf vlink add area_id router_id hello_interval retrans_interval trans_delay dead_interval auth_mode auth_password"},
    {kOspf, 3, kVlink, kDel, kQuoted, 5, 2, "ospf vlink del area_id router_id"},
    {kOspf, 3, kVlink, kDelall},
    {kOspf, 3, kVlink, kInit},
    {kOspf, 3, kVlink, kAny, kUsage, 0, 0, "ospf vlink add/del/delall/init"},
    {kOspf, 4, kInfo, kDatabase},
    {kOspf, 4, kInfo, kRoute},
    {kOspf, 4, kInfo, kNeighbor},
    {kOspf, 4, kInfo, kInterface},
    {kOspf, 4, kInfo, kAny, kUsage, 0, 0, "ospf info database/route/neighbor/interface"},
    {kOspf, 0, kAny, kAny, kUsage, 0, 0, "ospf subnet/interface/parm/vlink/router_id"},

    {kRip, 0, kSubnet, kAdd, kQuoted, 5, 1, "rip subnet add subnet"},
    {kRip, 0, kSubnet, kDel, kQuoted, 5, 1, "rip subnet del subnet"},
    {kRip, 0, kSubnet, kDelall},
    {kRip, 0, kSubnet, kInit},
    {kRip, 0, kSubnet, kAny, kUsage, 0, 0, "rip subnet add/del/mod/delall"},
    {kRip, 1, kKeychain, kAdd, kQuoted, 7, 3, "rip keychain add name key_id key_string"},
    {kRip, 1, kKeychain, kDel, kQuoted, 5, 1, "rip keychain del name"},
    {kRip, 1, kKeychain, kInit},
    {kRip, 1, kKeychain, kAny, kUsage, 0, 0, "rip keychain add/del"},
    {kRip, 2, kInterface, kMod, kQuoted, 13, 9, "rip interface mod devname ip passive auth_mode password_type password split_horizon send_version rcv_version"},
    {kRip, 2, kInterface, kInit},
    {kRip, 2, kInterface, kAdd, kQuoted, 5, 1, "rip interface add devname"},
    {kRip, 2, kInterface, kDel, kQuoted, 5, 1, "rip interface del devname"},
    {kRip, 2, kInterface, kDelall},
    {kRip, 2, kInterface, kAny, kUsage, 0, 0, "rip interface mod/init"},
    {kRip, 3, kParm, kInit},
    {kRip, 3, kParm, kDelall},
    {kRip, 3, kParm, kAny, kUsage, 0, 0, "rip parm init/delall"},
    {kRip, 4, kInfo, kGet, kAlone},
    {kRip, 0, kAny, kAny, kUsage, 0, 0, "rip subnet/keychain/interface/parm/info"},

    {kRipng, 0, kSubnet, kAdd, kQuoted, 5, 1, "ripng dev add dev"},
    {kRipng, 0, kSubnet, kDel, kQuoted, 5, 1, "ripng dev del dev"},
    {kRipng, 0, kSubnet, kDelall},
    {kRipng, 0, kSubnet, kInit},
    {kRipng, 0, kSubnet, kAny, kUsage, 0, 0, "ripng dev add/del/delall/init"},
    {kRipng, 1, kInterface, kMod, kQuoted, 7, 3, "ripng interface devname passive split_horizon"},
    {kRipng, 1, kInterface, kInit},
    {kRipng, 1, kInterface, kAdd, kQuoted, 5, 1, "ripng interface add devname"},
    {kRipng, 1, kInterface, kDel, kQuoted, 5, 1, "ripng interface del devname"},
    {kRipng, 1, kInterface, kDelall},
    {kRipng, 1, kInterface, kAny, kUsage, 0, 0, "rip interface mod/init/add/del/delall"},
    {kRipng, 2, kParm, kInit},
    {kRipng, 2, kParm, kDelall},
    {kRipng, 2, kParm, kAny, kUsage, 0, 0, "ripng parm init/delall"},
    {kRipng, 3, kInfo, kGet, kAlone},
    {kRipng, 0, kAny, kAny, kUsage, 0, 0, "ripng dev/interface/parm/info"},

    {kIpv6, 0, kRouter, kAdd, kQuoted, 7, 3, "ipv6 router add dst gw dev"},
    {kIpv6, 0, kRouter, kDel, kQuoted, 7, 3, "ipv6 router del dst gw dev"},
    {kIpv6, 0, kRouter, kInfo},
    {kIpv6, 0, kRouter, kInit},
    {kIpv6, 0, kAny, kAny, kUsage, 0, 0, "ipv6 router add/del/info"},
};
// clang-format on

// A shell line of limited length: what is too much is cut off. A line that is cut within a word ends within
// its quotes, so that the shell runs none of it.
class ShellLine {
 public:
  void put(char c) {
    if (length_ < sizeof text_ - 1) text_[length_++] = c;
  }
  void put(const char* text) {
    for (; *text != '\0'; ++text) put(*text);
  }
  // The word reaches the program as it is, whatever it holds.
  void put_quoted(const char* word) {
    put(" \"");
    for (; *word != '\0'; ++word) {
      if (*word == '"' || *word == '$' || *word == '`' || *word == '\\') put('\\');
      put(*word);
    }
    put('"');
  }
  // What is waiting to be printed comes before what the line prints.
  void run() const {
    fflush(stdout);
    [[maybe_unused]] const int status = system(text_);
  }

 private:
  char text_[512] = {};
  size_t length_ = 0;
};

bool fits(Word word, const Args& args, int place) { return word == kAny || args.is(place, kWords[word]); }

// The last row of a protocol fits everything.
const Row& find_row(Protocol protocol, const Args& args) {
  const Row* row = kRows;
  while (row->protocol != protocol || !fits(row->section, args, 2) ||
         !(row->kind == kAlone || fits(row->action, args, 3))) {
    ++row;
  }
  return *row;
}

int run(Protocol protocol, const Args& args) {
  const Row& row = find_row(protocol, args);
  if (row.kind == kUsage || args.count() < row.min_words) {
    print_error("vek %s\n", row.usage);
    return kStatusRejected;
  }
  ShellLine line;
  line.put("quagga_telnet ");
  line.put(static_cast<char>('0' + row.protocol));
  line.put(' ');
  line.put(static_cast<char>('0' + row.section_number));
  if (row.kind == kBare) {
    line.put(' ');
    line.put(kWords[row.action]);
  } else {
    line.put_quoted(kWords[row.action]);
  }
  for (int i = 4; i < 4 + row.passed; ++i) line.put_quoted(args[i]);
  line.run();
  return kStatusOk;
}

// ---- The router's id, which the kernel modules keep ----

bool parse_router_id(OspfRouterId& id, const Args& args) {
  id = {1, args.ip(4)};
  return id.router_id.value != 0;
}

void print_router_id(const OspfRouterId& id) { print("router id: %s\n", id.router_id); }

// clang-format off
constexpr SubCommand kRouterId[] = {
    {"set", kModuleGeneral, kOspfRouterId, 1024, sizeof(OspfRouterId), 5, "set router_id", parse_as<parse_router_id>, print_as<print_router_id>},
    {"get", kModuleGeneral, kOspfRouterId, 1024, sizeof(OspfRouterId), 0, "get", nullptr, print_as<print_router_id>},
};
// clang-format on
constexpr SubCommand kOspfOrders[] = {group("router_id", kRouterId, "vek ospf router_id set/get\n")};

}  // namespace

int cmd_ospfv3(int argc, char** argv, const CommandEntry*) { return run(kOspfv3, Args(argc, argv)); }

int cmd_ospf(int argc, char** argv, const CommandEntry* entry) {
  const Args args(argc, argv);
  return args.is(2, "router_id") ? run_sub_command({kOspfOrders}, args, entry) : run(kOspf, args);
}

int cmd_rip(int argc, char** argv, const CommandEntry*) { return run(kRip, Args(argc, argv)); }
int cmd_ripng(int argc, char** argv, const CommandEntry*) { return run(kRipng, Args(argc, argv)); }
int cmd_ipv6(int argc, char** argv, const CommandEntry*) { return run(kIpv6, Args(argc, argv)); }

int cmd_zebra(int argc, char** argv, const CommandEntry*) {
  constexpr int64_t kMaxLog = 0x100000;
  if (!Args(argc, argv).is(2, "check_log")) {
    print_error("vek zebra check_log\n");
    return kStatusRejected;
  }
  if (f_size("/var/log/zebra.log") > kMaxLog) {
    ShellLine line;
    line.put("echo \"\" > /var/log/zebra.log");
    line.run();
    print("ok\n");
  }
  return kStatusOk;
}
