// igmp: which groups the lines are in, and what IGMP does for whom.
#include "records/igmp.h"

#include "args/lists.h"
#include "args/print.h"
#include "order/order.h"
#include "platform/list.h"
#include "traffic/commands.h"

namespace {

bool parse_mode(IgmpMode& mode, const Args& args) {
  mode.range_bytes = kIgmpRangeBytes;
  if (!args.is(3, "set")) return true;
  mode.is_set = 1;
  mode.mode = args.number(4);
  ListWriter lists = ListWriter::behind(mode);
  mode.range_count = lists.add<V4Range>(get_iplist_str, args[5]);
  mode.range_bytes = lists.bytes();
  return lists.fits() && args.count() >= 6;
}

void print_mode(const Answer& answer) {
  const auto mode = answer.get<IgmpMode>(0);
  print("\nmode:%d\nips:", mode.mode);
  AnswerCursor ranges(answer, sizeof mode);
  print_addr_ranges(ranges, static_cast<uint16_t>(std::min<uint32_t>(mode.range_count, UINT16_MAX)), 0);
  print("\n");
}

void print_groups(const Answer& answer) {
  constexpr uint32_t kText = sizeof(IgmpShow);
  const auto* const text = reinterpret_cast<const char*>(answer.payload() + kText);
  print("\n%s\n", std::string_view(text, strnlen(text, answer.room(kText))));
}

// clang-format off
constexpr SubCommand kIgmp[] = {
    {"show", kModuleMr, kIgmpShow, 204800, 204500, 4, "wanid", parse_words<&IgmpShow::wanid>, print_as<print_groups>},
    {"mode", kModuleMr, kIgmpMode, 10240, 10200, 4, "set/get mode iplist", parse_as<parse_mode>, print_as<print_mode>},
    {"debug", kModuleMr, kIgmpDebug, 1024, sizeof(IgmpDebug), 4, "0|1", parse_words<&IgmpDebug::en>, nullptr},
};
// clang-format on

}  // namespace

int cmd_igmp(int argc, char** argv, const CommandEntry* entry) {
  return run_sub_command(kIgmp, argc, argv, entry);
}
