// sj, sj2: what the behaviour audit has seen of the users, its settings, and the notices that test its
// listener.
#include "records/audit.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>

#include "args/lists.h"
#include "args/print.h"
#include "audit/commands.h"
#include "order/order.h"
#include "platform/file.h"

namespace {

// ---- Requests ----

// Any word but "0" turns on, and then the others must be there.
bool parse_settings(AuditSettings& settings, const Args& args) {
  if (args.is(3, "0")) return true;
  settings.en = 1;
  args.take(4, settings.info_en, settings.ct_num, settings.url_num, settings.qq_num, settings.bbs_num,
            settings.mail_num, settings.dns_num);
  return args.count() >= 11;
}

bool parse_post_settings(AuditPostSettings& settings, const Args& args) {
  if (args.is(3, "0")) return true;
  settings.en = 1;
  args.take(4, settings.post_maxnum, settings.post_maxlen);
  return args.count() >= 6;
}

bool parse_collector_settings(AuditCollectorSettings& settings, const Args& args) {
  if (args.is(3, "0")) return true;
  settings.en = 1;
  args.take(4, settings.ct_num, settings.qq_num, settings.mail_num, settings.httpget_num, settings.post_num,
            settings.post_len);
  return args.count() >= 10;
}

bool parse_hosts(AuditHostList& hosts, const Args& args) {
  hosts.type = take_host_type(args.get(3), 0);
  ListWriter lists = ListWriter::behind(hosts);
  const RangeCounts counts = lists.add_hosts(hosts.type, args[3]);
  hosts.list = {counts.v4, counts.v6, lists.bytes()};
  return lists.fits();
}

bool parse_default(AuditDefault& action, const Args& args) {
  if (args.is(3, "get")) return true;
  action.is_set = 1;
  action.act = args.number(4);
  return args.is(3, "set") && args.count() >= 5;
}

// The addresses go up from notice to notice, each as the bytes of it that are a number here. Nobody waits for
// the notices to arrive, or asks whether they did.
void send_auth_info_to_vek_sj(const AuditDebug& request) {
  const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (descriptor < 0) return;
  setnonblocking(descriptor);
  sockaddr_in listener = {};
  listener.sin_family = AF_INET;
  listener.sin_port = htons(kNoticePort);
  for (uint32_t i = 0; i < request.num; ++i) {
    AuditNotice notice = {};
    notice.mac = request.mac;
    mac_add(&notice.mac, i, 4);
    notice.ip = {request.ip.value + i};
    snprintf(notice.account, sizeof notice.account, "136%08d", rand() % 100000000);
    notice.state = kNoticeLogin;
    notice.type = kNoticeMobile;
    sendto(descriptor, &notice, sizeof notice, 0, reinterpret_cast<const sockaddr*>(&listener),
           sizeof listener);
  }
  close(descriptor);
}

bool parse_debug(AuditDebug& request, const Args& args) {
  request.num = args.number(3);
  if (request.num != 0) {
    request.ip = args.ip(5);
    if (!args.read(4, request.mac) || request.ip.value == 0) return false;
    send_auth_info_to_vek_sj(request);
  }
  return true;
}

// ---- Settings as they are shown ----

void print_settings(const AuditSettings& settings) {
  print("en: %d info_en: %d ct_num: %d url_num: %d qq_num: %d bbs_num: %d mail_num :%d dns_num :%d\n",
        settings.en, settings.info_en, settings.ct_num, settings.url_num, settings.qq_num, settings.bbs_num,
        settings.mail_num, settings.dns_num);
}

void print_post_settings(const AuditPostSettings& settings) {
  print("en: %d post_maxnum: %d post_maxlen: %d\n", settings.en, settings.post_maxnum, settings.post_maxlen);
}

void print_collector_settings(const AuditCollectorSettings& settings) {
  print("en: %d ct_num: %d zhanghao_num: %d mail_num: %d httpget_num: %d post_num: %d post_len :%d\n",
        settings.en, settings.ct_num, settings.qq_num, settings.mail_num, settings.httpget_num,
        settings.post_num, settings.post_len);
}

void print_hosts(const Answer& answer) {
  const auto hosts = answer.get<AuditHostList>(0);
  AnswerCursor list(answer, sizeof hosts);
  if (hosts.type == kHostRanges) {
    print(" ip_duan:");
    print_addr_ranges(list, hosts.list.v4_count, hosts.list.v6_count);
  } else {
    print(" ip_group:");
    print_number_ranges(list, hosts.list.v4_count);
  }
  print("\n");
}

void print_default(const AuditDefault& action) { print("act = %d\n", action.act); }

// ---- Records ----

template <size_t kCount>
using Texts = std::array<std::string_view, kCount>;

// The texts behind a record, each cut to the most that is shown of it.
template <uint32_t... most, typename Record>
Texts<sizeof...(most)> texts_of(const Record& record, AnswerCursor behind) {
  constexpr uint32_t kMost[] = {most...};
  Texts<sizeof...(most)> texts;
  size_t i = 0;
  Record::each_list(record, [&](const char*, ListOf<char> text) {
    texts[i] = {reinterpret_cast<const char*>(behind.here()),
                std::min({text.count, behind.room(), kMost[i]})};
    behind.skip(text.count);
    ++i;
  });
  return texts;
}

template <typename Record>
consteval size_t text_count() {
  const Record record{};
  size_t count = 0;
  Record::each_list(record, [&](const char*, ListOf<char>) { ++count; });
  return count;
}

// Shows the next record. False where there is no whole one: then the walk is at its end.
using ShowRecord = bool(AnswerCursor& records);

// Records of a type; the numbers are the most that is shown of each text. Without any, none is shown.
template <typename Record, auto print_record, uint32_t... most>
bool show(AnswerCursor& records) {
  Record record;
  if (!records.read(record)) return false;
  const AnswerCursor behind(records.here(), bytes_behind(record));
  if (!records.skip(bytes_behind(record))) return false;
  if constexpr (sizeof...(most) == 0) {
    print_record(record);
  } else {
    static_assert(sizeof...(most) == text_count<Record>());
    print_record(record, texts_of<most...>(record, behind));
  }
  return true;
}

template <uint32_t kSize>
bool pass_over(AnswerCursor& records) {
  return records.skip(kSize);
}

void print_url(const AuditUrl& url, const Texts<7>& texts) {
  const auto& [address, user_agent, keyword, title, content_type, post_data, refer] = texts;
  print(
      "mac=%s ip=%s tm=%lu url=%s refer=%s user_agent=%s keyword=%s title=%s content_type=%s post_data=%s "
      "post_datalen=%d inport=%d fport=%d\n",
      url.head.mac, url.head.ip, url.head.tm, address, refer, user_agent, keyword, title, content_type,
      post_data, url.post_data_length, ntohs(url.inport.value), ntohs(url.fport.value));
}

void print_qq(const AuditQq& qq, const Texts<1>& texts) {
  print("mac=%s ip=%s tm=%lu shibie_id=%08X qq=%s\n", qq.mac, qq.ip, qq.tm, ntohl(qq.shibie_id.value),
        texts[0]);
}

void print_bbs(const AuditBbs& bbs, const Texts<3>& texts) {
  const auto& [url, account, content] = texts;
  print("mac=%s ip=%s tm=%lu shibie_id=%08X url=%s account=%s content=%s\n", bbs.head.mac, bbs.head.ip,
        bbs.head.tm, ntohl(bbs.head.shibie_id.value), url, account, content);
}

void print_mail(const AuditMail& mail, const Texts<3>& texts) {
  const auto& [from, to, title] = texts;
  print("mac=%s ip=%s tm=%lu shibie_id=%08X from=%s to=%s title=%s\n", mail.head.mac, mail.head.ip,
        mail.head.tm, ntohl(mail.head.shibie_id.value), from, to, title);
}

void print_ct(const AuditCt& ct) {
  print("mac=%s tm=%lu shibie_id=%08X in_ip=%s in_port=%d f_ip=%s f_port=%d\n", ct.head.mac, ct.head.tm,
        ntohl(ct.head.shibie_id.value), ct.head.ip, ntohs(ct.in_port.value), ct.f_ip, ntohs(ct.f_port.value));
}

void print_other(const AuditOther& other, const Texts<2>& texts) {
  const auto& [account, password] = texts;
  print("mac=%s ip=%s tm=%lu shibie_id=%08X account=%s password=%s\n", other.head.mac, other.head.ip,
        other.head.tm, ntohl(other.head.shibie_id.value), account, password);
}

void print_dns(const AuditDns& dns) {
  print("mac=%s dns_name=%s dns_ip=%s nat_ip=%s\n", dns.mac, dns.dns_name, dns.dns_ip, dns.nat_ip);
}

void print_posted(const AuditCollected& post, const Texts<1>& texts) {
  print("mac=%s ip=%s tm=%u shibie_id=%08X post_data=%s\n", post.mac, post.ip, post.tm,
        ntohl(post.shibie_id.value), texts[0]);
}

void print_http_get(const AuditCollected& get) {
  print("mac=%s ip=%s tm=%u shibie_id=%08X in_port=%d f_port=%d all_len=%d head_len=%d res_len=%d\n", get.mac,
        get.ip, get.tm, ntohl(get.shibie_id.value), ntohs(get.in_port.value), ntohs(get.f_port.value),
        get.all_len, get.head_len, get.res_len);
}

void print_post(const AuditCollected& post) {
  print("mac=%s ip=%s tm=%u shibie_id=%08X in_port=%d f_port=%d all_len=%d datalen=%d\n", post.mac, post.ip,
        post.tm, ntohl(post.shibie_id.value), ntohs(post.in_port.value), ntohs(post.f_port.value),
        post.all_len, post.data_length);
}

void print_account(const AuditCollected& account, const Texts<1>& texts) {
  print("mac=%s ip=%s tm=%u shibie_id=%08X datalen=%d account=%s\n", account.mac, account.ip, account.tm,
        ntohl(account.shibie_id.value), account.data_length, texts[0]);
}

void print_connection(const AuditCollected& connection, const Texts<1>& texts) {
  print("mac=%s ip=%s tm=%u shibie_id=%08X in_port=%d f_port=%d datalen=%d account=%s\n", connection.mac,
        connection.ip, connection.tm, ntohl(connection.shibie_id.value), ntohs(connection.in_port.value),
        ntohs(connection.f_port.value), connection.data_length, texts[0]);
}

void print_collected_mail(const AuditCollectedMail& mail, const Texts<3>& texts) {
  const auto& [from, to, title] = texts;
  print("mac=%s ip=%s tm=%lu shibie_id=%08X in_port=%d f_port=%d from=%s to=%s title=%s\n", mail.mac, mail.ip,
        mail.tm, ntohl(mail.shibie_id.value), ntohs(mail.in_port.value), ntohs(mail.f_port.value), from, to,
        title);
}

// ---- The stream and the lists ----

// What stands around the numbers of a section.
struct Banner {
  const char* before = nullptr;
  const char* behind = nullptr;
};

struct SectionType {
  Banner banner;
  Banner test_banner;  // of sj test, which knows no type without one
  ShowRecord* show;
};

// clang-format off
constexpr SectionType kSectionTypes[] = {
    {},
    {{"=======url==========", "=============="}, {"==========url===", "============"}, show<AuditUrl, print_url, 511, 127, 127, 511, 127, 511, 511>},
    {{"===========qq===========", "============="}, {"===========qq=========", "==========="}, show<AuditQq, print_qq, 127>},
    {{"============bbs========== ", "==========="}, {"=========bbs====== ", "==========="}, show<AuditBbs, print_bbs, 511, 127, 511>},
    {{"=========mail==========", "=============="}, {"==============mail======= ", "============="}, show<AuditMail, print_mail, 63, 63, 511>},
    {{"=========ct====== ", "==========="}, {"=========ct====== ", "==========="}, show<AuditCt, print_ct>},
    {{"=========other==========", "=============="}, {"=========other==========", "=============="}, show<AuditOther, print_other, 127, 127>},
    {{"=========quill_ct====== ", "==========="}, {}, pass_over<256>},
    {{"=========quill_qq====== ", "==========="}, {}, pass_over<0>},
    {{"=========dns====== ", "==========="}, {}, show<AuditDns, print_dns>},
};
// clang-format on
static_assert(std::size(kSectionTypes) == kSectionDns + 1);

// The records of an answer. New ones are begun as long as the answer's length says so; one that has begun is
// only bounded by the answer's record, whatever it says of itself.
class Records : public AnswerCursor {
 public:
  explicit Records(const Answer& answer)
      : AnswerCursor(answer, sizeof(AuditListHead)),
        last_(room() - (int64_t{answer.get<int32_t>(offsetof(AuditListHead, datalen))} -
                        int64_t{sizeof(AuditListHead)})) {}

