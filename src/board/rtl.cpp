// rtl: the maintenance console of the switch chip. A row says which words become which values of a record,
// which function takes it and what is then written. Whatever a function returns, the status is 0.
#include <span>

#include "args/args.h"
#include "args/print.h"
#include "board/commands.h"
#include "order/order.h"
#include "order/words.h"
#include "platform/switch_chip.h"
#include "records/switch_chip.h"

namespace {

constexpr uint8_t kSet = 1;
constexpr uint8_t kGet = 2;
constexpr uint8_t kClear = 3;
constexpr uint8_t kDelete = 0;

// What the words of an operation say, and after a read what the record says.
struct Values {
  uint8_t op;
  uint8_t kind;  // which of a few words was given: isolation, direction, scope, type, match
  uint32_t numbers[4];
  Mac macs[2];
  PortStatusRecord port;
};

// With what lies between the fields.
template <typename Record>
void zero(Record& record) {
  memset(&record, 0, sizeof record);
}

struct NoKind {};
constexpr NoKind kNoKind;

template <typename Function>
struct RecordOf;
template <typename Record, typename... Op>
struct RecordOf<int (*)(Record*, Op...)> {
  using type = Record;
};

// Makes a call of a function of the chip with its record's kind, and its numbers in the order of the lines.
template <auto function, auto kind, auto... numbers>
int call(Values& values) {
  using Record = typename RecordOf<decltype(function)>::type;
  constexpr bool has_kind = !std::is_same_v<std::remove_const_t<decltype(kind)>, NoKind>;
  Record record;
  zero(record);
  record.op = values.op;
  if constexpr (has_kind) record.*kind = values.kind;
  const uint32_t* number = values.numbers;
  ((record.*numbers = static_cast<std::remove_reference_t<decltype(record.*numbers)>>(*number++)), ...);
  int result;
  if constexpr (std::is_invocable_v<decltype(function), Record*, int>) {
    result = function(&record, values.op);
  } else {
    result = function(&record);
  }
  if constexpr (has_kind) values.kind = record.*kind;
  uint32_t* answer = values.numbers;
  ((*answer++ = static_cast<uint32_t>(record.*numbers)), ...);
  return result;
}

// Rates are set in Mbit/s and read in kbit/s.
int call_rate(Values& values) {
  constexpr uint32_t kMostMbps = 1024;
  constexpr uint32_t kNoLimit = 0xffff8;
  SwitchRateRecord record;
  zero(record);
  uint32_t& rate = values.numbers[1];
  record.op = values.op;
  record.direction = values.kind;
  record.port = static_cast<uint8_t>(values.numbers[0]);
  if (values.op == kSet) {
    record.set = 1;
    if (rate == 0 || rate > kMostMbps) rate = kMostMbps;
    record.rate = rate < kMostMbps ? rate * 1024 : kNoLimit;
  }
  const int result = rtl8367_rate_ctl_opt(&record);
  values.numbers[0] = record.port;
  if (values.op == kGet) rate = record.rate;
  return result;
}

int call_acl(Values& values) {
  AclMacRecord record;
  zero(record);
  record.add = values.op;
  record.match = values.kind;
  memcpy(record.mac_value, values.macs[0].bytes, sizeof record.mac_value);
  memcpy(record.mac_mask, values.macs[1].bytes, sizeof record.mac_mask);
  record.port_value = values.numbers[0];
  record.port_mask = values.numbers[1];
  record.action = values.numbers[2];
  return rtl8367_acl_opt(&record);
}

// Set and get have a record of their own, and so has what a get shows.
int call_port(Values& values) {
  values.port.op = values.op;
  values.port.port = values.numbers[0];
  const int result = rtl8367_port_opt(&values.port, values.op);
  constexpr uint16_t kSpeeds[] = {10, 100, 1000, 1000, 2500};
  const uint8_t speed = values.port.speed;
  values.numbers[1] = speed < std::size(kSpeeds) ? kSpeeds[speed] : 1000;
  return result;
}

struct Operation {
  const char* action;  // the word behind the sub-command
  // What the words behind it are, a letter each: d a decimal number, x a hexadecimal one, a a MAC address;
  // and those that say the kind: e en or dis, i ingress or egress by its first letter, m smac or dmac, p
  // sport or dport, s global or port and its number; l what a port's link is set to.
  char words[7];
  uint8_t op : 4;
  uint8_t min_words : 4;
  // Lines with the numbers in their order. "%o" is ok or err, "%e" enable or disable by the kind, "%w" the
  // first of the words, "%r" the result, "%p" a port's state. Without the second, the first is for both.
  const char* done = nullptr;
  const char* failed = nullptr;
};

struct Group {
  enum Style : uint8_t {
    kPlain,
    kErrorLines,    // what is done is written on standard error, too
    kFirstLetters,  // the action is known by its first letter
    kOthersIgnored  // as kErrorLines, and an unknown action does nothing
  };

