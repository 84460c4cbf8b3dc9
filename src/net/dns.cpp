// dns: the DNS proxy with its cache, its fixed answers ("url") and the domains that it treats apart
// ("tebie").
#include "records/dns.h"

#include <algorithm>

#include "args/print.h"
#include "net/commands.h"
#include "order/exchange.h"
#include "order/order.h"
#include "platform/list.h"

namespace {

// ---- Settings, cache and questions ----

bool parse_settings(DnsSettings& settings, const Args& args) {
  args.take(3, settings.en, settings.acc_act, settings.min_tm, settings.max_tm, settings.ct_show_name);
  settings.log = args.number(10);

  char room[256];
  char* servers[3];
  copy_text(room, args[8]);
  const int count4 = split_string(room, ',', servers, 3);
  for (int i = 0; i < std::min(count4, 2); ++i) settings.dns4[i] = {get_ip_from_str(servers[i])};
  if (count4 == 1) settings.dns4[1] = settings.dns4[0];
  copy_text(room, args[9]);
  const int count6 = split_string(room, ' ', servers, 3);
  for (int i = 0; i < count6; ++i) StrToIp6(servers[i], &settings.dns6[i]);
  return true;
}

// A server that is none shows as nothing.
template <typename Address>
void print_servers(const char* title, const Address (&servers)[3]) {
  print("%s=", title);
  for (const Address& server : servers) {
    if (&server != servers) print(" ");
    if (server != Address{}) print("%s", server);
  }
  print("\n");
}

void print_settings(const DnsSettings& settings) {
  print(" en: %d  acc_act: %d  max_tm=%d min_tm=%d ct_show_name=%d log=%d\n", settings.en, settings.acc_act,
        settings.max_tm, settings.min_tm, settings.ct_show_name, settings.log);
  print_servers("dns", settings.dns4);
  print_servers("dns6", settings.dns6);
}

// The next text of a length, or what the record holds of it.
std::string_view take_text(AnswerCursor& answer, uint32_t length) {
  const std::string_view text(reinterpret_cast<const char*>(answer.here()), std::min(length, answer.room()));
  answer.skip(length);
  return text;
}

void print_cache(const Answer& answer) {
  const auto count = answer.get<int32_t>(kListCountOffset);
  print("num: %d\nid    typeid wanid ttd tm  dns\t\t ip_list\t \n\n", count);
  AnswerCursor cursor(answer, kListEntriesOffset);
  DnsCacheEntry entry;
  for (int32_t id = 0; id < count && cursor.read(entry); ++id) {
    print("%5d %6d %5d %3d %3lu ", id, entry.typeid_, entry.wanid, entry.ttd, entry.tm);
    print("%s ", take_text(cursor, entry.name_length));
    for (const Ip4& ip : cursor.entries<Ip4>(entry.v4_count)) print(" %s,", ip);
    for (const Ip6& ip : cursor.entries<Ip6>(entry.v6_count)) print(" %s,", ip);
    print("\n");
  }
}

void print_addresses(const DnsLookup& lookup) {
  print("ip_num: %d \n", lookup.count);
  for (uint32_t i = 0; i < std::min(lookup.count, 3u); ++i) print("  %s \n", lookup.ips[i]);
}

// ---- Domains treated apart ----

bool parse_tebie_add(DnsTebie& tebie, const Args& args) {
  copy_text(tebie.name, args[4]);
  tebie.ip = {get_ip_from_str(args[5])};
  print("add tebie %s ,0x%x \n", tebie.name, tebie.ip.value);
  return true;
}

bool parse_tebie_del(DnsTebie& tebie, const Args& args) {
  copy_text(tebie.name, args[4]);
  if (args.count() > 4) {
    print("del tebie dns %s\n", tebie.name);
  } else {
    print("del all tebie\n");
  }
  return true;
}

bool parse_tebie_test(DnsTebie& tebie, const Args& args) {
  copy_text(tebie.name, args[4]);
  print("test tebie dns %s\n", tebie.name);
  return true;
}

// ---- Fixed answers ----

bool parse_url(DnsUrl& url, const Args& args) {
  constexpr std::string_view kScheme = "http://";
  copy_text(url.name, args[4]);
  const uint32_t gw_flag = args.number(6);
  if (gw_flag != 0) {
    url.kind = gw_flag == 2 ? kUrlGatewayCompared : kUrlGateway;
    return true;
  }
  const char* target = args[5];
  if (*target == '\0') return false;
  if (std::string_view(target).starts_with(kScheme)) target += kScheme.size();
  url.ip = {get_ip_from_str(target)};
  url.kind = kUrlIp;
  if (url.ip.value != 0) return true;
  DnsUrlOtherName other = {};
  copy_text(other.name, args[4]);
  other.kind = kUrlName;
  copy_text(other.other_name, target);
  memcpy(&url, &other, sizeof url);
  return true;
}

bool parse_url_name(DnsUrl& url, const Args& args) {
  copy_text(url.name, args[4]);
  return true;
}

constexpr const char* kKindTexts[] = {"IP", "", "GWIP", "GWIP_CMP"};  // from kUrlIp on

void print_urls(const Answer& answer, uint32_t count) {
  print("id  name                ipstr                type\n");
  AnswerCursor cursor(answer, 0);
  DnsUrlEntry entry;
  for (uint32_t id = 0; id < count && cursor.read(entry); ++id) {
    const std::string_view name = take_text(cursor, entry.name_length);
    std::string_view target = take_text(cursor, entry.other_name_length);
    char room[kFieldRoom];
    const bool is_known = entry.kind >= kUrlIp && entry.kind < kUrlIp + std::size(kKindTexts);
    if (entry.kind == kUrlIp) target = text_of(entry.ip, room);
    if (entry.kind == kUrlGateway || entry.kind == kUrlGatewayCompared) target = "";
    print("%-3d %-20s %-20s %s\n", id, name, target, is_known ? kKindTexts[entry.kind - kUrlIp] : "");
  }
}

// The result is no error here but the number of entries, and the status the same whatever happens.
int run_url_list(const Args&, const CommandEntry*) {
  constexpr int kStatusNoMemory = -1;
  Exchange exchange(kModuleDns, kDnsUrlList, kMaxRecordSize);
  if (!exchange.has_record()) return kStatusNoMemory;
  if (exchange.send()) print_urls(Answer(exchange.payload()), exchange.result());
  return kStatusRejected;
}

// ---- Tables ----

// clang-format off
constexpr SubCommand kTebie[] = {
    {"add", kModuleDns, kDnsTebieAdd, 1024, sizeof(DnsTebie), 6, "dnsname, ip", parse_as<parse_tebie_add>, nullptr},
    {"del", kModuleDns, kDnsTebieDel, 1024, sizeof(DnsTebie), 0, "dnsname, ip", parse_as<parse_tebie_del>, nullptr},
    {"test", kModuleDns, kDnsTebieTest, 1024, sizeof(DnsTebie), 5, "dnsname, ip", parse_as<parse_tebie_test>, nullptr},
};

constexpr SubCommand kUrl[] = {
    {"add", kModuleDns, kDnsUrlAdd, 1024, sizeof(DnsUrl), 7, "add dnsname ip gw_flag[0/1/2]", parse_as<parse_url>, nullptr},
    {"del", kModuleDns, kDnsUrlDel, 1024, sizeof(DnsUrl), 5, "del dnsname", parse_as<parse_url_name>, nullptr},
    {"delall", kModuleDns, kDnsUrlDelAll, 1024, sizeof(DnsUrl), 0, "", nullptr, nullptr},
    handled("list", run_url_list),
};

constexpr SubCommand kDns[] = {
    {"set", kModuleDns, kDnsSet, 1024, sizeof(DnsSettings), 10, "en[1:on]  acc_act(1:drop) min_tm max_tm ct_show_name dns(dns1,dns2) log", parse_as<parse_settings>, nullptr},
    {"get", kModuleDns, kDnsGet, 1024, sizeof(DnsSettings), 0, " ", nullptr, print_as<print_settings>},
    {"list", kModuleDns, kDnsList, 40480, 40000, 0, " ", nullptr, print_as<print_cache>},
    {"dnsc_clear", kModuleDns, kDnsCacheClear, 1024, 1024, 0, " ", nullptr, nullptr},
    {"getip", kModuleDns, kDnsGetIp, 1024, 1024, 4, "dns trys", parse_words<&DnsLookup::name, &DnsLookup::trys>, print_as<print_addresses>},
    group("tebie", kTebie),
    group("url", kUrl, " vek dns url add/del/delall/list\n"),
    {"debug", kModuleDns, kDnsDebug, 1024, 1024, 0, "", nullptr, nullptr},
    {"special_debug", kModuleDns, kDnsSpecialDebug, 1024, sizeof(DnsSwitch), 4, "en[1:on]", parse_words<&DnsSwitch::en>, nullptr},
};
// clang-format on

}  // namespace

int cmd_dns(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kDns, argc, argv, entry);
}