  bool more() const { return room() > std::max(last_, int64_t{0}); }

 private:
  int64_t last_;  // the room that is left when all that the length counts has been walked
};

using WhichBanner = decltype(&SectionType::banner);

void print_stream(const Answer& answer, const char* line, WhichBanner banner_of) {
  const auto head = answer.get<AuditListHead>(0);
  print("%ssj info tol num=%d datalen=%d%s\n", line, head.tol_num, head.datalen, line);
  Records records(answer);
  for (AuditSection section; records.more() && records.read(section);) {
    const SectionType& type = kSectionTypes[section.type < std::size(kSectionTypes) ? section.type : 0];
    const Banner& banner = type.*banner_of;
    if (banner.before == nullptr) {
      print("type error\n");
      continue;
    }
    print("%ssj type=%d num=%d%s\n", banner.before, section.type, section.num, banner.behind);
    for (uint32_t left = section.num; left > 0 && type.show(records); --left) {
    }
  }
  print("\n\n");
}

void print_info(const Answer& answer) { print_stream(answer, "", &SectionType::banner); }
void print_test(const Answer& answer) { print_stream(answer, "================", &SectionType::test_banner); }

// As many records as are counted, and again as many as long as the length says that there are more.
template <const char* const& name, ShowRecord show_record>
void print_list(const Answer& answer) {
  const auto head = answer.get<AuditListHead>(0);
  print("%s tol num=%d datalen=%d\n", name, head.tol_num, head.datalen);
  const auto count = static_cast<int32_t>(head.tol_num);
  Records records(answer);
  while (count > 0 && records.more()) {
    for (int32_t left = count; left > 0 && show_record(records); --left) {
    }
  }
}

constexpr const char* kPosted = "sj post";
constexpr const char* kHttpGet = "sj2 httpget";
constexpr const char* kPost = "sj2 post";
constexpr const char* kAccount = "sj2 zhanghao";
constexpr const char* kConnection = "sj2 ctinfo";  // of mails, too

// ---- Tables ----

constexpr DirectStyle kDirectReading = {.failure = DirectStyle::kAsReading};
constexpr uint32_t kMostPosted = 0x18fff;
constexpr uint32_t kAll = UINT32_MAX;

// clang-format off
constexpr SubCommand kSj[] = {
    {"set", kModuleAudit, kAuditSet, 1024, sizeof(AuditSettings), 4, "en[0/1] info_en[0/1] ct_num url_num qq_num bbs_num mail_num dns_num", parse_as<parse_settings>, nullptr},
    {"get", kModuleAudit, kAuditGet, 1024, sizeof(AuditSettings), 0, "", nullptr, print_as<print_settings>},
    {"info_get", kModuleAudit, kAuditInfo, 0xfa000, 0xfa000, 0, "", nullptr, print_as<print_info>},
    {"post_set", kModuleAudit, kAuditPostSet, 1024, sizeof(AuditPostSettings), 4, "en[0/1] post_maxnum post_maxlen", parse_as<parse_post_settings>, nullptr},
    {"post_get", kModuleAudit, kAuditPostGet, 1024, sizeof(AuditPostSettings), 0, "", nullptr, print_as<print_post_settings>},
    {"post_info_get", kModuleAudit, kAuditPostInfo, 0xfa000, 0xfa000, 0, "", nullptr, print_as<print_list<kPosted, show<AuditCollected, print_posted, kMostPosted>>>},
    {"pool_show", kModuleAudit, kAuditPoolShow, 1024, 1020, 0, "", nullptr, nullptr},
    {"debug", kModuleAudit, kAuditDebug, 1024, 1020, 6, "num mac ip", parse_as<parse_debug>, nullptr},
    direct("test", kModuleAudit, kAuditInfo, 0xfa000, 0, "", nullptr, print_as<print_test>, kDirectReading),
    {"ip_set", kModuleAudit, kAuditHostsSet, 102400, 102000, 4, "vek_host_ip", parse_as<parse_hosts>, nullptr},
    {"ip_get", kModuleAudit, kAuditHostsGet, 102400, 102000, 0, "", nullptr, print_as<print_hosts>},
    {"ip_def", kModuleAudit, kAuditDefault, 10240, 10200, 4, "set act", parse_as<parse_default>, print_as<print_default>},
};

constexpr SubCommand kSj2[] = {
    {"set", kModuleAudit, kAuditCollectorSet, 1024, sizeof(AuditCollectorSettings), 4, "en[0/1] ct_num qq_num mail_num httpget_num post_num post_len", parse_as<parse_collector_settings>, nullptr},
    {"get", kModuleAudit, kAuditCollectorGet, 1024, sizeof(AuditCollectorSettings), 0, "", nullptr, print_as<print_collector_settings>},
    {"httpget_info", kModuleAudit, kAuditHttpGetInfo, 0xfa000, 0xfa000, 0, "", nullptr, print_as<print_list<kHttpGet, show<AuditCollected, print_http_get>>>},
    {"post_info_get", kModuleAudit, kAuditPostInfo, 0xfa000, 0xfa000, 0, "", nullptr, print_as<print_list<kPost, show<AuditCollected, print_post>>>},
    {"zhanghao_get", kModuleAudit, kAuditZhanghao, 0xfa000, 0xfa000, 0, "", nullptr, print_as<print_list<kAccount, show<AuditCollected, print_account, kAll>>>},
    {"ctinfo_get", kModuleAudit, kAuditCtInfo, 0xfa000, 0xfa000, 0, "", nullptr, print_as<print_list<kConnection, show<AuditCollected, print_connection, kAll>>>},
    {"mail_get", kModuleAudit, kAuditMailGet, 0xfa000, 0xfa000, 0, "", nullptr, print_as<print_list<kConnection, show<AuditCollectedMail, print_collected_mail, kAll, kAll, kAll>>>},
    {"mem", kModuleAudit, kAuditMemory, 1024, 0, 0, "", nullptr, nullptr},
};
// clang-format on

}  // namespace

int cmd_sj(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kSj, argc, argv, entry);
}

int cmd_sj2(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kSj2, argc, argv, entry);
}
