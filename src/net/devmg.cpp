// devmg: the kernel modules' registry of the router's interfaces.
#include "records/devmg.h"

#include "args/print.h"
#include "net/commands.h"
#include "order/order.h"

namespace {

uint8_t work_mode(std::string_view word) { return word == "router" ? 1 : word == "vpn" ? 2 : 0; }

bool parse_settings(DevEntry& entry, const Args& args) {
  args.take(3, entry.dev, entry.jb_en);
  entry.wk_mode = work_mode(args[5]);
  entry.isp = args.number<uint8_t>(6);
  return true;
}

void print_entry(const DevEntry& entry) {
  print(" dev:%s flags:0X%X  type: %d  arp:%d  jb_en:%d  wk_mode:%d isp:%d  dev_flags:0X%X\n", entry.dev,
        entry.flags, entry.type, entry.arp, entry.jb_en, entry.wk_mode, entry.isp, entry.dev_flags);
}

void print_list(const Answer& answer) {
  print("dev\t\t flags\t type\t arp\t jb\t wk_mode\t isp\t dev_id\t dev_flags\n\n");
  for (const DevEntry& entry : answer.list<DevEntry>()) {
    print("%-16s 0X%X\t %d\t %d\t %d\t %d\t %d\t %d\t 0X%X\n", entry.dev, entry.flags, entry.type, entry.arp,
          entry.jb_en, entry.wk_mode, entry.isp, entry.dev_id, entry.dev_flags);
  }
}

void print_stat(const DevStat& stat) {
  print(
      "rx_broadcast:%lu,rx_multicast:%lu,rx_unicast:%lu\n"
      "tx_broadcast:%lu,tx_multicast:%lu,tx_unicast:%lu\n",
      stat.rx_broadcast, stat.rx_multicast, stat.rx_unicast, stat.tx_broadcast, stat.tx_multicast,
      stat.tx_unicast);
}

// clang-format off
constexpr SubCommand kDevmg[] = {
    {"add", kModuleDevmg, kDevAdd, 1024, sizeof(DevEntry), 5, "dev type[lan:250,not:0]", parse_words<&DevEntry::dev, &DevEntry::type>, nullptr},
    {"del", kModuleDevmg, kDevDel, 1024, sizeof(DevEntry), 4, "dev", parse_words<&DevEntry::dev>, nullptr},
    {"set", kModuleDevmg, kDevSet, 1024, sizeof(DevEntry), 7, "dev jb_en wk_mode wan_isp", parse_as<parse_settings>, nullptr},
    {"get", kModuleDevmg, kDevGet, 1024, sizeof(DevEntry), 4, "dev", parse_words<&DevEntry::dev>, print_as<print_entry>},
    {"list", kModuleDevmg, kDevList, 0x400000, 0x3ffc00, 0, " ", nullptr, print_as<print_list>},
    {"landev", kModuleDevmg, kDevLan, 1024, sizeof(DevName), 4, "dev", parse_words<&DevName::dev>, nullptr},
    {"wandev", kModuleDevmg, kDevWan, 1024, sizeof(DevName), 4, "dev", parse_words<&DevName::dev>, nullptr},
    {"dev_get", kModuleDevmg, kDevRead, 1024, sizeof(DevName), 0, "", nullptr, nullptr},
    {"wan_done", kModuleDevmg, kDevWanDone, 1024, sizeof(DevName), 4, "dev", parse_words<&DevName::dev>, nullptr},
    {"dev_stat", kModuleDevmg, kDevStat, 1024, sizeof(DevStat), 4, "dev", parse_words<&DevName::dev>, print_as<print_stat>},
};
// clang-format on

}  // namespace

int cmd_devmg(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kDevmg, argc, argv, entry);
}
