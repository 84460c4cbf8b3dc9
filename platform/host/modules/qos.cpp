// The QoS engine (module 14): what devices are shaped to, the engine's global limits, and the counters of the
// devices, which are Linux's own. No packet waits in this engine, so its buffers are empty.
#include "records/qos.h"

#include <algorithm>

#include "linux/net.h"
#include "modules/checks.h"
#include "modules/general.h"
#include "modules/modules.h"
#include "modules/mr.h"
#include "state/settings.h"
#include "state/time.h"

namespace {

constexpr int kMaxDevices = 64;
constexpr uint32_t kMaxSpeedValue = 99;
constexpr int64_t kMinReadingMs = 100;

// A device is an interface of the registry, or one that Linux has.
void require_device(Store& store, std::string_view dev) {
  if (store.number("SELECT count(*) FROM interface WHERE dev = ?", dev) == 0 && !linux_interface(dev)) {
    throw Refusal{kUnknownInterface};
  }
}

void set(Store& store, const QosDevSettings& settings) {
  require_device(store, text(settings.dev));
  check_switch(settings.en);
  refuse_unless(settings.type <= 1, kBadType);
  store.put("qos_device", settings);
  refuse_if_full(store, "qos_device", kMaxDevices);
}

// Off and all zero for a device that was never set.
void get(Store& store, QosDevSettings& settings) {
  require_device(store, text(settings.dev));
  QosDevSettings found = {};
  copy_text(found.dev, text(settings.dev));
  Statement row = store.query("SELECT * FROM qos_device WHERE dev = ?", settings.dev);
  if (row.next()) row.read_fields(found);
  settings = found;
}

// Keeps two readings of a device's counters: the new one takes the place of the older. When the last one is
// only just over, both stay as they are: the time between them would be too short to divide by.
void take_reading(Store& store, std::string_view dev, uint64_t up, uint64_t down) {
  const int64_t now = milliseconds_since_boot();
  store.execute("DELETE FROM qos_reading WHERE dev = ? AND taken_ms > ?", dev, now);  // before the last boot
  if (now - store.number("SELECT max(taken_ms) FROM qos_reading WHERE dev = ?", dev) < kMinReadingMs) return;
  store.execute("INSERT INTO qos_reading VALUES (?, ?, ?, ?)", dev, now, up, down);
  store.execute(
      "DELETE FROM qos_reading WHERE dev = ?1 AND taken_ms NOT IN"
      "  (SELECT taken_ms FROM qos_reading WHERE dev = ?1 ORDER BY taken_ms DESC LIMIT 2)",
      dev);
}

// Rates between the two readings; 0 before there are two, and when a counter began anew in between.
void read_rates(Store& store, std::string_view dev, uint64_t& up, uint64_t& down) {
  Statement row = store.query(
      "SELECT max(newer.up - older.up, 0) * 1000 / (newer.taken_ms - older.taken_ms),"
      "  max(newer.down - older.down, 0) * 1000 / (newer.taken_ms - older.taken_ms) "
      "FROM qos_reading AS newer JOIN qos_reading AS older USING (dev) "
      "WHERE dev = ? AND newer.taken_ms > older.taken_ms",
      dev);
  if (row.next()) row.read(up, down);
}

// Up is what the device sends. Linux counts lost packets but not their bytes, and nothing by the type of IP.
void state(Store& store, QosDevStats& stats) {
  const std::string_view dev = text(stats.dev);
  require_device(store, dev);
  QosDevSettings settings = {};
  copy_text(settings.dev, dev);
  get(store, settings);

  QosDevStats found = {};
  copy_text(found.dev, dev);
  found.iptype = stats.iptype;
  found.sp_max_up = settings.up;
  found.sp_max_down = settings.down;
  const rtnl_link_stats64 counters = linux_interface(dev).value_or(Interface{}).counters;
  found.up = {counters.tx_bytes, counters.tx_packets};
  found.down = {counters.rx_bytes, counters.rx_packets};
  found.drop_up.skb = counters.tx_dropped;
  found.drop_down.skb = counters.rx_dropped;
  take_reading(store, dev, found.up.bytes, found.down.bytes);
  read_rates(store, dev, found.sp_up, found.sp_down);
  stats = found;
}

void forget_readings(Store& store) { store.execute("DELETE FROM qos_reading"); }

void no_queue(Store& store, QosNoQueue& values) {
  require_device(store, text(values.dev));
  if (values.is_set != 0) {
    refuse_unless(std::max(values.up, values.down) <= kMaxSpeedValue, kBadNumber);
    store.execute("INSERT OR REPLACE INTO qos_no_queue VALUES (?, ?, ?)", values.dev, values.up, values.down);
    refuse_if_full(store, "qos_no_queue", kMaxDevices);
  }
  values.up = values.down = 0;
  Statement row = store.query("SELECT up, down FROM qos_no_queue WHERE dev = ?", values.dev);
  if (row.next()) row.read(values.up, values.down);
}

// A server that is no address came in as a name; nothing has a name of figures alone.
void check_server(const QosDelayControl& control) {
  const std::string_view name = text(control.server_name);
  if (control.server != Ip4{}) {
    refuse_unless(is_host_ip(control.server), kBadAddress);
  } else {
    refuse_unless(name.find_first_not_of("0123456789.") != name.npos, kBadAddress);
    check_domain(name);
  }
}

// Who switches it off says nothing else.
void set_delay_control(Store& store, const QosDelayControl& control) {
  require_device(store, text(control.dev));
  check_switch(control.en);
  if (control.en != 0) {
    check_server(control);
    refuse_unless(control.dely_min <= control.dely_max, kBadRange);
  }
  store.execute(
      "INSERT OR REPLACE INTO qos_delay VALUES (:dev, :en, :level, :dely_min, :dely_max, :server_name,"
      "  :server)",
      control);
  refuse_if_full(store, "qos_delay", kMaxDevices);
}

// What has been measured is a lab's word.
void get_delay_control(Store& store, QosDelayControl& control) {
  require_device(store, text(control.dev));
  QosDelayControl found = {};
  copy_text(found.dev, text(control.dev));
  Statement row = store.query("SELECT * FROM qos_delay WHERE dev = ?", found.dev);
  if (row.next()) row.read_fields(found);
  Statement fact = store.query("SELECT * FROM qos_delay_fact WHERE dev = ?", found.dev);
  if (fact.next()) fact.read_fields(found);
  control = found;
}

// The words of a record, each kept under its name.
constexpr const char* kExtNames[] = {
    "hi_up",  "hi_down",    "ct_num1",    "ct_num2",        "ct_udp_num1",       "ct_udp_num2",
    "tcpwin", "hi_wait_tm", "ct_wait_tm", "sqos_limit_num", "sqos_ct_limit_num",
};
constexpr const char* kWaitNames[] = {
    "wait N/N", "wait N/H", "wait N/L", "wait H/N", "wait H/H",
    "wait H/L", "wait L/N", "wait L/H", "wait L/L",
};

template <typename Record, size_t kCount>
void set_words(Store& store, const char* const (&names)[kCount], const Record& record) {
  uint32_t words[kCount];
  static_assert(sizeof words == sizeof record);
  memcpy(words, &record, sizeof words);
  for (size_t i = 0; i < kCount; ++i) set_setting(store, kModuleQos, names[i], words[i]);
}

template <typename Record, size_t kCount>
void get_words(Store& store, const char* const (&names)[kCount], Record& record) {
  uint32_t words[kCount];
  static_assert(sizeof words == sizeof record);
  for (size_t i = 0; i < kCount; ++i) words[i] = get_setting(store, kModuleQos, names[i]);
  memcpy(&record, words, sizeof words);
}

void ext_set(Store& store, const QosExtSettings& settings) { set_words(store, kExtNames, settings); }
void ext_get(Store& store, QosExtSettings& settings) { get_words(store, kExtNames, settings); }

void queue_wait(Store& store, QueueWaitMatrix& matrix) {
  if (matrix.is_set != 0) set_words(store, kWaitNames, matrix.wait);
  get_words(store, kWaitNames, matrix.wait);
}

void set_level(Store& store, const QosLevel& level) { set_setting(store, kModuleQos, "level", level.level); }

// No VPN traffic is shaped here, so its rates are 0.
void vpn_limit(Store& store, QosVpnLimit& vpn) {
  if (vpn.is_set != 0) set_setting(store, kModuleQos, "vpn_limit", vpn.limit);
  vpn.limit = get_setting(store, kModuleQos, "vpn_limit");
  vpn.up = vpn.down = 0;
}

void speed_limit(Store& store, QosSpeedLimit& limit) {
  check_switch(limit.off);
  if (limit.is_set != 0) set_setting(store, kModuleQos, "speed_limit_off", limit.off);
  limit.off = get_setting(store, kModuleQos, "speed_limit_off");
}

void single_ct(Store& store, QosSingleCt& single) {
  require_line(store, single.iface);
  if (single.is_set != 0) {
    store.execute("INSERT OR REPLACE INTO qos_single_ct VALUES (?, ?, ?)", single.iface, single.up,
                  single.down);
  }
  single.up = single.down = 0;
  Statement row = store.query("SELECT up, down FROM qos_single_ct WHERE wanid = ?", single.iface);
  if (row.next()) row.read(single.up, single.down);
}

constexpr const char* kSpeedValue = "speed_value";  // of the lines that have none of their own

// One value for all lines, whether they exist yet or not.
void speed_values(Store& store, QosSpeedValues& speed) {
  if (speed.is_set != 0) {
    const uint8_t value = speed.values[0];
    refuse_unless(value <= kMaxSpeedValue, kBadNumber);
    refuse_unless(std::ranges::count(speed.values, value) == std::ssize(speed.values), kBadList);
    set_setting(store, kModuleQos, kSpeedValue, value);
    store.execute("DELETE FROM qos_line_speed");
  }
  memset(speed.values, static_cast<int>(get_setting(store, kModuleQos, kSpeedValue)), sizeof speed.values);
}

// One line's own, which goes with the line.
void line_speed_value(Store& store, QosSpeedValues& speed) {
  require_line(store, speed.line);
  uint8_t& value = speed.values[speed.line];
  if (speed.is_set != 0) {
    refuse_unless(value <= kMaxSpeedValue, kBadNumber);
    store.execute("INSERT OR REPLACE INTO qos_line_speed VALUES (?, ?)", speed.line, value);
  }
  Statement own = store.query("SELECT value FROM qos_line_speed WHERE wanid = ?", speed.line);
  value = static_cast<uint8_t>(get_setting(store, kModuleQos, kSpeedValue));
  if (own.next()) own.read(value);
}

void skb(Store& store, SkbReport& report) {
  require_device(store, text(report.dev));
  SkbReport empty = {};
  copy_text(empty.dev, text(report.dev));
  report = empty;
}

// The lines with their interfaces.
void device_info(Store& store, Order& order) {
  DevSkbReport report = {};
  uint32_t offset = sizeof report;
  Statement row = store.query("SELECT dev, wanid FROM line ORDER BY wanid");
  while (row.next()) {
    DevSkb device = {};
    row.read(device.dev, device.iface);
    if (!order.answer(device, offset)) break;
    offset += uint32_t{sizeof device};
    ++report.count;
  }
  order.answer(report);
}

// Nothing limits single addresses.
void ip_rule_list(Store&, Order& order) { ListAnswer<QosIpRule> answer(order); }

// Leaves a report where errinfo finds it.
void debug(Store& store) {
  const auto count = [&store](const char* sql) { return std::to_string(store.number(sql)); };
  store_report(store, kModuleQos,
               "qos: level " + std::to_string(get_setting(store, kModuleQos, "level")) + ", " +
                   count("SELECT count(*) FROM qos_device WHERE en") + " devices shaped, " +
                   count("SELECT count(DISTINCT dev) FROM qos_reading") + " devices read");
}

constexpr const char* kSchema[] = {R"(
CREATE TABLE qos_device (
  dev TEXT PRIMARY KEY,
  type INTEGER NOT NULL,
  en INTEGER NOT NULL,
  ge_tm INTEGER NOT NULL,
  tcpwin INTEGER NOT NULL,
  up INTEGER NOT NULL,
  down INTEGER NOT NULL,
  up_fast INTEGER NOT NULL,
  down_fast INTEGER NOT NULL,
  up_ctskb INTEGER NOT NULL,
  down_ctskb INTEGER NOT NULL,
  up_skb INTEGER NOT NULL,
  down_skb INTEGER NOT NULL,
  hi_up INTEGER NOT NULL,
  hi_down INTEGER NOT NULL
) WITHOUT ROWID;
CREATE TABLE qos_no_queue (
  dev TEXT PRIMARY KEY,
  up INTEGER NOT NULL,
  down INTEGER NOT NULL
) WITHOUT ROWID;
CREATE TABLE qos_reading (
  dev TEXT NOT NULL,
  taken_ms INTEGER NOT NULL,
  up INTEGER NOT NULL,
  down INTEGER NOT NULL,
  PRIMARY KEY (dev, taken_ms)
) WITHOUT ROWID;
CREATE TRIGGER qos_device_goes AFTER DELETE ON interface BEGIN
  DELETE FROM qos_device WHERE dev = old.dev;
  DELETE FROM qos_no_queue WHERE dev = old.dev;
  DELETE FROM qos_reading WHERE dev = old.dev;
END;
CREATE TABLE qos_single_ct (
  wanid INTEGER PRIMARY KEY REFERENCES line (wanid) ON DELETE CASCADE,
  up INTEGER NOT NULL,
  down INTEGER NOT NULL
);
CREATE TABLE qos_speed_value (id INTEGER PRIMARY KEY CHECK (id = 0), by_line BLOB NOT NULL))",
                                   // The value of line 255, which no line is, is that of all together. A
                                   // value is a byte below 128, as a character of a text.
                                   R"(
CREATE TABLE qos_line_speed (
  wanid INTEGER PRIMARY KEY REFERENCES line (wanid) ON DELETE CASCADE,
  value INTEGER NOT NULL
);
INSERT INTO qos_line_speed
  SELECT wanid, coalesce(unicode(CAST(substr(by_line, wanid + 1, 1) AS TEXT)), 0) FROM line, qos_speed_value;
INSERT INTO setting
  SELECT 14, 'speed_value', coalesce(unicode(CAST(substr(by_line, 256, 1) AS TEXT)), 0) FROM qos_speed_value;
DROP TABLE qos_speed_value)",
                                   R"(
