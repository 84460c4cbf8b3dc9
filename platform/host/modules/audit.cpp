// The behaviour audit (module 69): whose traffic is audited, and the records of it, which only packets would
// bring. Of each kind the newest are kept, as many as its quota says; what is switched off has none.
#include "modules/audit.h"

#include <algorithm>
#include <string>

#include "modules/checks.h"
#include "modules/general.h"
#include "modules/modules.h"
#include "state/settings.h"

namespace {

// ---- Settings ----

constexpr const char* kStream = "sj ";
constexpr const char* kPosts = "sj post ";
constexpr const char* kCollectors = "sj2 ";
constexpr const char* kDefaultAct = "ip_def act";

// A router fresh from the factory audits everyone.
constexpr AuditSettings kFirstStream = {1, 1, 100, 100, 100, 100, 100, 100, {}};
constexpr AuditPostSettings kFirstPosts = {1, {}, 100, 4096};
constexpr AuditCollectorSettings kFirstCollectors = {1, {}, 100, 100, 100, 100, 100, {}, 4096};
constexpr uint32_t kAudit = 1;

// The fields are kept each under its name behind that of their record.
template <typename Settings>
Settings get_settings(Store& store, const std::string& record, const Settings& at_first) {
  Settings settings = at_first;
  each_column(settings, [&]<typename Field>(const std::string& name, Field& field) {
    field = static_cast<Field>(get_setting(store, kModuleAudit, (record + name).c_str(), field));
  });
  return settings;
}

template <typename Settings>
void set_settings(Store& store, const std::string& record, const Settings& settings) {
  each_column(settings, [&](const std::string& name, const auto& field) {
    set_setting(store, kModuleAudit, (record + name).c_str(), field);
  });
}

AuditSettings stream_settings(Store& store) { return get_settings(store, kStream, kFirstStream); }
AuditPostSettings post_settings(Store& store) { return get_settings(store, kPosts, kFirstPosts); }

// POST requests are one list, which both commands fetch, and so its quota is one.
AuditCollectorSettings collector_settings(Store& store) {
  AuditCollectorSettings settings = get_settings(store, kCollectors, kFirstCollectors);
  const AuditPostSettings posts = post_settings(store);
  settings.post_num = posts.post_maxnum;
  settings.post_len = posts.post_maxlen;
  return settings;
}

// Switched off, nothing is kept, whatever the quotas.
void set_stream(Store& store, const AuditSettings& settings) {
  check_switch(settings.en);
  check_switch(settings.info_en);
  set_settings(store, kStream, settings.en != 0 ? settings : AuditSettings{});
  keep_audit_quotas(store);
}

void set_posts(Store& store, const AuditPostSettings& settings) {
  check_switch(settings.en);
  set_settings(store, kPosts, settings.en != 0 ? settings : AuditPostSettings{});
  keep_audit_quotas(store);
}

void set_collectors(Store& store, const AuditCollectorSettings& settings) {
  check_switch(settings.en);
  set_settings(store, kCollectors, settings.en != 0 ? settings : AuditCollectorSettings{});
  AuditPostSettings posts = post_settings(store);
  posts.post_maxnum = settings.en != 0 ? settings.post_num : 0;
  posts.post_maxlen = settings.en != 0 ? settings.post_len : 0;
  set_settings(store, kPosts, posts);
  keep_audit_quotas(store);
}

void get_stream(Store& store, AuditSettings& settings) { settings = stream_settings(store); }
void get_posts(Store& store, AuditPostSettings& settings) { settings = post_settings(store); }
void get_collectors(Store& store, AuditCollectorSettings& settings) { settings = collector_settings(store); }

// ---- Who is audited ----

// As much as the answer to ip_get holds.
constexpr uint32_t kMaxHostListBytes = 102400;

void set_hosts(Store& store, const AuditHostList& hosts, Order& order) {
  refuse_unless(hosts.list.bytes <= kMaxHostListBytes - sizeof hosts, kTableFull);
  const std::vector<uint8_t> record = order.request_bytes(uint32_t{sizeof hosts} + hosts.list.bytes);
  std::span<const uint8_t> lists(record.data() + sizeof hosts, hosts.list.bytes);
  check_lists(hosts, lists);
  refuse_unless(lists.empty(), kBadRecord);
  store.execute("INSERT OR REPLACE INTO audit_hosts VALUES (0, ?)", record);
}

std::vector<uint8_t> host_list(Store& store) {
  std::vector<uint8_t> record(sizeof(AuditHostList));
  Statement row = store.query("SELECT record FROM audit_hosts");
  if (row.next()) row.read(record);
  return record;
}

void get_hosts(Store& store, Order& order) {
  const std::vector<uint8_t> record = host_list(store);
  order.answer_bytes(0, record.data(), static_cast<uint32_t>(record.size()));
}

// 1: hosts that are not in the list are audited all the same.
void default_action(Store& store, AuditDefault& action) {
  if (action.is_set != 0) {
    check_switch(action.act);
    set_setting(store, kModuleAudit, kDefaultAct, action.act);
  }
  action.act = get_setting(store, kModuleAudit, kDefaultAct, kAudit);
}

bool is_in(Store&, const V4Range& range, const IpAddress& host) {
  uint32_t ip;
  memcpy(&ip, host.bytes, sizeof ip);
  return host.family.value() == 4 && range.first.value <= ntohl(ip) && ntohl(ip) <= range.last.value;
}
bool is_in(Store&, const V6Range& range, const IpAddress& host) {
  return host.family.value() == 6 && memcmp(range.first.bytes, host.bytes, sizeof host.bytes) <= 0 &&
         memcmp(host.bytes, range.last.bytes, sizeof host.bytes) <= 0;
}
// A host is of the group of the account that it is logged in with.
bool is_in(Store& store, const NumberRange& groups, const IpAddress& host) {
  Ip4 ip;
  memcpy(&ip, host.bytes, sizeof ip);
  return host.family.value() == 4 &&
         store.number(
             "SELECT count(*) FROM session JOIN account USING (userid) WHERE ip = ? AND gid BETWEEN ? AND ?",
             ip, groups.first, groups.last) != 0;
}

bool is_audited(Store& store, const IpAddress& host) {
  if (get_setting(store, kModuleAudit, kDefaultAct, kAudit) == kAudit) return true;
  const std::vector<uint8_t> record = host_list(store);
  AuditHostList hosts;
  memcpy(&hosts, record.data(), sizeof hosts);
  const uint8_t* at = record.data() + sizeof hosts;
  bool is_found = false;
  AuditHostList::each_list(hosts, [&]<typename Range>(const char*, ListOf<Range> list) {
    for (uint32_t i = 0; i < list.count; ++i, at += sizeof(Range)) {
      Range range;
      memcpy(&range, at, sizeof range);
      is_found = is_found || is_in(store, range, host);
    }
  });
  return is_found;
}

// ---- Records ----

// As much as a fetch holds.
constexpr uint32_t kMaxBytes =
    0xfa000 - sizeof(OrderRecord) - sizeof(AuditListHead) - kSectionDns * sizeof(AuditSection);

// Records of a command's answer, in the stream those of a section.
struct Kind {
  const char* name;
  uint32_t command;
  uint16_t type;
  uint32_t most;
};

// Accounts of every sort have the one quota for accounts.
std::vector<Kind> kinds(Store& store) {
  AuditSettings stream = stream_settings(store);
  if (stream.info_en == 0) stream = {};
  const AuditCollectorSettings collectors = collector_settings(store);
  return {{"url", kAuditInfo, kSectionUrl, stream.url_num},
          {"qq", kAuditInfo, kSectionQq, stream.qq_num},
          {"bbs", kAuditInfo, kSectionBbs, stream.bbs_num},
          {"mail", kAuditInfo, kSectionMail, stream.mail_num},
          {"ct", kAuditInfo, kSectionCt, stream.ct_num},
          {"other", kAuditInfo, kSectionOther, stream.qq_num},
          {"dns", kAuditInfo, kSectionDns, stream.dns_num},
          {"httpget", kAuditHttpGetInfo, 0, collectors.httpget_num},
          {"post", kAuditPostInfo, 0, collectors.post_num},
          {"zhanghao", kAuditZhanghao, 0, collectors.qq_num},
          {"ctinfo", kAuditCtInfo, 0, collectors.ct_num},
          {"mail", kAuditMailGet, 0, collectors.mail_num}};
}

// Bodies of POST requests lose what is beyond the limit.
void cut_posts(Store& store) {
  const uint32_t most = post_settings(store).post_maxlen;
  std::vector<std::pair<int64_t, std::vector<uint8_t>>> posts;
  Statement row = store.query("SELECT id, record FROM audit_record WHERE command = ? AND length(record) > ?",
                              kAuditPostInfo, uint64_t{sizeof(AuditCollected)} + most);
  while (row.next()) {
    auto& [id, record] = posts.emplace_back();
    row.read(id, record);
  }
  for (auto& [id, record] : posts) {
    record.resize(sizeof(AuditCollected) + most);
    memcpy(record.data() + offsetof(AuditCollected, data_length), &most, sizeof most);
    store.execute("UPDATE audit_record SET record = ? WHERE id = ?", record, id);
  }
}

// Puts the records of a kind into the answer, from an offset on, oldest first, as far as they fit. Returns
// their number.
uint16_t answer_records(Store& store, Order& order, uint32_t command, uint16_t type, uint32_t& offset) {
  uint16_t count = 0;
  Statement row = store.query(
      "SELECT record FROM audit_record WHERE command = ? AND type = ? ORDER BY tm, id", command, type);
  for (std::vector<uint8_t> record; row.next(); ++count) {
    row.read(record);
    const auto size = static_cast<uint32_t>(record.size());
    if (!order.answer_bytes(offset, record.data(), size)) break;
    offset += size;
  }
  return count;
}

void info(Store& store, Order& order) {
  AuditListHead head = {sizeof head, 0};
  for (const Kind& kind : kinds(store)) {
    if (kind.command != kAuditInfo) continue;
    uint32_t end = head.datalen + uint32_t{sizeof(AuditSection)};
    const AuditSection section = {kind.type, answer_records(store, order, kAuditInfo, kind.type, end), {}};
    if (section.num == 0) continue;
    order.answer(section, head.datalen);
    head = {end, head.tol_num + section.num};
  }
  order.answer(head);
}

void list(Store& store, Order& order) {
  AuditListHead head = {sizeof head, 0};
  head.tol_num = answer_records(store, order, order.command(), 0, head.datalen);
  order.answer(head);
}

// The commands answer nothing but their result, so the reports go where errinfo finds them.
void report(Store& store, const std::string& what, bool (*is_of_it)(const Kind& kind)) {
  std::string text = "audit " + what;
  int64_t bytes = 0;
  for (const Kind& kind : kinds(store)) {
    if (!is_of_it(kind)) continue;
    Statement row = store.query(
        "SELECT count(*), coalesce(sum(length(record)), 0) FROM audit_record WHERE command = ? AND type = ?",
        kind.command, kind.type);
    int64_t count = 0;
    int64_t its_bytes = 0;
    if (row.next()) row.read(count, its_bytes);
    text +=
        std::string(" ") + kind.name + " " + std::to_string(count) + "/" + std::to_string(kind.most) + ",";
    bytes += its_bytes;
  }
  store_report(store, kModuleAudit, text + " " + std::to_string(bytes) + " bytes");
}

void pool_show(Store& store) {
  report(store, "pool:", [](const Kind& kind) { return kind.command == kAuditInfo; });
}

void memory(Store& store) {
  report(store, "collectors:", [](const Kind& kind) { return kind.command != kAuditInfo; });
}

// The notices have gone to the listener by themselves.
void debug(Store& store, const AuditDebug& request) {
  store_report(store, kModuleAudit, "audit debug: " + std::to_string(request.num) + " test notices");
}

void forget(Store& store) { store.execute("DELETE FROM audit_record"); }

constexpr const char* kSchema[] = {R"(
CREATE TABLE audit_hosts (id INTEGER PRIMARY KEY CHECK (id = 0), record BLOB NOT NULL);
CREATE TABLE audit_record (
  id INTEGER PRIMARY KEY,
  command INTEGER NOT NULL,
  type INTEGER NOT NULL,
  tm INTEGER NOT NULL,
  record BLOB NOT NULL
);
CREATE INDEX audit_record_kind ON audit_record (command, type, tm))"};

constexpr Command kCommands[] = {
    {kAuditSet, kWrites, run_as<set_stream>},
    {kAuditGet, kReads, run_as<get_stream>},
    {kAuditPoolShow, kWrites, run_as<pool_show>},
    {kAuditInfo, kReads, run_as<info>},
    {kAuditPostSet, kWrites, run_as<set_posts>},
    {kAuditPostGet, kReads, run_as<get_posts>},
    {kAuditCollectorSet, kWrites, run_as<set_collectors>},
    {kAuditCollectorGet, kReads, run_as<get_collectors>},
    {kAuditPostInfo, kReads, run_as<list>},
    {kAuditHttpGetInfo, kReads, run_as<list>},
    {kAuditCtInfo, kReads, run_as<list>},
    {kAuditZhanghao, kReads, run_as<list>},
    {kAuditMailGet, kReads, run_as<list>},
    {kAuditMemory, kWrites, run_as<memory>},
    {kAuditDebug, kWrites, run_as<debug>},
    {kAuditHostsSet, kWrites, run_as<set_hosts>},
    {kAuditHostsGet, kReads, run_as<get_hosts>},
    {kAuditDefault, kWrites, run_as<default_action>},
};

}  // namespace

const Module kAuditModule = {kModuleAudit, kCommands, kSchema, forget};

void add_audit_record(Store& store, uint32_t command, uint16_t type, const IpAddress& host, uint64_t tm,
                      const std::vector<uint8_t>& record) {
  if (!is_audited(store, host)) return;
  store.execute("INSERT INTO audit_record (command, type, tm, record) VALUES (?, ?, ?, ?)", command, type, tm,
                record);
}

void keep_audit_quotas(Store& store) {
  cut_posts(store);
  for (const Kind& kind : kinds(store)) {
    store.execute(
        "DELETE FROM audit_record WHERE id IN (SELECT id FROM audit_record WHERE command = ? AND type = ?"
        "  ORDER BY tm DESC, id DESC LIMIT -1 OFFSET ?)",
        kind.command, kind.type, kind.most);
  }
  // What one fetch could not show, the oldest of all kinds first.
  store.execute(
      "DELETE FROM audit_record WHERE id IN (SELECT id FROM (SELECT id, sum(length(record)) OVER"
      "  (PARTITION BY command ORDER BY tm DESC, id DESC) AS bytes FROM audit_record) WHERE bytes > ?)",
      kMaxBytes);
}