  template <uint8_t kCount>
  constexpr Group(const char* its_word, const char* its_usage, const Operation (&rows)[kCount],
                  int (*its_call)(Values&), Style its_style = kPlain)
      : word(its_word), usage(its_usage), call(its_call), first(rows), count(kCount), style(its_style) {}

  const char* word;
  const char* usage;
  int (*call)(Values& values);
  const Operation* first;
  uint8_t count;
  Style style;
};

bool read_link(PortStatusRecord& port, const Args& args, int place) {
  constexpr uint8_t kAsItIs = 2;
  const int link = args.choice(place, {"down", "up"});
  port.link = link == 1 ? 1 : 0;
  if (link < 1) return link == 0;
  if (args.count() <= place + 1) {
    port.autoneg = kAsItIs;
    return true;
  }
  const int mode = args.choice(place + 1, {"force", "auto"});
  port.autoneg = mode == 1 ? 1 : 0;
  if (mode != 0) return mode == 1;
  const int speed = args.choice(place + 2, {"10", "100", "1000"});
  const int duplex = args.choice(place + 3, {"H", "F"});
  port.speed = static_cast<uint8_t>(speed);
  port.duplex = static_cast<uint8_t>(duplex);
  return speed >= 0 && duplex >= 0;
}

bool read_words(Values& values, const char* letters, const Args& args) {
  int place = 4;
  uint32_t* number = values.numbers;
  Mac* mac = values.macs;
  for (; *letters != '\0'; ++letters, ++place) {
    int kind = 0;
    switch (*letters) {
      case 'd':
        *number++ = args.number(place);
        continue;
      case 'x':
        *number++ = J_atohx16(args[place]);
        continue;
      case 'a':
        str2mac_nocheck(args[place], mac++);
        continue;
      case 'l':
        if (!read_link(values.port, args, place)) return false;
        continue;
      case 'e':
        kind = args.choice(place, {"dis", "en"});
        break;
      case 'i':
        kind = args[place][0] == 'i' ? 1 : args[place][0] == 'e' ? 2 : -1;
        break;
      case 'm':
        kind = args.is(place, "smac") ? 0 : 1;
        break;
      case 'p':
        kind = args.is(place, "sport") ? 1 : 2;
        break;
      default:
        kind = args.choice(place, {"port", "global"}) + 1;
        if (kind == 1) *number = args.number(place + 1);
        if (kind == 0 || (kind == 1 && args.count() <= place + 1)) return false;
    }
    if (kind < 0) return false;
    values.kind = static_cast<uint8_t>(kind);
  }
  return true;
}

char* put_number(char* at, uint32_t number, uint32_t base) {
  char digits[10];
  char* first = std::end(digits);
  do {
    *--first = "0123456789abcdef"[number % base];
    number /= base;
  } while (number != 0);
  return std::copy(first, std::end(digits), at);
}

char* put_signed(char* at, uint32_t number) {
  const bool is_negative = static_cast<int32_t>(number) < 0;
  if (is_negative) *at++ = '-';
  return put_number(at, is_negative ? -number : number, 10);
}

// The lines of all rows go through here, as data: a call of print for each would take many times the room.
void print_line(bool is_error, const char* line, const Values& values, const char* word, int result) {
  char room[256];  // more than any line has, but for the word
  char* at = room;
  const auto put_text = [&at](const char* text) { at = stpcpy(at, text); };
  const auto write_out = [&](std::string_view text) {
    if (is_error) {
      print_error("%s", text);
    } else {
      print("%s", text);
    }
  };
  const uint32_t* number = values.numbers;
  for (; *line != '\0'; ++line) {
    if (*line != '%') {
      *at++ = *line;
      continue;
    }
    switch (*++line) {
      case 'd':
        at = put_signed(at, *number++);
        break;
      case 'x':
        at = put_number(at, *number++, 16);
        break;
      case 'r':
        at = put_signed(at, static_cast<uint32_t>(result));
        break;
      case 'o':
        put_text(result == 0 ? "ok" : "err");
        break;
      case 'e':
        put_text(values.kind != 0 ? "enable" : "disable");
        break;
      case 'p':
        put_text(values.port.link == 1 ? "link up " : "link down");
        if (values.port.link != 1) break;
        at = put_number(at, *number, 10);
        put_text(values.port.duplex != 0 ? " F" : " H");
        break;
      default:
        write_out({room, static_cast<size_t>(at - room)});
        write_out(word);
        at = room;
    }
  }
  write_out({room, static_cast<size_t>(at - room)});
}

const Operation* find_operation(const Group& group, const Args& args) {
  for (const Operation& row : std::span(group.first, group.count)) {
    const bool is_named =
        group.style == Group::kFirstLetters ? args[3][0] == row.action[0] : strcmp(args[3], row.action) == 0;
    if (is_named) return &row;
  }
  return nullptr;
}

int run_operation(const Group& group, const Args& args) {
  const Operation* const row = find_operation(group, args);
  if (row == nullptr && group.style == Group::kOthersIgnored && args.count() > 3) return kStatusOk;
  Values values = {};
  zero(values.port);
  if (row == nullptr || args.count() < row->min_words || !read_words(values, row->words, args)) {
    print_error(" %s\t%s %s %s\n", args[0], args[1], args[2], group.usage);
    return kStatusRejected;
  }
  values.op = row->op;
  const int result = group.call(values);
  const bool is_error =
      result != 0 || group.style == Group::kErrorLines || group.style == Group::kOthersIgnored;
  const char* const line = result == 0 || row->failed == nullptr ? row->done : row->failed;
  if (line != nullptr) print_line(is_error, line, values, args[4], result);
  return kStatusOk;
}

// ---- Tables ----

constexpr auto call_reg = call<rtl8367_reg_opt, kNoKind, &SwitchRegRecord::addr, &SwitchRegRecord::value>;
constexpr auto call_phy = call<rtl8367_phy_opt, kNoKind, &SwitchPhyRecord::addr, &SwitchPhyRecord::value>;
constexpr auto call_vlan =
    call<rtl8367_vlan_opt, kNoKind, &SwitchVlanRecord::vid, &SwitchVlanRecord::membermask,
         &SwitchVlanRecord::untagmask, &SwitchVlanRecord::fid>;
constexpr auto call_pvid = call<rtl8367_pvid_opt, kNoKind, &SwitchPvidRecord::port, &SwitchPvidRecord::pvid,
                                &SwitchPvidRecord::priority>;
constexpr auto call_efid = call<rtl8367_efid_opt, kNoKind, &SwitchEfidRecord::port, &SwitchEfidRecord::efid>;
constexpr auto call_mirror =
    call<rtl8367_mirror_opt, &SwitchMirrorRecord::isolation, &SwitchMirrorRecord::destination_port,
         &SwitchMirrorRecord::rx_mask, &SwitchMirrorRecord::tx_mask>;
constexpr auto call_mib = call<rtl8367_mib_opt, &SwitchMibRecord::scope, &SwitchMibRecord::port>;
constexpr auto call_acl_port = call<rtl8367_acl_port_opt, &SwitchAclPortRecord::type,
                                    &SwitchAclPortRecord::upper, &SwitchAclPortRecord::lower>;
constexpr auto call_acl_etype =
    call<rtl8367_acl_etype_opt, kNoKind, &SwitchAclEtypeRecord::etype, &SwitchAclEtypeRecord::port_mask>;
constexpr auto call_delay = call<rtl8367_delay_opt, kNoKind, &SwitchDelayRecord::port, &SwitchDelayRecord::tx,
                                 &SwitchDelayRecord::rx>;
constexpr auto call_switch = call<rtl8367_switch_id_opt, kNoKind, &SwitchIdRecord::id>;

// clang-format off
constexpr Operation kReg[] = {
    {"r", "x", kGet, 5, "read reg addr 0x%x value 0x%x ok\n", "read reg addr 0x%x err\n"},
    {"w", "xx", kSet, 6, "write reg addr 0x%x value 0x%x %o\n"},
};
constexpr Operation kVlan[] = {
    {"set", "dxxd", kSet, 8, "set vlan %d membermask=0x%x, untagmask=0x%x, fid=%d %o\n"},
    {"get", "d", kGet, 5, "get vlan %d info: membermask=0x%x, untagmask=0x%x, fid=%d\n", "get vlan %d info err\n"},
    {"clear", "", kClear, 4},
};
constexpr Operation kPvid[] = {
    {"set", "ddd", kSet, 7, "set port %d pvid %d, priority %d %o\n"},
    {"get", "d", kGet, 5, "get port %d pvid %d, priority %d\n", "get port %d pvid err\n"},
};
// Whoever reads the line knows the efid under the word pvid.
constexpr Operation kEfid[] = {
    {"set", "dd", kSet, 6, "set port %d efid %d %o\n"},
    {"get", "d", kGet, 4, "get port %d pvid %d\n", "get port %d efid err\n"},
};
constexpr Operation kPort[] = {
    {"get", "d", kGet, 5, "get port %d %p\n", "get port %d status err\n"},
    {"set", "dl", kSet, 6, "set port %d status %o\n"},
};
constexpr Operation kMirror[] = {
    {"set", "dxxe", kSet, 8, "set mirror port %d rxmsk 0x%x txmsk 0x%x mirror port isolation %e ok\n", "set mirror port %d rxmsk 0x%x txmsk 0x%x mirror port isolation %e ret %r err\n"},
    {"get", "", kGet, 4, "get mirror port %d rxmsk 0x%x txmsk 0x%x mirror port isolation %e ok\n", "get mirror err\n"},
};
constexpr Operation kMib[] = {
    {"get", "s", 1, 5},
    {"reset", "s", 2, 5},
};
constexpr Operation kAcl[] = {
    {"add", "aamddd", kSet, 10, "add  %o\n"},
    {"del", "a", kDelete, 4, "del  %o\n"},
};
constexpr Operation kAclPort[] = {
    {"add", "pdd", kSet, 7, "opt  %o\n"},
    {"del", "pdd", kDelete, 7, "opt  %o\n"},
};
constexpr Operation kPhy[] = {
    {"r", "x", kGet, 5, "read phy addr 0x%x value 0x%x ok\n", "read phy addr 0x%x err\n"},
    {"w", "xx", kSet, 6, "write phy addr 0x%x value 0x%x %o\n"},
};
constexpr Operation kRate[] = {
    {"set", "idd", kSet, 6, "set port %d %w rate %dMbps\n", "set port %d %w err\n"},
    {"get", "id", kGet, 6, "get port %d %w rate %dkbps\n", "get port %d %w err\n"},
};
constexpr Operation kAclEtype[] = {
    {"add", "xx", kSet, 6, "opt  %o\n"},
    {"del", "xx", kDelete, 6, "opt  %o\n"},
};
constexpr Operation kDelay[] = {
    {"set", "ddd", kSet, 7, "set port %d delay tx:%d rx:%d %o\n"},
    {"get", "d", kGet, 5, "get port %d delay tx:%d rx:%d\n", "get port %d delay err\n"},
};
constexpr Operation kSwitch[] = {
    {"set", "d", kSet, 5, nullptr, "set switch id:%d err\n"},
    {"get", "", kGet, 4, "get switch id:%d\n", "get switch id err\n"},
};

constexpr Group kGroups[] = {
    {"reg", "r/w [addr] [val]", kReg, call_reg},
    {"vlan", "set/get/clear [vid] [membermask] [untagmask] [fid]", kVlan, call_vlan},
    {"pvid", "get/set [port] [pvid] [priority]", kPvid, call_pvid},
    {"efid", "get/set [port] [efid]", kEfid, call_efid},
    {"port", "get/set [port] [up/down] [auto/force] [10/100/1000] [F/H]", kPort, call_port},
    {"mirror", "get/set [dst_port] [src_rxmsk] [src_txmsk] [en/dis]", kMirror, call_mirror},
    {"mib", "get/reset [port|global] [port_num]", kMib, call_mib},
    {"acl", "add/del mac_value mac_mask smac/dmac port_value port_mask action[1/0]", kAcl, call_acl, Group::kOthersIgnored},
    {"acl_port", "add/del type[sport/dport] upper lower", kAclPort, call_acl_port, Group::kErrorLines},
    {"phy", "r/w [addr] [val]", kPhy, call_phy},
    {"rate", "set/get ingress/egress [port] [rate]", kRate, call_rate, Group::kFirstLetters},
    {"acl_etype", "add/del [etype] [portmask]", kAclEtype, call_acl_etype, Group::kErrorLines},
    {"delay", "get/set [port] [tx] [rx]", kDelay, call_delay},
    {"switch", "get/set [id]", kSwitch, call_switch},
};

constexpr SubCommand kOthers[] = {
    {"dump", kModuleSwitchChip, kSwitchDump, 1024, 1024, 0, "", nullptr, nullptr},
    {"clear", kModuleSwitchChip, kSwitchClear, 1024, 1024, 0, "", nullptr, nullptr},
};
// clang-format on

}  // namespace

void each_rtl_words(TakeWords take) {
  for (const Group& group : kGroups) {
    for (const Operation& row : std::span(group.first, group.count)) {
      take("rtl", group.word, row.action, nullptr, group.usage, row.min_words);
    }
  }
}

int cmd_rtl(int argc, char** argv, const CommandEntry* entry) {
  const Args args(argc, argv);
  for (const Group& group : kGroups) {
    if (strcmp(args[2], group.word) == 0) return run_operation(group, args);
  }
  return run_sub_command(kOthers, argc, argv, entry);
}
