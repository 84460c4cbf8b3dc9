// The lines of a scenario: WAN interfaces, up or down, and what packets would tell of them.
#include "lab/give_order.h"
#include "lab/sections.h"
#include "modules/devmg.h"
#include "modules/modules.h"
#include "modules/rule.h"
#include "records/devmg.h"

namespace {

// As LineEntry has them. "qos_up", "qos_down": what the line carries, where its interface is not shaped.
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
  uint64_t qos_up;
  uint64_t qos_down;
  uint32_t false_tm;

  static constexpr void each_field(auto& r, auto&& field) {
    field("dev", r.dev), field("up", r.up), field("trys", r.trys), field("ret_state", r.ret_state),
        field("hi", r.hi), field("hi_bracket", r.hi_bracket), field("ct", r.ct), field("hi_val", r.hi_val),
        field("ct_val", r.ct_val), field("qos_up", r.qos_up), field("qos_down", r.qos_down),
        field("false_tm", r.false_tm);
  }
};

// Makes the interface where there is none. One that is there must be a line already: a lab turns no LAN
// around.
void load_line(Store& store, const Node& node) {
  LineFacts line = {};
  read_record(node, line, {"dev"});
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
  if (store.execute("INSERT OR IGNORE INTO lab_line VALUES (?, ?)", line.dev, flags) == 0) {
    node.fail("a second line of this dev");
  }
  store.execute(
      "INSERT INTO line_fact"
      "  (wanid, hi, hi_bracket_1, hi_bracket_2, ct, hi_val, ct_val, seen_up, seen_down, false_tm, trys, "
      "ret_state) "
      "SELECT wanid, :hi, :hi_bracket_1, :hi_bracket_2, :ct, :hi_val, :ct_val, :qos_up, :qos_down, "
      ":false_tm, :trys,"
      "  :ret_state FROM line WHERE dev = :dev",
      line);
  store.execute("UPDATE interface SET flags = flags & ~?1 | iif(?2, ?1, 0) WHERE dev = ?3", kInterfaceLineUp,
                line.up, line.dev);
}

void load_lines(Store& store, const Node& node) {
  node.each_element([&store](const Node& element) { load_line(store, element); });
}

// Interfaces that the lab has made go, whatever they have become, with what orders have set for them and the
// rules that name them; the other lines are up or down again as they were.
void clear_lines(Store& store) {
  Statement row = store.query("SELECT dev FROM lab_line WHERE flags_before = 0");
  for (std::string dev; row.next();) {
    row.read(dev);
    delete_routes_over(store, dev);
  }
  store.execute("DELETE FROM interface WHERE dev IN (SELECT dev FROM lab_line WHERE flags_before = 0)");
  store.execute(
      "UPDATE interface SET flags = flags_before FROM lab_line"
      "  WHERE lab_line.dev = interface.dev AND interface.flags & ?",
      kInterfaceWan);
  store.execute("DELETE FROM lab_line");
  store.execute("DELETE FROM line_fact");
}

int64_t count_lines(Store& store) { return store.number("SELECT count(*) FROM lab_line"); }

}  // namespace

const Section kLinesSection = {"lines", load_lines, clear_lines, count_lines};
