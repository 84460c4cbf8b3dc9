// Which records travel for which command, and the few payloads that are no record, or no list, like all
// others.
#include <algorithm>
#include <iterator>

#include "records/alg.h"
#include "records/arp.h"
#include "records/audit.h"
#include "records/bbsfilter.h"
#include "records/ctrule.h"
#include "records/ddos.h"
#include "records/devmg.h"
#include "records/dhcp.h"
#include "records/dns.h"
#include "records/flush.h"
#include "records/general.h"
#include "records/host.h"
#include "records/hpostfixfilter.h"
#include "records/hpostforbid.h"
#include "records/igmp.h"
#include "records/macuser.h"
#include "records/mr.h"
#include "records/netlink.h"
#include "records/order.h"
#include "records/ppp_fast.h"
#include "records/pppoe.h"
#include "records/pppoe_br.h"
#include "records/qos.h"
#include "records/rule.h"
#include "records/switch_chip.h"
#include "records/switches.h"
#include "records/urlfilter.h"
#include "records/user.h"
#include "records/wireless.h"
#include "shell/record_walk.h"
#include "shell/words.h"

namespace {

// Walks a payload, within the record that stands for all of it.
using Shape = void(RecordWalk& walk, uint32_t result);

// A record and its lists.
template <typename Record>
void one(RecordWalk& walk, uint32_t) {
  walk.members(record_type<Record>());
}

// A count and its entries.
template <typename Entry, typename Count = int32_t, uint32_t count_offset = kListCountOffset,
          uint32_t entries_offset = kListEntriesOffset>
void list(RecordWalk& walk, uint32_t) {
  walk.go_to(count_offset);
  walk.value("num", field_type<Count>());
  walk.go_to(entries_offset);
  walk.list("list", field_type<Entry>(), walk.get<Count>(count_offset));
}

// A list whose count stands in the record in front of it.
template <typename Head, auto count, typename Entry>
void headed(RecordWalk& walk, uint32_t) {
  walk.members(record_type<Head>());
  walk.list("list", field_type<Entry>(), walk.get<Head>(0).*count);
}

// What a fixed answer is tells which of two records it is.
void dns_url(RecordWalk& walk, uint32_t) {
  const bool is_name = walk.get<DnsUrl>(0).kind == kUrlName;
  walk.members(is_name ? record_type<DnsUrlOtherName>() : record_type<DnsUrl>());
}

// Counted by the header.
void dns_urls(RecordWalk& walk, uint32_t result) { walk.list("list", field_type<DnsUrlEntry>(), result); }

// A text in place of all but the line's number.
void igmp_groups(RecordWalk& walk, uint32_t) {
  walk.members(record_type<IgmpShow>());
  const auto* const text = reinterpret_cast<const char*>(walk.here());
  walk.string("text", static_cast<uint32_t>(strnlen(text, walk.room())));
}

// The words lie wherever their places say.
void bbs_words(RecordWalk& walk, uint32_t) {
  const auto head = walk.get<BbsWordList>(0);
  for (const RecordType::Member& member : record_type<BbsWordList>().members) {
    if (!walk.value(member.name, *member.type)) return;
  }
  uint32_t behind = walk.offset();
  uint32_t most = walk.room();  // of all words: places that share their bytes do not multiply them
  walk.visitor().begin_list("places", behind, head.item_cnt);
  for (uint32_t left = head.item_cnt; left > 0 && walk.room() >= sizeof(BbsWordPlace); --left) {
    const uint32_t at = walk.offset();
    const auto place = walk.get<BbsWordPlace>(at);
    walk.visitor().begin_record({}, at);
    walk.members(record_type<BbsWordPlace>());
    walk.go_to(place.data_offset);
    const uint32_t length = std::min({uint32_t{place.data_length}, walk.room(), most});
    walk.string("word", length);
    most -= length;
    walk.visitor().end_record();
    behind = std::max({behind, walk.offset(), at + uint32_t{sizeof place}});
    walk.go_to(at + sizeof place);
  }
  walk.visitor().end_list();
  walk.go_to(behind);
}

// ---- The audit's records ----

// As far as the answer's head says that there are records; one that has begun is bounded by the payload
// alone.
class AuditStream {
 public:
  explicit AuditStream(RecordWalk& walk) : head_(walk.get<AuditListHead>(0)), walk_(walk) {
    walk.members(record_type<AuditListHead>());
  }
  uint32_t count() const { return head_.tol_num; }
  bool more() const {
    return walk_.room() > 0 && static_cast<int64_t>(walk_.offset()) < static_cast<int32_t>(head_.datalen);
  }

