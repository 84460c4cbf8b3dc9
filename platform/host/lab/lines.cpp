// The lines of a scenario: WAN interfaces, up or down, and what packets would tell of them.
#include "lab/give_order.h"
#include "lab/sections.h"
#include "modules/devmg.h"
#include "modules/modules.h"
#include "records/devmg.h"

namespace {

// As LineEntry has them.
struct LineFacts {
  char dev[16];
  uint8_t up;
  uint8_t trys;
  uint8_t ret_state;
  int32_t hi;
  int32_t hi_bracket[2];
  int32_t ct;
  uint64_t hi_val;
  uint64_t ct_val;
  uint64_t qos_speed[2];
  uint32_t false_tm;
};

// "qos_up", "qos_down": what the line carries, where its interface is not shaped.
constexpr Field kLineFields[] = {
    {"dev", AT(LineFacts, dev), Field::kText, true},
    {"up", AT(LineFacts, up), Field::kNumber},
    {"hi", AT(LineFacts, hi), Field::kSigned},
    {"hi_bracket_1", AT(LineFacts, hi_bracket[0]), Field::kSigned},
    {"hi_bracket_2", AT(LineFacts, hi_bracket[1]), Field::kSigned},
    {"ct", AT(LineFacts, ct), Field::kSigned},
    {"hi_val", AT(LineFacts, hi_val), Field::kNumber},
    {"ct_val", AT(LineFacts, ct_val), Field::kNumber},
    {"qos_up", AT(LineFacts, qos_speed[0]), Field::kNumber},
    {"qos_down", AT(LineFacts, qos_speed[1]), Field::kNumber},
    {"false_tm", AT(LineFacts, false_tm), Field::kNumber},
    {"trys", AT(LineFacts, trys), Field::kNumber},
    {"ret_state", AT(LineFacts, ret_state), Field::kNumber},
};

// Makes the interface where there is none. One that is there must be a line already: a lab turns no LAN
// around.
void load_line(Store& store, const Node& node) {
  LineFacts line = {};
  read_fields(node, kLineFields, &line);
  DevName name = {};
  copy_text(name.dev, text(line.dev));
  const bool is_new = store.number("SELECT count(*) FROM interface WHERE dev = ?", line.dev) == 0;
  if (is_new) {
    DevEntry entry = {};
    copy_text(entry.dev, text(line.dev));
    give_order(store, node, kDevmgModule, kDevAdd, entry);
    give_order(store, node, kDevmgModule, kDevWan, name);
  }
  const int64_t flags = is_new ? 0 : store.number("SELECT flags FROM interface WHERE dev = ?", line.dev);
  if (!is_new && (flags & kInterfaceWan) == 0) node.fail(tvlret_err_str[kNotALine]);
  if (store.execute("INSERT OR IGNORE INTO line_fact VALUES"
                    " ((SELECT wanid FROM line WHERE dev = ?), ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                    line.dev, flags, line.hi, line.hi_bracket[0], line.hi_bracket[1], line.ct, line.hi_val,
                    line.ct_val, line.qos_speed[0], line.qos_speed[1], line.false_tm, line.trys,
                    line.ret_state) == 0) {
    node.fail("a second line of this dev");
  }
  // To be marked anew takes a line's state away.
  give_order(store, node, kDevmgModule, line.up != 0 ? kDevWanDone : kDevWan, name);
}

void load_lines(Store& store, const Node& node) {
  node.each_element([&store](const Node& element) { load_line(store, element); });
}

// Interfaces that the lab has made go, with what orders have set for them; the others are up or down again as
// they were.
void clear_lines(Store& store) {
  store.execute(
      "DELETE FROM interface WHERE dev IN"
      "  (SELECT dev FROM line JOIN line_fact USING (wanid) WHERE flags_before = 0)");
  store.execute(
      "UPDATE interface SET flags = flags_before FROM line JOIN line_fact USING (wanid)"
      "  WHERE line.dev = interface.dev");
  store.execute("DELETE FROM line_fact");
}

int64_t count_lines(Store& store) { return store.number("SELECT count(*) FROM line_fact"); }

}  // namespace

const Section kLinesSection = {"lines", load_lines, clear_lines, count_lines};
