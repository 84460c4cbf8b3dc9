// The hits of routing rules and of protection profiles. Nothing else raises them here, so those that are
// there are the lab's.
#include <limits>

#include "lab/sections.h"
#include "modules/ddos.h"
#include "modules/rule.h"
#include "records/rule.h"

namespace {

using SetHits = bool (*)(Store& store, std::string_view name, uint64_t hits);

void load_hits(Store& store, const Node& node, SetHits set_hits, const char* if_none) {
  node.each_member([&](const std::string& name, const Node& value) {
    const int64_t hits = value.number(0, std::numeric_limits<int64_t>::max());
    RuleName rule;  // cut as orders have it
    copy_text(rule.name, name);
    if (!set_hits(store, text(rule.name), static_cast<uint64_t>(hits))) value.fail(if_none);
  });
}

void load_rules(Store& store, const Node& node) {
  load_hits(store, node, set_route_hits, "no such routing rule");
}

void clear_rules(Store& store) { store.execute("UPDATE rule SET hits = 0 WHERE hits <> 0"); }

int64_t count_rules(Store& store) { return store.number("SELECT count(*) FROM rule WHERE hits <> 0"); }

void load_profiles(Store& store, const Node& node) {
  load_hits(store, node, set_profile_hits, "no such protection profile");
}

void clear_profiles(Store& store) { store.execute("UPDATE protect_profile SET hits = 0 WHERE hits <> 0"); }

int64_t count_profiles(Store& store) {
  return store.number("SELECT count(*) FROM protect_profile WHERE hits <> 0");
}

}  // namespace

const Section kRulesSection = {"rules", load_rules, clear_rules, count_rules};
const Section kProfilesSection = {"profiles", load_profiles, clear_profiles, count_profiles};
