// The hits of routing rules. Nothing else raises them here, so those that are there are the lab's.
#include <limits>

#include "lab/sections.h"
#include "modules/rule.h"
#include "records/rule.h"

namespace {

void load_rules(Store& store, const Node& node) {
  node.each_member([&store](const std::string& name, const Node& value) {
    const int64_t hits = value.number(0, std::numeric_limits<int64_t>::max());
    RuleName rule;  // cut as orders have it
    copy_text(rule.name, name);
    if (!set_route_hits(store, text(rule.name), static_cast<uint64_t>(hits)))
      value.fail("no such routing rule");
  });
}

void clear_rules(Store& store) { store.execute("UPDATE rule SET hits = 0 WHERE hits <> 0"); }

int64_t count_rules(Store& store) { return store.number("SELECT count(*) FROM rule WHERE hits <> 0"); }

}  // namespace

const Section kRulesSection = {"rules", load_rules, clear_rules, count_rules};