 private:
  AuditListHead head_;
  RecordWalk& walk_;
};

template <typename Record>
bool audit_list(RecordWalk& walk, uint32_t count) {
  return walk.list("records", field_type<Record>(), count);
}

bool no_audit_list(RecordWalk&, uint32_t) { return true; }

bool quill_connections(RecordWalk& walk, uint32_t count) {
  constexpr uint32_t kSize = 256;  // all that is known of them
  walk.unnamed(count * kSize);
  return true;
}

void audit_sections(RecordWalk& walk, uint32_t) {
  // By the section's type; nothing is known of those that are none.
  constexpr bool (*kLists[])(RecordWalk&, uint32_t) = {
      no_audit_list,         audit_list<AuditUrl>, audit_list<AuditQq>,    audit_list<AuditBbs>,
      audit_list<AuditMail>, audit_list<AuditCt>,  audit_list<AuditOther>, quill_connections,
      no_audit_list,         audit_list<AuditDns>};
  static_assert(std::size(kLists) == kSectionDns + 1);
  AuditStream stream(walk);
  walk.visitor().begin_list("sections", walk.offset(), -1);
  while (stream.more() && walk.room() >= sizeof(AuditSection)) {
    const auto section = walk.get<AuditSection>(walk.offset());
    walk.visitor().begin_record({}, walk.offset());
    walk.members(record_type<AuditSection>());
    if (section.type < std::size(kLists)) kLists[section.type](walk, section.num);
    walk.visitor().end_record();
  }
  walk.visitor().end_list();
}

template <typename Record>
void audit_records(RecordWalk& walk, uint32_t) {
  AuditStream stream(walk);
  walk.visitor().begin_list("list", walk.offset(), stream.count());
  if (static_cast<int32_t>(stream.count()) > 0) {
    while (stream.more() && walk.value({}, field_type<Record>())) {
    }
  }
  walk.visitor().end_list();
}

// ---- The table ----

struct Row {
  uint32_t module;
  uint32_t command;
  Shape* request;  // null: no arguments
  Shape* answer;   // null: the result alone
};

constexpr Shape* kNone = nullptr;

// clang-format off
constexpr Row kRows[] = {
    {kModuleGeneral, kErrorInfo, one<ErrorInfo>, one<ErrorInfo>},
    {kModuleGeneral, kMemoryReport, kNone, kNone},
    {kModuleGeneral, kApBalancedNum, one<ApValues>, one<ApValues>},
    {kModuleGeneral, kApBalancedTrys, one<ApValues>, one<ApValues>},
    {kModuleGeneral, kApRssi, one<ApThreshold>, one<ApThreshold>},
    {kModuleGeneral, kApServer, one<ApServerMode>, one<ApServerMode>},
    {kModuleGeneral, kApRssi5g, one<ApThreshold>, one<ApThreshold>},
    {kModuleGeneral, kSourceRoute, one<SwitchValue>, one<SwitchValue>},
    {kModuleGeneral, kApRssi3w, one<ApThreshold>, one<ApThreshold>},
    {kModuleGeneral, kPacketDelay, one<SwitchValue>, one<SwitchValue>},
    {kModuleGeneral, kPrio5gConf, one<ApValues>, one<ApValues>},
    {kModuleGeneral, kPrio5gDebug, one<ApDebugMac>, one<ApDebugMac>},
    {kModuleGeneral, kOspfRouterId, one<OspfRouterId>, one<OspfRouterId>},
    {kModuleGeneral, kWatchdog, one<WatchdogOrder>, kNone},

    {kModuleDevmg, kDevAdd, one<DevEntry>, kNone},
    {kModuleDevmg, kDevDel, one<DevEntry>, kNone},
    {kModuleDevmg, kDevGet, one<DevEntry>, one<DevEntry>},
    {kModuleDevmg, kDevSet, one<DevEntry>, kNone},
    {kModuleDevmg, kDevList, kNone, list<DevEntry>},
    {kModuleDevmg, kDevPppoe, one<DevPppoe>, one<DevPppoe>},
    {kModuleDevmg, kDevLan, one<DevName>, kNone},
    {kModuleDevmg, kDevWan, one<DevName>, kNone},
    {kModuleDevmg, kDevRead, kNone, kNone},
    {kModuleDevmg, kDevWanDone, one<DevName>, kNone},
    {kModuleDevmg, kDevStat, one<DevName>, one<DevStat>},

    {kModuleArp, kArpSet, one<ArpSettings>, kNone},
    {kModuleArp, kArpGet, one<ArpSettings>, one<ArpSettings>},
    {kModuleArp, kArpAdd, one<ArpBinding>, kNone},
    {kModuleArp, kArpAddAll, one<ArpBinding>, kNone},
    {kModuleArp, kArpDel, one<ArpBinding>, kNone},
    {kModuleArp, kArpDelAll, kNone, kNone},
    {kModuleArp, kArpList, one<ArpListFilter>, list<ArpListEntry>},
    {kModuleArp, kArpDebug, kNone, kNone},
    {kModuleArp, kArpDisonlineSet, one<ArpSwitch>, kNone},
    {kModuleArp, kArpDisonlineGet, kNone, one<ArpSwitch>},
    {kModuleArp, kArpDatabaseDel, one<ArpDatabaseKey>, kNone},
    {kModuleArp, kArpSearch, one<ArpSearch>, kNone},
    {kModuleArp, kArpDelMac, one<ArpMacKey>, kNone},

    {kModuleDns, kDnsSet, one<DnsSettings>, kNone},
    {kModuleDns, kDnsGet, kNone, one<DnsSettings>},
    {kModuleDns, kDnsList, kNone, list<DnsCacheEntry>},
    {kModuleDns, kDnsCacheClear, kNone, kNone},
    {kModuleDns, kDnsGetIp, one<DnsLookup>, one<DnsLookup>},
    {kModuleDns, kDnsTebieAdd, one<DnsTebie>, kNone},
    {kModuleDns, kDnsTebieDel, one<DnsTebie>, kNone},
    {kModuleDns, kDnsUrlAdd, dns_url, kNone},
    {kModuleDns, kDnsUrlDel, dns_url, kNone},
    {kModuleDns, kDnsUrlDelAll, kNone, kNone},
    {kModuleDns, kDnsUrlList, kNone, dns_urls},
    {kModuleDns, kDnsDebug, kNone, kNone},
    {kModuleDns, kDnsTebieTest, one<DnsTebie>, kNone},
    {kModuleDns, kDnsSpecialDebug, one<DnsSwitch>, kNone},

    {kModuleDhcp, kDhcpAdd, one<DhcpPoolRequest>, kNone},
    {kModuleDhcp, kDhcpDel, one<DhcpPoolRequest>, kNone},
    {kModuleDhcp, kDhcpShow, one<DhcpPoolRequest>, one<DhcpPoolAnswer>},
    {kModuleDhcp, kDhcpMemberList, one<DhcpLeaseFilter>, list<DhcpLease>},
    {kModuleDhcp, kDhcpBind, one<DhcpBind>, one<DhcpBind>},
    {kModuleDhcp, kDhcpReserveAdd, one<DhcpReservation>, kNone},
    {kModuleDhcp, kDhcpReserveDel, one<DhcpReservation>, kNone},
    {kModuleDhcp, kDhcpReserveDelAll, one<DhcpReservation>, kNone},
    {kModuleDhcp, kDhcpReserveShow, one<DhcpReservation>, list<DhcpReservation, int32_t, kDhcpCountOffset, kDhcpEntriesOffset>},
    {kModuleDhcp, kDhcpNotAssignAdd, one<DhcpExclusion>, kNone},
    {kModuleDhcp, kDhcpNotAssignDel, one<DhcpExclusion>, kNone},
    {kModuleDhcp, kDhcpNotAssignDelAll, one<DhcpExclusion>, kNone},
    {kModuleDhcp, kDhcpNotAssignShow, one<DhcpExclusion>, list<DhcpExclusion, int32_t, kDhcpCountOffset, kDhcpEntriesOffset>},
    {kModuleDhcp, kDhcpNewAdd, one<DhcpNewPool>, kNone},
    {kModuleDhcp, kDhcpDefenseSet, one<DhcpDefense>, kNone},
    {kModuleDhcp, kDhcpDefenseGet, kNone, one<DhcpDefense>},

    {kModuleFlush, kFlush, one<FlushRequest>, kNone},

    {kModulePppoe, kPppoeSet, one<PppoeServerConfig>, kNone},
    {kModulePppoe, kPppoeShow, kNone, one<PppoeServerConfig>},
    {kModulePppoe, kPppoeDebug, one<PppoeDebug>, one<PppoeDebug>},
    {kModulePppoe, kPppoeGroupAdd, one<PppoeGroup>, kNone},
    {kModulePppoe, kPppoeGroupDel, one<PppoeGroup>, kNone},
    {kModulePppoe, kPppoeGroupMod, one<PppoeGroup>, kNone},
    {kModulePppoe, kPppoeGroupDelAll, kNone, kNone},
    {kModulePppoe, kPppoeGroupList, kNone, list<PppoeGroup>},
    {kModulePppoe, kPppoeGroupSpeed, one<PppoeGroup>, kNone},
    {kModulePppoe, kPppoeGroupDebug, one<PppoeGroupDebug>, one<PppoeGroupDebug>},
    {kModulePppoe, kPppoeProbeStart, one<PppoeProbe>, kNone},
    {kModulePppoe, kPppoeProbeStop, kNone, kNone},
    {kModulePppoe, kPppoeProbeStatus, kNone, one<PppoeProbe>},
    {kModulePppoe, kPppoeTimeChange, one<PppoeTimeChange>, kNone},

    {kModuleMr, kMrLine, one<LineRecord>, kNone},
    {kModuleMr, kMrMode, one<LineMode>, kNone},
    {kModuleMr, kMrOnlyWan, one<LineMode>, kNone},
    {kModuleMr, kMrGet, kNone, one<LineMode>},
    {kModuleMr, kMrRouteAdd, one<LineRoute>, kNone},
    {kModuleMr, kMrRouteDel, one<LineRoute>, kNone},
    {kModuleMr, kMrRouteList, kNone, list<LineRoute>},
    {kModuleMr, kIgmpShow, one<IgmpShow>, igmp_groups},
    {kModuleMr, kMrDnsCache, kNone, kNone},
    {kModuleMr, kIgmpDebug, one<IgmpDebug>, kNone},
    {kModuleMr, kIgmpMode, one<IgmpMode>, one<IgmpMode>},
    {kModuleMr, kMrIpv6, one<LineIpv6>, kNone},
    {kModuleMr, kMrList, kNone, list<LineEntry>},
    {kModuleMr, kMrUla, one<LineUla>, kNone},

    {kModuleRule, kLimitRuleSet, one<LimitRule>, kNone},
    {kModuleRule, kLimitRuleList, one<LimitListRequest>, list<LimitRule>},
    {kModuleRule, kLimitDefaultsSet, one<LimitDefaults>, kNone},
    {kModuleRule, kLimitDefaultsGet, kNone, one<LimitDefaults>},
    {kModuleRule, kAccDefaultSet, one<AccDefault>, kNone},
    {kModuleRule, kAccDefaultGet, kNone, one<AccDefault>},
    {kModuleRule, kAccAdd, one<AccRule>, kNone},
    {kModuleRule, kAccDel, one<RuleName>, kNone},
    {kModuleRule, kAccDelAll, kNone, kNone},
    {kModuleRule, kAccList, kNone, list<AccRule>},
    {kModuleRule, kMrouteAdd, one<MrouteRule>, kNone},
    {kModuleRule, kMrouteDel, one<RuleName>, kNone},
    {kModuleRule, kMrouteDelAll, one<MrouteRule>, kNone},
    {kModuleRule, kMrouteList, kNone, list<MrouteRule>},
    {kModuleRule, kFilterAdd, one<FilterRule>, kNone},
    {kModuleRule, kFilterDel, one<FilterRule>, kNone},
    {kModuleRule, kFilterList, one<FilterListRequest>, list<FilterRule>},
    {kModuleRule, kRuleAlg, one<AlgSettings>, one<AlgSettings>},
    {kModuleRule, kWhitelistAdd, one<WhitelistEntry>, kNone},
    {kModuleRule, kWhitelistDel, one<RuleName>, kNone},
    {kModuleRule, kWhitelistDelAll, kNone, kNone},
    {kModuleRule, kWhitelistList, kNone, list<WhitelistEntry>},
    {kModuleRule, kMrouteHit, kNone, list<RuleHitEntry>},
    {kModuleRule, kMrouteHitDel, one<RuleName>, kNone},

    {kModuleDdosFy, kDdosFySet, one<DdosFySettings>, kNone},
    {kModuleDdosFy, kDdosFyMacSet, one<ExemptMacList>, kNone},
    {kModuleDdosFy, kDdosFyMacGet, kNone, one<ExemptMacList>},

    {kModuleHost, kHostList, kNone, list<HostEntry, uint32_t>},
    {kModuleHost, kHostRunInfo, kNone, one<HostRunInfo>},
    {kModuleHost, kHostConnections, one<HostKey>, list<HostConnection, uint32_t, kConnectionCountOffset, kConnectionEntriesOffset>},
    {kModuleHost, kHostSetAgeing, one<HostAgeing>, kNone},
    {kModuleHost, kHostSetAgeing3, one<HostAgeing>, kNone},
    {kModuleHost, kHostThirdList, kNone, list<ThirdEntry, uint32_t>},
    {kModuleHost, kHostTmpLimit, one<HostTmpLimit>, kNone},
    {kModuleHost, kHostConnectionShowSet, one<HostConnectionShow>, kNone},
    {kModuleHost, kHostConnectionShowGet, kNone, one<HostConnectionShow>},
    {kModuleHost, kHostSignal, one<ClientSignal>, one<ClientSignal>},
    {kModuleHost, kHostRedirect, one<HostRedirect>, one<HostRedirect>},
    {kModuleHost, kHostWsList, kNone, list<HostEntry, uint32_t>},
    {kModuleHost, kHostSetMac, one<HostMac>, kNone},
    {kModuleHost, kHostSnmpScan, kNone, list<HostEntry, uint32_t>},
    {kModuleHost, kHostAiList, kNone, list<HostAiEntry, uint32_t>},

    {kModuleQos, kQosSet, one<QosDevSettings>, kNone},
    {kModuleQos, kQosGet, one<QosDevSettings>, one<QosDevSettings>},
    {kModuleQos, kQosState, one<QosDevStats>, one<QosDevStats>},
    {kModuleQos, kQosTypeList, kNone, list<QosTypeEntry, uint32_t>},
    {kModuleQos, kQosSpeedSet, one<SpeedRule>, kNone},
    {kModuleQos, kQosSpeedList, one<SpeedListRequest>, list<SpeedRule>},
    {kModuleQos, kQosDnsIp, one<RecognitionLists>, kNone},
    {kModuleQos, kQosAppDns, one<RecognitionLists>, kNone},
    {kModuleQos, kQosAppIp, one<RecognitionLists>, kNone},
    {kModuleQos, kQosAppProtocol, one<RecognitionLists>, kNone},
    {kModuleQos, kQosAppHost, one<RecognitionLists>, kNone},
    {kModuleQos, kQosDebug, kNone, kNone},
    {kModuleQos, kQosExtSet, one<QosExtSettings>, kNone},
    {kModuleQos, kQosExtGet, kNone, one<QosExtSettings>},
    {kModuleQos, kQosLevel, one<QosLevel>, kNone},
    {kModuleQos, kQosRuleAdd, one<PriorityRule>, kNone},
    {kModuleQos, kQosRuleDel, one<PriorityRule>, kNone},
    {kModuleQos, kQosRuleGet, one<PriorityRule>, one<PriorityRule>},
    {kModuleQos, kQosRuleList, one<PriorityRule>, list<PriorityRule>},
    {kModuleQos, kQosDelaySet, one<QosDelayControl>, kNone},
    {kModuleQos, kQosDelayGet, one<QosDelayControl>, one<QosDelayControl>},
    {kModuleQos, kQosSkb, one<SkbReport>, headed<SkbReport, &SkbReport::count, SkbHost>},
    {kModuleQos, kQosDevInfo, kNone, headed<DevSkbReport, &DevSkbReport::count, DevSkb>},
    {kModuleQos, kQosVpnLimit, one<QosVpnLimit>, one<QosVpnLimit>},
    {kModuleQos, kQosSingleCt, one<QosSingleCt>, one<QosSingleCt>},
    {kModuleQos, kQosStatisticsInit, kNone, kNone},
    {kModuleQos, kQosIpRuleList, kNone, list<QosIpRule>},
    {kModuleQos, kQosSpeedLimit, one<QosSpeedLimit>, one<QosSpeedLimit>},
    {kModuleQos, kQosQueueWait, one<QueueWaitMatrix>, one<QueueWaitMatrix>},
    {kModuleQos, kQosSpeedValue, one<QosSpeedValues>, one<QosSpeedValues>},
    {kModuleQos, kQosNoQueue, one<QosNoQueue>, one<QosNoQueue>},
    {kModuleQos, kQosLineSpeedValue, one<QosSpeedValues>, one<QosSpeedValues>},

    {kModuleUser, kUserAdd, one<UserRequest>, kNone},
    {kModuleUser, kUserStat, one<UserStat>, one<UserStat>},
    {kModuleUser, kUserDel, one<UserRequest>, kNone},
    {kModuleUser, kUserDelAll, one<UserDelAll>, kNone},
    {kModuleUser, kUserList, kNone, list<UserEntry>},
    {kModuleUser, kUserOnlineList, kNone, list<UserEntry>},
    {kModuleUser, kUserAutoscanSet, one<UserAutoscan>, kNone},
    {kModuleUser, kUserAutoscanGet, kNone, one<UserAutoscan>},
    {kModuleUser, kUserNameInfo, one<UserNameInfo>, headed<UserNameInfo, &UserNameInfo::num, UserNameEntry>},
    {kModuleUser, kUserRdDownAll, one<UserKick>, kNone},
    {kModuleUser, kUserDownAll, one<UserKick>, kNone},
    {kModuleUser, kUserJsMod, one<UserJsMod>, kNone},
    {kModuleUser, kUserCard, one<UserCard>, one<UserCard>},
    {kModuleUser, kUserSsid, one<UserSsid>, one<UserSsid>},
    {kModuleUser, kUserLock, one<UserLock>, kNone},

    {kModuleSwitchChip, kSwitchDump, kNone, kNone},
    {kModuleSwitchChip, kSwitchClear, kNone, kNone},

    {kModuleBbsFilter, kBbsFilterAdd, one<BbsWord>, kNone},
    {kModuleBbsFilter, kBbsFilterDel, one<BbsWord>, kNone},
    {kModuleBbsFilter, kBbsFilterDelAll, kNone, kNone},
    {kModuleBbsFilter, kBbsFilterList, kNone, bbs_words},
    {kModuleBbsFilter, kBbsFilterGlobal, one<BbsFilterSwitch>, kNone},

    {kModulePostfixFilter, kPostfixFilterAdd, one<PostfixFilterRule>, kNone},
    {kModulePostfixFilter, kPostfixFilterDel, one<PostfixFilterRule>, kNone},
    {kModulePostfixFilter, kPostfixFilterList, kNone, list<PostfixFilterRule>},
    {kModulePostfixFilter, kPostfixFilterGlobal, one<PostfixFilterSwitch>, kNone},

    {kModulePostForbid, kPostForbidAdd, one<PostForbidRule>, kNone},
    {kModulePostForbid, kPostForbidDel, one<PostForbidRule>, kNone},
    {kModulePostForbid, kPostForbidList, kNone, list<PostForbidRule>},
    {kModulePostForbid, kPostForbidGlobal, one<PostForbidSwitch>, kNone},

    {kModulePppoeBridge, kPppoeBridgeSet, one<PppoeBridgeConfig>, kNone},
    {kModulePppoeBridge, kPppoeBridgeGet, kNone, one<PppoeBridgeConfig>},
    {kModulePppoeBridge, kPppoeBridgeVlanIds, kNone, list<PppoeBridgeVlanId>},
    {kModulePppoeBridge, kPppoeBridgeMoreAdd, one<PppoeBridgeMore>, kNone},
    {kModulePppoeBridge, kPppoeBridgeMoreDel, one<PppoeBridgeMore>, kNone},
    {kModulePppoeBridge, kPppoeBridgeMoreGet, one<PppoeBridgeMore>, kNone},
    {kModulePppoeBridge, kPppoeBridgeMacs, kNone, list<PppoeBridgeMac>},
    {kModulePppoeBridge, kPppoeBridgeMoreDelAll, kNone, kNone},

    {kModulePppFast, kPppFastSet, one<PppFastBinding>, kNone},
    {kModulePppFast, kPppFastGet, one<PppFastBinding>, one<PppFastBinding>},

    {kModuleDdos, kDdosMacSet, one<ExemptMacList>, kNone},
    {kModuleDdos, kDdosMacGet, kNone, one<ExemptMacList>},
    {kModuleDdos, kDdosWanAttack, one<WanAttack>, one<WanAttack>},
    {kModuleDdos, kProtectSet, one<ProtectSetting>, kNone},
    {kModuleDdos, kProtectDevGet, one<ProtectProfile>, one<ProtectProfile>},
    {kModuleDdos, kProtectDel, one<ProtectProfile>, kNone},
    {kModuleDdos, kProtectDelAll, kNone, kNone},
    {kModuleDdos, kProtectList, kNone, list<ProtectProfile>},
    {kModuleDdos, kLanProtectSet, one<LanProtect>, kNone},
    {kModuleDdos, kLanProtectGet, kNone, one<LanProtect>},
    {kModuleDdos, kProtectClear, one<ProtectProfile>, kNone},

    {kModuleMacUser, kMacUserSet, one<MacUserSetting>, kNone},
    {kModuleMacUser, kMacUserGet, kNone, one<MacUserSetting>},
    {kModuleMacUser, kMacUserList, kNone, list<MacUserEntry>},
    {kModuleMacUser, kMacUserMacDel, one<MacUserEntry>, kNone},
    {kModuleMacUser, kMacUserIdDel, one<MacUserEntry>, kNone},
    {kModuleMacUser, kMacUserInit, kNone, kNone},

    {kModuleAudit, kAuditSet, one<AuditSettings>, kNone},
    {kModuleAudit, kAuditGet, kNone, one<AuditSettings>},
    {kModuleAudit, kAuditPoolShow, kNone, kNone},
    {kModuleAudit, kAuditInfo, kNone, audit_sections},
    {kModuleAudit, kAuditPostSet, one<AuditPostSettings>, kNone},
    {kModuleAudit, kAuditPostGet, kNone, one<AuditPostSettings>},
    {kModuleAudit, kAuditCollectorSet, one<AuditCollectorSettings>, kNone},
    {kModuleAudit, kAuditCollectorGet, kNone, one<AuditCollectorSettings>},
    {kModuleAudit, kAuditPostInfo, kNone, audit_records<AuditCollected>},
    {kModuleAudit, kAuditHttpGetInfo, kNone, audit_records<AuditCollected>},
    {kModuleAudit, kAuditCtInfo, kNone, audit_records<AuditCollected>},
    {kModuleAudit, kAuditZhanghao, kNone, audit_records<AuditCollected>},
    {kModuleAudit, kAuditMailGet, kNone, audit_records<AuditCollectedMail>},
    {kModuleAudit, kAuditMemory, kNone, kNone},
    {kModuleAudit, kAuditDebug, one<AuditDebug>, kNone},
    {kModuleAudit, kAuditHostsSet, one<AuditHostList>, kNone},
    {kModuleAudit, kAuditHostsGet, kNone, one<AuditHostList>},
    {kModuleAudit, kAuditDefault, one<AuditDefault>, one<AuditDefault>},

    {kModuleNetlink, kNetlinkRegister, one<NetlinkListener>, kNone},
    {kModuleNetlink, kNetlinkList, kNone, one<NetlinkSlots>},

    {kModuleUrlFilter, kUrlFilterAdd, one<UrlFilterRule>, kNone},
    {kModuleUrlFilter, kUrlFilterDel, one<UrlFilterRule>, kNone},
    {kModuleUrlFilter, kUrlFilterDelAll, kNone, kNone},
    {kModuleUrlFilter, kUrlFilterList, kNone, list<UrlFilterRule>},
    {kModuleUrlFilter, kUrlFilterGlobal, one<UrlFilterSwitch>, kNone},
};
// clang-format on

const Row* find_row(uint32_t module, uint32_t command) {
  const auto row = std::ranges::find_if(
      kRows, [&](const Row& each) { return each.module == module && each.command == command; });
  return row == std::end(kRows) ? nullptr : &*row;
}

}  // namespace

bool decode(const Message& message, RecordVisitor& visitor) {
  const Row* const row = find_row(message.module, message.command);
  if (row == nullptr) return false;
  Shape* const shape = message.is_answer ? row->answer : row->request;
  if (shape == nullptr) return false;
  RecordWalk walk(message.payload, visitor);
  visitor.begin_record({}, 0);
  shape(walk, message.result);
  walk.rest();
  visitor.end_record();
  return true;
}

bool is_known_command(uint32_t module, uint32_t command) { return find_row(module, command) != nullptr; }

bool is_result_a_count(uint32_t module, uint32_t command) {
  const Row* const row = find_row(module, command);
  return row != nullptr && row->answer == dns_urls;
}

std::string_view words_of(uint32_t module, uint32_t command) {
  const auto row = std::ranges::find_if(kCommandWords, [&](const CommandWords& each) {
    return each.module == module && each.command == command && each.module != 0;
  });
  return row == kCommandWords.end() ? std::string_view() : row->words;
}
