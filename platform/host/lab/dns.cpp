// The names that the DNS proxy of a scenario has in its cache. They run out as all names there do.
#include "records/dns.h"

#include "lab/sections.h"

namespace {

void load_name(Store& store, const Node& node) {
  DnsCacheEntry entry = {};
  std::string dns_name;
  std::vector<uint8_t> v4;
  std::vector<uint8_t> v6;
  read_record(node, entry, {"name", "ttd"}, [&](const std::string& name, const Node& value) {
    if (name == "tm" || name == "name_length" || name == "v4_count" || name == "v6_count") {
      value.fail("unknown member");
    }
    if (name == "name") dns_name = value.text(127);
    if (name == "ips") {
      value.each_element([&](const Node& element) {
        IpAddress ip;
        read_value(element, ip);
        const bool is_v4 = ip.family.value() == 4;
        (is_v4 ? v4 : v6).insert((is_v4 ? v4 : v6).end(), ip.bytes, ip.bytes + (is_v4 ? 4 : 16));
      });
    }
    return name == "name" || name == "ips";
  });
  if (store.number("SELECT count(*) FROM dns_cache WHERE name = ? AND lab", dns_name) != 0) {
    node.fail("a second entry of this name");
  }
  store.execute("INSERT OR REPLACE INTO dns_cache VALUES (?, present(), ?, ?, ?, ?, ?, 1)", dns_name,
                entry.ttd, entry.typeid_, entry.wanid, v4, v6);
}

void load_names(Store& store, const Node& node) {
  node.each_element([&store](const Node& element) { load_name(store, element); });
}

void clear_names(Store& store) { store.execute("DELETE FROM dns_cache WHERE lab"); }

int64_t count_names(Store& store) { return store.number("SELECT count(*) FROM dns_cache WHERE lab"); }

}  // namespace

const Section kDnsCacheSection = {"dns_cache", load_names, clear_names, count_names};
