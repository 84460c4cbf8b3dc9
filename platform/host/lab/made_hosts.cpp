// Made-up hosts: an office that grows as large as it is asked to.
#include "lab/made_hosts.h"

#include <arpa/inet.h>

#include <cstdio>
#include <cstring>
#include <iterator>

namespace {

struct Kind {
  const char* name;
  const char* device;
  const char* user_agent;
  uint32_t sys_type;
  bool is_wireless;
};

constexpr Kind kKinds[] = {
    {"desk", "Desktop PC", "Mozilla/5.0 (Windows NT 10.0; Win64; x64) Firefox/128.0", 1, false},
    {"laptop", "Notebook", "Mozilla/5.0 (X11; Linux x86_64) Firefox/128.0", 2, true},
    {"phone", "Phone", "Mozilla/5.0 (Android 14; Mobile; rv:128.0) Firefox/128.0", 3, true},
    {"printer", "Printer", "", 0, false},
    {"camera", "IP camera", "", 0, false},
};

// Well spread bits, the same for the same number.
uint32_t scatter(uint32_t number) {
  number = (number ^ number >> 16) * 0x45d9f3bU;
  number = (number ^ number >> 16) * 0x45d9f3bU;
  return number ^ number >> 16;
}

}  // namespace

HostAiEntry make_host(uint32_t number) {
  HostAiEntry entry = {};
  HostEntry& host = entry.host;
  const Kind& kind = kKinds[number % std::size(kKinds)];
  const uint32_t chance = scatter(number);

  constexpr uint32_t kRouter = 0x0A010001;  // 10.1.0.1
  host.local_ip = {htonl(kRouter)};
  host.arp_ip = {htonl(kRouter + 1 + number)};
  host.ip = ip_address(host.arp_ip);
  const uint32_t mac = htonl(number + 1);
  host.local_mac.bytes[0] = 2;
  memcpy(host.local_mac.bytes + 2, &mac, sizeof mac);
  host.flag = {uint64_t{1} | (kind.is_wireless ? 4 : 0) | (chance & 0x10)};
  host.creat_tm = 600 + chance % 86400;
  host.last_tm = chance % 50;
  host.sp_up = chance % 200000;
  host.sp_down = chance % 3000000;
  host.speed_limit_up = 2048;
  host.speed_limit_down = 20480;
  host.typeid_user = static_cast<uint16_t>(chance % 300);
  host.mr_id = static_cast<uint16_t>(number % 2);
  host.vlanid = static_cast<uint16_t>(10 + number % 4);
  host.up_bytes = uint64_t{chance} << 4;
  host.up_packets = host.up_bytes / 400;
  host.down_bytes = uint64_t{chance} << 8;
  host.down_packets = host.down_bytes / 900;
  snprintf(host.hostname, sizeof host.hostname, "%s-%u", kind.name, number + 1);
  snprintf(host.portal_text, sizeof host.portal_text, "http://10.1.0.1/login?host=%u", number + 1);
  snprintf(host.user_agent, sizeof host.user_agent, "%s", kind.user_agent);
  snprintf(host.devname, sizeof host.devname, "lan0");
  snprintf(host.device_name, sizeof host.device_name, "%s", kind.device);
  host.sys_type = kind.sys_type;
  host.pc_flag = kind.sys_type == 1;
  snprintf(entry.in_devname, sizeof entry.in_devname, "%s", kind.is_wireless ? "wlan0" : "lan0");
  entry.vek_out_id = host.mr_id;
  if (kind.is_wireless) {
    host.apidx = static_cast<uint8_t>(1 + number % 8);
    host.is_5g = static_cast<uint8_t>(chance & 1);
    snprintf(entry.ssid, sizeof entry.ssid, "office");
    entry.ssid_out_id = host.mr_id;
  }
  return entry;
}
