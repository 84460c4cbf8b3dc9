// The DNS proxy (module 4): its settings, fixed answers ("url"), domains treated apart ("tebie"), and the
// names that getip has asked for. dnsmasq answers the hosts of the pools from them (modules/dnsmasq.h).
#include "modules/dns.h"

#include <arpa/inet.h>

#include <algorithm>

#include "linux/resolver.h"
#include "modules/checks.h"
#include "modules/dnsmasq.h"
#include "modules/general.h"
#include "modules/modules.h"
#include "platform/address.h"
#include "state/settings.h"

namespace {

constexpr int kMaxUrls = 1024;
constexpr int kMaxTebie = 256;
constexpr int kMaxCached = 1024;
constexpr uint32_t kMaxCacheTime = 7 * 24 * 60 * 60;
constexpr uint32_t kMaxMinTime = 60 * 60;  // dnsmasq's
constexpr uint32_t kMaxTries = 10;
constexpr const char* kSpecialDebug = "special_debug";

// ---- Settings ----

bool is_server(Ip4 ip) { return is_host_ip(ip) || (ntohl(ip.value) >> 24) == 127; }
// Neither a group of hosts nor one that only a link has, of which nothing says which one.
bool is_server(const Ip6& ip) {
  return ip.bytes[0] != 0xff && (ip.bytes[0] != 0xfe || (ip.bytes[1] & 0xc0) != 0x80);
}

// An address that was mistyped is no name: none ends in a number (RFC 3696, section 2).
void check_dns_name(std::string_view name) {
  check_domain(name);
  const std::string_view last_label = name.substr(name.find_last_of('.') + 1);
  refuse_unless(last_label.find_first_not_of("0123456789") != last_label.npos, kBadName);
}

// No max_tm means no bound.
void set(Store& store, const DnsSettings& settings) {
  for (const uint32_t value : {settings.en, settings.acc_act, settings.ct_show_name, settings.log}) {
    check_switch(value);
  }
  refuse_unless(settings.min_tm <= kMaxMinTime && settings.max_tm <= kMaxCacheTime, kBadTime);
  refuse_unless(settings.max_tm == 0 || settings.min_tm <= settings.max_tm, kBadRange);
  for (const Ip4& server : settings.dns4) refuse_unless(server == Ip4{} || is_server(server), kBadAddress);
  for (const Ip6& server : settings.dns6) refuse_unless(is_server(server), kBadAddress);
  store.put("dns_settings", Column{"id", 0}, settings);
}

void get(Store& store, DnsSettings& settings) { settings = dns_settings(store); }

// ---- Cache ----

constexpr const char* kForgetRunOut = "DELETE FROM dns_cache WHERE age(seen) >= ttl";

void list(Store& store, Order& order) {
  store.execute(kForgetRunOut);
  RecordList answer(order);
  Statement row = store.query(
      "SELECT name, v4, v6, ttl - age(seen), typeid, wanid, age(seen) FROM dns_cache ORDER BY name");
  while (row.next()) {
    DnsCacheEntry entry = {};
    std::string name;
    std::vector<uint8_t> v4;
    std::vector<uint8_t> v6;
    row.read(name, v4, v6, entry.ttd, entry.typeid_, entry.wanid, entry.tm);
    entry.v4_count = static_cast<uint16_t>(v4.size() / sizeof(Ip4));
    entry.v6_count = static_cast<uint16_t>(v6.size() / sizeof(Ip6));
    entry.name_length = static_cast<uint32_t>(name.size());
    std::vector<uint8_t> bytes(sizeof entry);
    memcpy(bytes.data(), &entry, sizeof entry);
    bytes.insert(bytes.end(), name.begin(), name.end());
    bytes.insert(bytes.end(), v4.begin(), v4.end());
    bytes.insert(bytes.end(), v6.begin(), v6.end());
    answer.add_bytes(bytes.data(), static_cast<uint32_t>(bytes.size()));
  }
}

void clear_cache(Store& store) {
  store.execute("DELETE FROM dns_cache");
  clear_dnsmasq_cache(store);
}

template <typename Address>
std::vector<uint8_t> bytes_of(const Address* addresses, int count) {
  const auto* first = reinterpret_cast<const uint8_t*>(addresses);
  return {first, first + sizeof(Address) * static_cast<size_t>(count)};
}

// In a full cache the names that would run out first make room.
void remember(Store& store, const DnsSettings& settings, std::string_view name, const Resolved& resolved) {
  const uint32_t most = settings.max_tm != 0 ? settings.max_tm : kMaxCacheTime;
  store.execute("INSERT OR REPLACE INTO dns_cache (name, seen, ttl, v4, v6) VALUES (?, present(), ?, ?, ?)",
                name, std::clamp(resolved.ttl, settings.min_tm, most),
                bytes_of(resolved.v4, resolved.v4_count), bytes_of(resolved.v6, resolved.v6_count));
  store.execute(
      "DELETE FROM dns_cache WHERE name IN"
      "  (SELECT name FROM dns_cache ORDER BY ttl - age(seen) DESC LIMIT -1 OFFSET ?)",
      kMaxCached);
}

// ---- Questions ----

void answer_ips(DnsLookup& lookup, const std::vector<uint8_t>& v4) {
  const size_t bytes = std::min(v4.size(), sizeof lookup.ips);
  lookup.count = static_cast<uint32_t>(bytes / sizeof(Ip4));
  if (bytes > 0) memcpy(lookup.ips, v4.data(), bytes);
}

// Follows fixed answers from name to name. False, with the name they have led to, where none has an address.
bool answer_fixed(Store& store, std::string& name, DnsLookup& lookup) {
  for (int steps = 0; steps <= kMaxUrls; ++steps) {
    Statement row = store.query("SELECT kind, ip, other_name FROM dns_url WHERE name = ?", name);
    if (!row.next()) return false;
    uint8_t kind;
    Ip4 ip;
    row.read(kind, ip, name);
    if (kind == kUrlName) continue;
    std::vector<Ip4> ips;
    Statement own = store.query("SELECT DISTINCT srv_ip FROM dhcp_pool");
    while (kind != kUrlIp && own.next()) own.read(ips.emplace_back());
    if (kind == kUrlIp) ips = {ip};
    refuse_unless(!ips.empty(), kUnknownHost);
    answer_ips(lookup, bytes_of(ips.data(), static_cast<int>(ips.size())));
    return true;
  }
  return false;
}

bool answer_cached(Store& store, std::string_view name, DnsLookup& lookup) {
  store.execute(kForgetRunOut);
  Statement row = store.query("SELECT v4 FROM dns_cache WHERE name = ?", name);
  if (!row.next()) return false;
  std::vector<uint8_t> v4;
  row.read(v4);
  answer_ips(lookup, v4);
  return true;
}

// Nobody waits for the servers but the one who asks: the transaction ends before, and another begins behind.
void answer_asked(Store& store, const std::string& name, DnsLookup& lookup) {
  const DnsSettings settings = dns_settings(store);
  const std::vector<std::string> servers = dns_servers(settings);
  refuse_unless(!servers.empty(), kNoServer);
  store.commit();
  Resolved resolved = {};
  const ResolveResult result = resolve_name(servers, name, lookup.trys, resolved);
  store.begin();
  refuse_unless(result != kNoSuchName, kUnknownHost);
  refuse_unless(result == kResolved, kNoAnswer);
  remember(store, settings, name, resolved);
  answer_ips(lookup, bytes_of(resolved.v4, resolved.v4_count));
}

void get_ip(Store& store, DnsLookup& lookup) {
  std::string name(text(lookup.name));
  check_dns_name(name);
  refuse_unless(lookup.trys <= kMaxTries, kBadNumber);
  if (!answer_fixed(store, name, lookup) && !answer_cached(store, name, lookup)) {
    answer_asked(store, name, lookup);
  }
}

// ---- Fixed answers ----

// A name that stands for another must not stand for itself in the end.
void check_other_name(Store& store, std::string_view name, std::string_view other_name) {
  check_dns_name(other_name);
  refuse_unless(store.number("WITH RECURSIVE behind(name) AS ("
                             "  SELECT ?2 UNION SELECT other_name FROM dns_url JOIN behind USING (name)"
                             "  WHERE kind = ?3)"
                             "SELECT count(*) FROM behind WHERE name = ?1 COLLATE NOCASE",
                             name, other_name, kUrlName) == 0,
                kBadDestination);
}

void url_add(Store& store, const DnsUrl& url, Order& order) {
  const std::string_view name = text(url.name);
  check_dns_name(name);
  refuse_unless(url.kind >= kUrlIp && url.kind <= kUrlGatewayCompared, kBadType);
  refuse_unless(url.kind != kUrlIp || is_host_ip(url.ip), kBadAddress);
  const auto other = order.request<DnsUrlOtherName>();
  const std::string_view other_name = url.kind == kUrlName ? text(other.other_name) : "";
  if (url.kind == kUrlName) check_other_name(store, name, other_name);
  store.execute("INSERT OR REPLACE INTO dns_url VALUES (?, ?, ?, ?)", name, url.kind,
                url.kind == kUrlIp ? url.ip : Ip4{}, other_name);
  refuse_if_full(store, "dns_url", kMaxUrls);
}

void url_del(Store& store, const DnsUrl& url) {
  refuse_if_none(store.execute("DELETE FROM dns_url WHERE name = ?", url.name));
}

void url_del_all(Store& store) { store.execute("DELETE FROM dns_url"); }

void url_list(Store& store, Order& order) {
  uint32_t count = 0;
  uint32_t offset = 0;
  Statement row = store.query("SELECT name, kind, ip, other_name FROM dns_url ORDER BY name");
  while (row.next()) {
    DnsUrlEntry entry = {};
    std::string name;
    std::string other_name;
    row.read(name, entry.kind, entry.ip, other_name);
    entry.name_length = static_cast<uint8_t>(name.size());
    entry.other_name_length = static_cast<uint8_t>(other_name.size());
    const std::string names = name + other_name;
    const auto names_size = static_cast<uint32_t>(names.size());
    if (order.room(offset) < sizeof entry + names_size) break;
    order.answer(entry, offset);
    order.answer_bytes(offset + uint32_t{sizeof entry}, names.data(), names_size);
    offset += uint32_t{sizeof entry} + names_size;
    ++count;
  }
  order.answer_result(count);
}

// ---- Domains treated apart ----

void tebie_add(Store& store, const DnsTebie& tebie) {
  check_dns_name(text(tebie.name));
  refuse_unless(is_host_ip(tebie.ip), kBadAddress);
  store.execute("INSERT OR REPLACE INTO dns_tebie VALUES (:name, :ip)", tebie);
  refuse_if_full(store, "dns_tebie", kMaxTebie);
}

// No name stands for all of them.
void tebie_del(Store& store, const DnsTebie& tebie) {
  if (tebie.name[0] == '\0') {
    store.execute("DELETE FROM dns_tebie");
  } else {
    refuse_if_none(store.execute("DELETE FROM dns_tebie WHERE name = ?", tebie.name));
  }
}

// Whether a name is such a domain, or in one.
void tebie_test(Store& store, const DnsTebie& tebie) {
  check_dns_name(text(tebie.name));
  refuse_unless(store.number("SELECT count(*) FROM dns_tebie"
                             "  WHERE ?1 = name OR lower(?1) LIKE '%.' || lower(replace(name, '_', '\\_'))"
                             "  ESCAPE '\\'",
                             tebie.name) != 0,
                kNoSuchEntry);
}

// ---- Reports ----

// Leaves a report where errinfo finds it; the special one tells the domains treated apart.
void debug(Store& store) {
  const auto count = [&store](const char* what, const char* table) {
    return std::to_string(store.number((std::string("SELECT count(*) FROM ") + table).c_str())) + what;
  };
  std::string report = "dns: proxy " + std::string(dns_settings(store).en != 0 ? "on, " : "off, ") +
                       count(" names cached, ", "dns_cache") + count(" fixed answers, ", "dns_url") +
                       count(" domains treated apart", "dns_tebie");
  Statement row = store.query("SELECT name, ip FROM dns_tebie WHERE ? ORDER BY name",
                              get_setting(store, kModuleDns, kSpecialDebug));
  for (const char* separator = ": "; row.next(); separator = ", ") {
    std::string name;
    Ip4 ip;
    row.read(name, ip);
    char room[64];
    report += separator + name + " " + IpToStr(room, ip.value);
  }
  store_report(store, kModuleDns, report);
}

void special_debug(Store& store, const DnsSwitch& request) {
  check_switch(request.en);
  set_setting(store, kModuleDns, kSpecialDebug, request.en);
}

constexpr const char* kSchema[] = {R"(
CREATE TABLE dns_settings (
  id INTEGER PRIMARY KEY,
  en INTEGER NOT NULL,
  dns4_1 INTEGER NOT NULL,
  dns4_2 INTEGER NOT NULL,
  dns4_3 INTEGER NOT NULL,
  dns6_1 BLOB NOT NULL,
  dns6_2 BLOB NOT NULL,
  dns6_3 BLOB NOT NULL,
  acc_act INTEGER NOT NULL,
  max_tm INTEGER NOT NULL,
  min_tm INTEGER NOT NULL,
  ct_show_name INTEGER NOT NULL,
  log INTEGER NOT NULL
);
CREATE TABLE dns_cache (
  name TEXT PRIMARY KEY COLLATE NOCASE,
  seen INTEGER NOT NULL,
  ttl INTEGER NOT NULL,
  typeid INTEGER NOT NULL DEFAULT 0,
  wanid INTEGER NOT NULL DEFAULT 0,
  v4 BLOB NOT NULL,
  v6 BLOB NOT NULL,
  lab INTEGER NOT NULL DEFAULT 0          -- 1: a lab's word
) WITHOUT ROWID;
CREATE TABLE dns_url (
  name TEXT PRIMARY KEY COLLATE NOCASE,
  kind INTEGER NOT NULL,
  ip INTEGER NOT NULL,
  other_name TEXT NOT NULL COLLATE NOCASE
) WITHOUT ROWID;
CREATE TABLE dns_tebie (name TEXT PRIMARY KEY COLLATE NOCASE, ip INTEGER NOT NULL) WITHOUT ROWID)"};

constexpr Command kCommands[] = {
    {kDnsSet, kWrites, run_as<set>},
    {kDnsGet, kReads, run_as<get>},
    {kDnsList, kWrites, run_as<list>},
    {kDnsCacheClear, kWrites, run_as<clear_cache>},
    {kDnsGetIp, kWrites, run_as<get_ip>},
    {kDnsTebieAdd, kWrites, run_as<tebie_add>},
    {kDnsTebieDel, kWrites, run_as<tebie_del>},
    {kDnsUrlAdd, kWrites, run_as<url_add>},
    {kDnsUrlDel, kWrites, run_as<url_del>},
    {kDnsUrlDelAll, kWrites, run_as<url_del_all>},
    {kDnsUrlList, kReads, run_as<url_list>},
    {kDnsDebug, kWrites, run_as<debug>},
    {kDnsTebieTest, kReads, run_as<tebie_test>},
    {kDnsSpecialDebug, kWrites, run_as<special_debug>},
};

}  // namespace

const Module kDnsModule = {kModuleDns, kCommands, kSchema, clear_cache, follow_settings};

DnsSettings dns_settings(Store& store) {
  DnsSettings settings = {};
  Statement row = store.query(
      "SELECT en, dns4_1, dns4_2, dns4_3, dns6_1, dns6_2, dns6_3, acc_act, max_tm, min_tm, ct_show_name, log"
      "  FROM dns_settings");
  if (row.next()) row.read_fields(settings);
  return settings;
}

std::vector<std::string> dns_servers(const DnsSettings& settings) {
  std::vector<std::string> servers;
  // One that stands alone is kept twice.
  const auto add = [&servers](const char* server) {
    if (std::ranges::count(servers, server) == 0) servers.emplace_back(server);
  };
  char room[64];
  for (const Ip4& server : settings.dns4) {
    if (server != Ip4{}) add(IpToStr(room, server.value));
  }
  for (const Ip6& server : settings.dns6) {
    if (server != Ip6{}) add(Ip6ToStr(room, &server));
  }
  return servers;
}
