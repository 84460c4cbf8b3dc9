// devmg: the kernel modules' registry of the router's interfaces.
#include "records/devmg.h"

#include "args/print.h"
#include "main/handlers.h"
#include "order/order.h"

namespace {

bool parse_entry(DevEntry& entry, const Args& args) {
  if (args.count() < 4) return false;
  copy_text(entry.dev, args[3]);
  if (!args.is(2, "add")) return true;
  if (args.count() < 5) return false;
  entry.type = args.number<uint16_t>(4);
  return true;
}

uint8_t work_mode(std::string_view word) { return word == "router" ? 1 : word == "vpn" ? 2 : 0; }

bool parse_settings(DevEntry& entry, const Args& args) {
  if (args.count() < 7) return false;
  copy_text(entry.dev, args[3]);
  entry.jb_en = args.number<uint8_t>(4);
  entry.wk_mode = work_mode(args[5]);
  entry.isp = args.number<uint8_t>(6);
  return true;
}

bool parse_name(DevName& name, const Args& args) {
  if (args.count() < 4) return false;
  copy_text(name.dev, args[3]);
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
    {"add", kDevAdd, 1024, sizeof(DevEntry), "dev type[lan:250,not:0]", parse_as<parse_entry>, nullptr},
    {"del", kDevDel, 1024, sizeof(DevEntry), "dev", parse_as<parse_entry>, nullptr},
    {"set", kDevSet, 1024, sizeof(DevEntry), "dev jb_en wk_mode wan_isp", parse_as<parse_settings>, nullptr},
    {"get", kDevGet, 1024, sizeof(DevEntry), "dev", parse_as<parse_entry>, print_as<print_entry>},
    {"list", kDevList, 0x400000, 0x3ffc00, " ", nullptr, print_as<print_list>},
    {"landev", kDevLan, 1024, sizeof(DevName), "dev", parse_as<parse_name>, nullptr},
    {"wandev", kDevWan, 1024, sizeof(DevName), "dev", parse_as<parse_name>, nullptr},
    {"dev_get", kDevRead, 1024, sizeof(DevName), "", nullptr, nullptr},
    {"wan_done", kDevWanDone, 1024, sizeof(DevName), "dev", parse_as<parse_name>, nullptr},
    {"dev_stat", kDevStat, 1024, sizeof(DevStat), "dev", parse_as<parse_name>, print_as<print_stat>},
};
// clang-format on

}  // namespace

int cmd_devmg(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kModuleDevmg, kDevmg, argc, argv, entry);
}
