// What the audit has seen in a scenario. Records are told by their fields and by the texts behind them;
// "age" is how many seconds ago it was.
#include "modules/audit.h"

#include <algorithm>
#include <map>
#include <utility>

#include "lab/sections.h"
#include "state/time.h"

namespace {

using Texts = std::map<std::string, std::string>;

// The longest text that a length of this type counts here: all texts of a record have 64 KiB together.
template <typename Length>
constexpr size_t kMostText = sizeof(Length) == 1   ? UINT8_MAX
                             : sizeof(Length) == 2 ? 4096
                                                   : 0x18fff;

// Takes a text that follows the record, and puts its length into the record.
template <typename Record>
bool read_text(const std::string& name, const Node& value, Record& record, Texts& texts) {
  bool is_taken = false;
  if constexpr (HasLists<Record>) {
    Record::each_list(record, [&](const char* its_name, ListOf<char>) { is_taken |= name == its_name; });
  }
  if (!is_taken) return false;
  each_column(record, [&]<typename Field>(const std::string& column, Field& length) {
    if constexpr (std::is_integral_v<Field>) {
      if (column != name + "_length") return;
      texts[name] = value.text(kMostText<Field>);
      length = static_cast<Field>(texts[name].size());
    }
  });
  return true;
}

template <typename Record>
std::vector<uint8_t> bytes_of(Record& record, const Texts& texts) {
  std::string behind;
  if constexpr (HasLists<Record>) {
    Record::each_list(record, [&](const char* name, ListOf<char> text) {
      if (text.count > 0) behind += texts.at(name);
    });
  }
  if constexpr (requires { record.strings_length; }) {
    record.strings_length = static_cast<uint16_t>(behind.size());
  }
  std::vector<uint8_t> bytes(sizeof record);
  memcpy(bytes.data(), &record, sizeof record);
  bytes.insert(bytes.end(), behind.begin(), behind.end());
  return bytes;
}

// The fields that a record tells from: whose it is, and when it was seen, which a look-up does not say.
template <typename Record>
const IpAddress& host_of(const Record& record) {
  if constexpr (requires { record.head; }) {
    return record.head.ip;
  } else {
    return record.ip;
  }
}
const IpAddress& host_of(const AuditDns& dns) { return dns.nat_ip; }

template <typename Record>
void set_time(Record& record, uint64_t tm) {
  if constexpr (requires { record.head; }) {
    record.head.tm = tm;
  } else {
    record.tm = static_cast<decltype(record.tm)>(tm);
  }
}
void set_time(AuditDns&, uint64_t) {}

template <typename Record, uint32_t command, uint16_t type = 0>
void load_record(Store& store, const Node& node) {
  Record record = {};
  Texts texts;
  uint64_t age = 0;
  const auto read_other = [&](const std::string& name, const Node& value) {
    if (name == "tm" || name.ends_with("_length")) value.fail("unknown member");
    if (name == "age") read_value(value, age);
    return name == "age" || read_text(name, value, record, texts);
  };
  read_record(node, record, {"mac", std::is_same_v<Record, AuditDns> ? "nat_ip" : "ip"}, read_other);
  const uint64_t present = calendar_seconds();
  const uint64_t tm = present - std::min(age, present);
  set_time(record, tm);
  add_audit_record(store, command, type, host_of(record), tm, bytes_of(record, texts));
}

struct List {
  const char* name;
  void (*load)(Store& store, const Node& node);
};

constexpr List kLists[] = {
    {"url", load_record<AuditUrl, kAuditInfo, kSectionUrl>},
    {"qq", load_record<AuditQq, kAuditInfo, kSectionQq>},
    {"bbs", load_record<AuditBbs, kAuditInfo, kSectionBbs>},
    {"mail", load_record<AuditMail, kAuditInfo, kSectionMail>},
    {"ct", load_record<AuditCt, kAuditInfo, kSectionCt>},
    {"other", load_record<AuditOther, kAuditInfo, kSectionOther>},
    {"dns", load_record<AuditDns, kAuditInfo, kSectionDns>},
    {"post", load_record<AuditCollected, kAuditPostInfo>},
    {"sj2_httpget", load_record<AuditCollected, kAuditHttpGetInfo>},
    {"sj2_zhanghao", load_record<AuditCollected, kAuditZhanghao>},
    {"sj2_ctinfo", load_record<AuditCollected, kAuditCtInfo>},
    {"sj2_mail", load_record<AuditCollectedMail, kAuditMailGet>},
};

void load_audit(Store& store, const Node& node) {
  node.each_member([&store](const std::string& name, const Node& value) {
    const auto list = std::ranges::find(kLists, name, [](const List& each) { return each.name; });
    if (list == std::end(kLists)) value.fail("unknown list");
    value.each_element([&](const Node& element) { list->load(store, element); });
  });
  keep_audit_quotas(store);
}

void clear_audit(Store& store) { store.execute("DELETE FROM audit_record"); }

int64_t count_audit(Store& store) { return store.number("SELECT count(*) FROM audit_record"); }

}  // namespace

const Section kAuditSection = {"audit", load_audit, clear_audit, count_audit};
