// ppp_fast: the fast path from a PPP session to its real device.
#include "records/ppp_fast.h"

#include <arpa/inet.h>

#include "args/print.h"
#include "net/commands.h"
#include "order/order.h"

namespace {

// Who switches it off needs to say no more than the PPP device.
bool parse_binding(PppFastBinding& binding, const Args& args) {
  args.take(3, binding.en, binding.ppp_dev, binding.real_dev, binding.session_id);
  return binding.en != 1 || args.count() >= 7;
}

void print_binding(const PppFastBinding& binding) {
  const PppSessionHeader& header = binding.header;
  print("ppp_dev: %s  real_dev:%s session_id:%d int:%d\n", binding.ppp_dev, binding.real_dev,
        binding.session_id, binding.int_flag);
  print("dst: %s\n", header.dst);
  print("src: %s\n", header.src);
  print("proto: 0x%04x\n", ntohs(header.ether_type.value));
  print("ver_type: 0x%2x\n", header.ver_type);
  print("code: 0x%02x\n", header.code);
  print("session_id: %u\n", ntohs(header.session_id.value));
  print("proto2: 0x%04x\n", ntohs(header.protocol.value));
}

// clang-format off
constexpr SubCommand kPppFast[] = {
    {"set", kModulePppFast, kPppFastSet, 1024, sizeof(PppFastBinding), 5, "en[1:on]  ppp_dev real_dev session_id", parse_as<parse_binding>, nullptr},
    {"get", kModulePppFast, kPppFastGet, 1024, sizeof(PppFastBinding), 4, "dev", parse_words<&PppFastBinding::real_dev>, print_as<print_binding>},
};
// clang-format on

}  // namespace

int cmd_ppp_fast(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kPppFast, argc, argv, entry);
}
