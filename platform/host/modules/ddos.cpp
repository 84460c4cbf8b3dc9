// Attack defence: its switch (module 12), limits, protection profiles and the protection of the LAN (module
// 56). Each module has hosts of its own that it lets be.
#include "modules/ddos.h"

#include <algorithm>
#include <cstddef>

#include "modules/devmg.h"
#include "modules/kept_records.h"
#include "modules/modules.h"
#include "records/ddos.h"
#include "state/settings.h"

// Where check_lists finds it.
static void check_element(const ExemptMac& entry) { refuse_unless(is_host_mac(entry.mac), kBadMac); }

namespace {

// As much as the answers hold.
constexpr size_t kMaxRecordBytes = 10240;
constexpr size_t kMaxMacBytes = 40480;

// ---- Records that stand once, each under the order that sets it ----

void keep(Store& store, const Order& order, const std::vector<uint8_t>& record, size_t most) {
  refuse_unless(record.size() <= most, kTableFull);
  store.execute("INSERT OR REPLACE INTO ddos_record VALUES (?, ?, ?)", order.module(), order.command(),
                record);
}

// All zero where it was never set.
template <uint32_t set_by, typename Record>
void answer_kept(Store& store, Order& order) {
  std::vector<uint8_t> record(sizeof(Record));
  Statement row =
      store.query("SELECT record FROM ddos_record WHERE module = ? AND command = ?", order.module(), set_by);
  if (row.next()) row.read(record);
  refuse_unless(order.answer_bytes(0, record.data(), static_cast<uint32_t>(record.size())), kBadRecord);
}

// No order reads it back.
void set_switch(Store& store, const DdosFySettings& settings, Order& order) {
  check_switch(settings.fy_en);
  refuse_unless(settings.mac == Mac{} || is_host_mac(settings.mac), kBadMac);
  keep(store, order, order.request_bytes(sizeof settings), kMaxRecordBytes);
}

void set_macs(Store& store, const ExemptMacList& list, Order& order) {
  keep(store, order, whole_record(list, order), kMaxMacBytes);
}

void set_lan(Store& store, const LanProtect& lan, Order& order) {
  check_switch(lan.en);
  check_switch(lan.log);
  for (const uint32_t value :
       {lan.type, lan.max_tcp_conns, lan.max_pkt_count, lan.defen_time, lan.little_len}) {
    check_number(value);
  }
  keep(store, order, whole_record(lan, order), kMaxRecordBytes);
}

// ---- Limit ----

void wan_attack(Store& store, WanAttack& attack) {
  if (attack.is_set != 0) {
    check_switch(attack.en);
    check_number(attack.limit);
    set_setting(store, kModuleDdos, "wan_attack_en", attack.en);
    set_setting(store, kModuleDdos, "wan_attack_limit", attack.limit);
  }
  attack.en = get_setting(store, kModuleDdos, "wan_attack_en");
  attack.limit = get_setting(store, kModuleDdos, "wan_attack_limit");
}

// ---- Profiles ----

void check_rates(const ProtectProfile& profile) {
  check_switch(profile.log);
  check_switch(profile.block);
  for (const RateLimit& rate : profile.rate) {
    check_number(rate.max);
    refuse_unless(rate.time <= INT32_MAX, kBadTime);
  }
}

// The given half over what is kept. The lists belong to the half of the rates.
std::vector<uint8_t> joined(const ProtectSetting& given, const Order& order, std::vector<uint8_t> record) {
  auto kept = fixed_part<ProtectProfile>(record);
  std::ranges::copy(given.profile.name, kept.name);
  std::ranges::copy(given.profile.dev, kept.dev);
  const std::vector<uint8_t> request = whole_record(given, order);
  if (given.half == kProtectRates) {
    check_rates(given.profile);
    kept.d_ip_count = given.profile.d_ip_count;
    kept.s_area_count = given.profile.s_area_count;
    kept.log = given.profile.log;
    kept.block = given.profile.block;
    std::ranges::copy(given.profile.rate, kept.rate);
    record.assign(request.begin() + offsetof(ProtectSetting, profile), request.end());
  } else {
    refuse_unless(given.half == kProtectChecks, kBadType);
    for (const uint8_t enable : given.profile.enable) check_switch(enable);
    std::ranges::copy(given.profile.enable, kept.enable);
  }
  memcpy(record.data(), &kept, sizeof kept);
  return record;
}

// A profile given for another device goes over to it. What it has hit, it has.
void set_profile(Store& store, const ProtectSetting& given, Order& order) {
  const std::string_view name = text(given.profile.name);
  const std::string_view dev = text(given.profile.dev);
  check_name(name);
  require_interface(store, dev);
  refuse_unless(
      store.number("SELECT count(*) FROM protect_profile WHERE dev = ? AND name <> ?", dev, name) == 0,
      kAlreadyThere);
  std::vector<uint8_t> record(sizeof(ProtectProfile));
  {
    Statement row = store.query("SELECT record FROM protect_profile WHERE name = ?", name);
    if (row.next()) row.read(record);
  }
  record = joined(given, order, std::move(record));
  refuse_unless(record.size() <= kMaxRecordBytes, kTableFull);
  store.put("protect_profile", Column{"name", name}, Column{"dev", dev}, Column{"record", record});
  refuse_unless(store.number("SELECT sum(length(record)) FROM protect_profile") <= kMaxTableBytes,
                kTableFull);
}

// The row's record with its hits.
std::vector<uint8_t> read_profile(const Statement& row) {
  std::vector<uint8_t> record;
  uint64_t hits;
  row.read(record, hits);
  memcpy(record.data() + offsetof(ProtectProfile, hits), &hits, sizeof hits);
  return record;
}

void get_profile(Store& store, const ProtectProfile& profile, Order& order) {
  require_interface(store, text(profile.dev));
  Statement row = store.query("SELECT record, hits FROM protect_profile WHERE dev = ?", profile.dev);
  refuse_unless(row.next(), kNoSuchEntry);
  const std::vector<uint8_t> record = read_profile(row);
  refuse_unless(order.answer_bytes(0, record.data(), static_cast<uint32_t>(record.size())), kBadRecord);
}

void list_profiles(Store& store, Order& order) {
  RecordList answer(order);
  Statement row = store.query("SELECT record, hits FROM protect_profile ORDER BY name");
  while (row.next()) {
    const std::vector<uint8_t> record = read_profile(row);
    answer.add_bytes(record.data(), static_cast<uint32_t>(record.size()));
  }
}

void del_profile(Store& store, const ProtectProfile& profile) {
  refuse_if_none(store.execute("DELETE FROM protect_profile WHERE name = ?", profile.name));
}

void del_all_profiles(Store& store) { store.execute("DELETE FROM protect_profile"); }

void clear_hits(Store& store, const ProtectProfile& profile) {
  refuse_unless(set_profile_hits(store, text(profile.name), 0), kNoSuchEntry);
}

constexpr const char* kSchema[] = {R"(
CREATE TABLE ddos_record (
  module INTEGER NOT NULL,
  command INTEGER NOT NULL,
  record BLOB NOT NULL,
  PRIMARY KEY (module, command)
) WITHOUT ROWID;
CREATE TABLE protect_profile (
  name TEXT PRIMARY KEY,
  dev TEXT NOT NULL UNIQUE REFERENCES interface (dev) ON DELETE CASCADE,
  record BLOB NOT NULL,
  hits INTEGER NOT NULL DEFAULT 0
))"};

constexpr Command kSwitchCommands[] = {
    {kDdosFySet, kWrites, run_as<set_switch>},
    {kDdosFyMacSet, kWrites, run_as<set_macs>},
    {kDdosFyMacGet, kReads, answer_kept<kDdosFyMacSet, ExemptMacList>},
};

constexpr Command kCommands[] = {
    {kDdosMacSet, kWrites, run_as<set_macs>},
    {kDdosMacGet, kReads, answer_kept<kDdosMacSet, ExemptMacList>},
    {kDdosWanAttack, kWrites, run_as<wan_attack>},
    {kProtectSet, kWrites, run_as<set_profile>},
    {kProtectDevGet, kReads, run_as<get_profile>},
    {kProtectDel, kWrites, run_as<del_profile>},
    {kProtectDelAll, kWrites, run_as<del_all_profiles>},
    {kProtectList, kReads, run_as<list_profiles>},
    {kLanProtectSet, kWrites, run_as<set_lan>},
    {kLanProtectGet, kReads, answer_kept<kLanProtectSet, LanProtect>},
    {kProtectClear, kWrites, run_as<clear_hits>},
};

}  // namespace

// The tables of both are the second one's.
const Module kDdosFyModule = {.number = kModuleDdosFy, .commands = kSwitchCommands};
const Module kDdosModule = {.number = kModuleDdos, .commands = kCommands, .schema = kSchema};

bool set_profile_hits(Store& store, std::string_view name, uint64_t hits) {
  return store.execute("UPDATE protect_profile SET hits = ? WHERE name = ?", hits, name) != 0;
}