CREATE TABLE qos_delay (
  dev TEXT PRIMARY KEY,
  en INTEGER NOT NULL,
  level INTEGER NOT NULL,
  dely_min INTEGER NOT NULL,
  dely_max INTEGER NOT NULL,
  server_name TEXT NOT NULL,
  server INTEGER NOT NULL
) WITHOUT ROWID;
CREATE TRIGGER qos_delay_goes AFTER DELETE ON interface BEGIN
  DELETE FROM qos_delay WHERE dev = old.dev;
END;
CREATE TABLE qos_delay_fact (             -- a lab's word
  dev TEXT PRIMARY KEY,
  tmp_ip INTEGER NOT NULL,
  up_max INTEGER NOT NULL,
  down_max INTEGER NOT NULL,
  up_set INTEGER NOT NULL,
  down_set INTEGER NOT NULL
) WITHOUT ROWID)"};

constexpr Command kCommands[] = {
    {kQosSet, kWrites, run_as<set>},
    {kQosGet, kReads, run_as<get>},
    {kQosState, kWrites, run_as<state>},
    {kQosDebug, kWrites, run_as<debug>},
    {kQosExtSet, kWrites, run_as<ext_set>},
    {kQosExtGet, kReads, run_as<ext_get>},
    {kQosLevel, kWrites, run_as<set_level>},
    {kQosDelaySet, kWrites, run_as<set_delay_control>},
    {kQosDelayGet, kReads, run_as<get_delay_control>},
    {kQosSkb, kReads, run_as<skb>},
    {kQosDevInfo, kReads, run_as<device_info>},
    {kQosVpnLimit, kWrites, run_as<vpn_limit>},
    {kQosSingleCt, kWrites, run_as<single_ct>},
    {kQosStatisticsInit, kWrites, run_as<forget_readings>},
    {kQosIpRuleList, kReads, run_as<ip_rule_list>},
    {kQosSpeedLimit, kWrites, run_as<speed_limit>},
    {kQosQueueWait, kWrites, run_as<queue_wait>},
    {kQosSpeedValue, kWrites, run_as<speed_values>},
    {kQosNoQueue, kWrites, run_as<no_queue>},
    {kQosLineSpeedValue, kWrites, run_as<line_speed_value>},
};

}  // namespace

const Module kQosModule = {kModuleQos, kCommands, kSchema, forget_readings};
