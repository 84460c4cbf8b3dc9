// The traffic types of a scenario, with their rates and counters.
#include "lab/sections.h"
#include "records/qos.h"

namespace {

void load_types(Store& store, const Node& node) {
  node.each_element([&store](const Node& element) {
    QosTypeEntry type = {};
    read_record(element, type, {"id"});
    if (store.number("SELECT count(*) FROM qos_type WHERE id = ?", type.id) != 0) {
      element.fail("a second type of this id");
    }
    store.put("qos_type", type);
  });
}

void clear_types(Store& store) { store.execute("DELETE FROM qos_type"); }

int64_t count_types(Store& store) { return store.number("SELECT count(*) FROM qos_type"); }

}  // namespace

const Section kTypesSection = {"types", load_types, clear_types, count_types};
