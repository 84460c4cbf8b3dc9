// ospfv3, ospf, rip, ripng and ipv6: a command line for the routing client each, run by the shell; and zebra,
// which keeps the routing log short.
#include <span>

#include "args/print.h"
#include "args/shell.h"
#include "order/order.h"
#include "order/words.h"
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
  kBare,       // the action goes on without quotes
  kAlone,      // the section needs no action behind it: what goes on is this one
  kUsage,      // the section or action is missing or unknown
  kWhole = 8,  // and: the usage has more than what stands behind the row's own words
};

struct Row {
  Protocol protocol;
  uint8_t section_number;
  Word section;
  Word action;
  uint8_t kind = kQuoted;
  uint8_t min_words = 0;  // of all words, the tool's name included
  uint8_t passed = 0;     // words behind the action that go on
  const char* usage = nullptr;
};

// The first row that fits counts. Some rows pass on more words than they need, and some usages name other
// words than are taken: callers know both as they are.
// clang-format off
constexpr Row kRows[] = {
    {kOspfv3, 0, kDev, kAdd, kQuoted, 5, 2, "[dev] [area_id]"},
    {kOspfv3, 0, kDev, kDel, kQuoted, 5, 2, "[dev] [area_id]"},
    {kOspfv3, 0, kDev, kDelall},
    {kOspfv3, 0, kDev, kInit},
    {kOspfv3, 0, kDev, kAny, kUsage, 0, 0, "add/del/delall/init"},
    {kOspfv3, 1, kInterface, kMod, kBare, 11, 7, "dev passive cost neighbor_age hello_interval pri retrans_interval"},
    {kOspfv3, 1, kInterface, kInit},
    {kOspfv3, 1, kInterface, kAdd, kQuoted, 5, 1, "dev"},
    {kOspfv3, 1, kInterface, kDel, kQuoted, 5, 1, "dev"},
    {kOspfv3, 1, kInterface, kDelall},
    {kOspfv3, 1, kInterface, kAny, kUsage, 0, 0, "mod/init/add/del/delall"},
    {kOspfv3, 2, kParm, kInit},
    {kOspfv3, 2, kParm, kAny, kUsage, 0, 0, "init"},
    {kOspfv3, 3, kInfo, kDatabase},
    {kOspfv3, 3, kInfo, kRoute},
    {kOspfv3, 3, kInfo, kNeighbor},
    {kOspfv3, 3, kInfo, kInterface},
    {kOspfv3, 3, kInfo, kAny, kUsage, 0, 0, "database/route/neighbor/interface"},
    {kOspfv3, 0, kAny, kAny, kUsage, 0, 0, "dev/interface/parm/info"},

    {kOspf, 0, kSubnet, kAdd, kQuoted, 5, 2, "subnet area_id"},
    {kOspf, 0, kSubnet, kDel, kQuoted, 5, 2, "subnet area_id"},
    {kOspf, 0, kSubnet, kDelall},
    {kOspf, 0, kSubnet, kInit},
    {kOspf, 0, kSubnet, kAny, kUsage, 0, 0, "add/del/mod/delall"},
    {kOspf, 1, kInterface, kMod, kBare, 15, 11, "devname ip passive auth_mode auth_password cost neighbor_age hello_interval pri retrans_interval network"},
    {kOspf, 1, kInterface, kInit},
    {kOspf, 1, kInterface, kAdd, kQuoted, 5, 1, "devname"},
    {kOspf, 1, kInterface, kDel, kQuoted, 5, 1, "devname"},
    {kOspf, 1, kInterface, kDelall},
    {kOspf, 1, kInterface, kAny, kUsage, 0, 0, "mod/init"},
    {kOspf, 2, kParm, kInit},
    {kOspf, 2, kParm, kAny, kUsage, 0, 0, "init"},
    {kOspf, 3, kVlink, kAdd, kQuoted, 12, 8, "area_id router_id hello_interval retrans_interval trans_delay dead_interval auth_mode auth_password"},
    {kOspf, 3, kVlink, kDel, kQuoted, 5, 2, "area_id router_id"},
    {kOspf, 3, kVlink, kDelall},
    {kOspf, 3, kVlink, kInit},
    {kOspf, 3, kVlink, kAny, kUsage, 0, 0, "add/del/delall/init"},
    {kOspf, 4, kInfo, kDatabase},
    {kOspf, 4, kInfo, kRoute},
    {kOspf, 4, kInfo, kNeighbor},
    {kOspf, 4, kInfo, kInterface},
    {kOspf, 4, kInfo, kAny, kUsage, 0, 0, "database/route/neighbor/interface"},
    {kOspf, 0, kAny, kAny, kUsage, 0, 0, "subnet/interface/parm/vlink/router_id"},

    {kRip, 0, kSubnet, kAdd, kQuoted, 5, 1, "subnet"},
    {kRip, 0, kSubnet, kDel, kQuoted, 5, 1, "subnet"},
    {kRip, 0, kSubnet, kDelall},
    {kRip, 0, kSubnet, kInit},
    {kRip, 0, kSubnet, kAny, kUsage, 0, 0, "add/del/mod/delall"},
    {kRip, 1, kKeychain, kAdd, kQuoted, 7, 3, "name key_id key_string"},
    {kRip, 1, kKeychain, kDel, kQuoted, 5, 1, "name"},
    {kRip, 1, kKeychain, kInit},
    {kRip, 1, kKeychain, kAny, kUsage, 0, 0, "add/del"},
    {kRip, 2, kInterface, kMod, kQuoted, 13, 9, "devname ip passive auth_mode password_type password split_horizon send_version rcv_version"},
    {kRip, 2, kInterface, kInit},
    {kRip, 2, kInterface, kAdd, kQuoted, 5, 1, "devname"},
    {kRip, 2, kInterface, kDel, kQuoted, 5, 1, "devname"},
    {kRip, 2, kInterface, kDelall},
    {kRip, 2, kInterface, kAny, kUsage, 0, 0, "mod/init"},
    {kRip, 3, kParm, kInit},
    {kRip, 3, kParm, kDelall},
    {kRip, 3, kParm, kAny, kUsage, 0, 0, "init/delall"},
    {kRip, 4, kInfo, kGet, kAlone},
    {kRip, 0, kAny, kAny, kUsage, 0, 0, "subnet/keychain/interface/parm/info"},

    {kRipng, 0, kSubnet, kAdd, kWhole, 5, 1, "ripng dev add dev"},
    {kRipng, 0, kSubnet, kDel, kWhole, 5, 1, "ripng dev del dev"},
    {kRipng, 0, kSubnet, kDelall},
    {kRipng, 0, kSubnet, kInit},
    {kRipng, 0, kSubnet, kAny, kUsage | kWhole, 0, 0, "ripng dev add/del/delall/init"},
    {kRipng, 1, kInterface, kMod, kWhole, 7, 3, "ripng interface devname passive split_horizon"},
    {kRipng, 1, kInterface, kInit},
    {kRipng, 1, kInterface, kAdd, kQuoted, 5, 1, "devname"},
    {kRipng, 1, kInterface, kDel, kQuoted, 5, 1, "devname"},
    {kRipng, 1, kInterface, kDelall},
    {kRipng, 1, kInterface, kAny, kUsage | kWhole, 0, 0, "rip interface mod/init/add/del/delall"},
    {kRipng, 2, kParm, kInit},
    {kRipng, 2, kParm, kDelall},
    {kRipng, 2, kParm, kAny, kUsage, 0, 0, "init/delall"},
    {kRipng, 3, kInfo, kGet, kAlone},
    {kRipng, 0, kAny, kAny, kUsage, 0, 0, "dev/interface/parm/info"},

    {kIpv6, 0, kRouter, kAdd, kQuoted, 7, 3, "dst gw dev"},
    {kIpv6, 0, kRouter, kDel, kQuoted, 7, 3, "dst gw dev"},
    {kIpv6, 0, kRouter, kInfo},
    {kIpv6, 0, kRouter, kInit},
    {kIpv6, 0, kAny, kAny, kUsage, 0, 0, "router add/del/info"},
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
  const char* text() const { return text_; }

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

void complain(const Row& row, const Args& args) {
  print_error("vek");
  if ((row.kind & kWhole) == 0) {
    for (const char* word : {args[1], kWords[row.section], kWords[row.action]}) {
      if (word != nullptr) print_error(" %s", word);
    }
  }
  print_error(" %s\n", row.usage);
}

int run(Protocol protocol, const Args& args) {
  const Row& row = find_row(protocol, args);
  if ((row.kind & kUsage) == kUsage || args.count() < row.min_words) {
    complain(row, args);
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
  run_shell(line.text());
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

// ---- The daemons' log ----

int check_log(const Args&, const CommandEntry*) {
  constexpr int64_t kMaxLog = 0x100000;
  if (f_size("/var/log/zebra.log") > kMaxLog) {
    run_shell("echo \"\" > /var/log/zebra.log");
    print("ok\n");
  }
  return kStatusOk;
}

constexpr SubCommand kZebra[] = {handled("check_log", check_log)};

}  // namespace

void each_routing_words(TakeWords take) {
  static constexpr const char* kCommands[] = {nullptr, "ipv6", "ospf", "rip", "ospfv3", "ripng"};
  for (const Row& row : kRows) {
    if ((row.kind & kUsage) == kUsage) continue;
    take(kCommands[row.protocol], kWords[row.section], kWords[row.action], nullptr, row.usage, row.min_words);
  }
}

int cmd_ospfv3(int argc, char** argv, const CommandEntry*) { return run(kOspfv3, Args(argc, argv)); }

int cmd_ospf(int argc, char** argv, const CommandEntry* entry) {
  const Args args(argc, argv);
  const bool is_order = find_sub_command(kOspfOrders, args, 2) != nullptr;
  return is_order ? run_sub_command({kOspfOrders}, args, entry) : run(kOspf, args);
}

int cmd_rip(int argc, char** argv, const CommandEntry*) { return run(kRip, Args(argc, argv)); }
int cmd_ripng(int argc, char** argv, const CommandEntry*) { return run(kRipng, Args(argc, argv)); }
int cmd_ipv6(int argc, char** argv, const CommandEntry*) { return run(kIpv6, Args(argc, argv)); }

int cmd_zebra(int argc, char** argv, const CommandEntry* entry) {
  const Args args(argc, argv);
  if (find_sub_command(kZebra, args, 2) != nullptr) return run_sub_command({kZebra}, args, entry);
  print_error("vek zebra check_log\n");
  return kStatusRejected;
}
