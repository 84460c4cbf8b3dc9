// Speed rules of the host library.
#include "host.h"

namespace {

class Speed : public HostTest {};

TEST_F(Speed, RulesAreKeptAndLimitTheirHosts) {
  ok({"qos spset add xz r 10.0.0.1-10.0.0.9 1,2 gx 5 6 0",
      "qos spset add xz r 10.0.0.1-10.0.0.9 all gx 7 8 all", "qos spset add bz r 10.0.0.1 all dl 1 2 all",
      "qos spset del bz r"});
  const std::string header = "name\t sp[up]\t sp[down]\t gongx\t user\t qostype\t dev\n\n";
  shows("qos splist xz",
        "num: 1\n" + header + "r\t 7\t 8\t 1\tips:10.0.0.1-10.0.0.9,\tqostype:all\tdev:all\n");
  shows("qos splist bz", "num: 0\n" + header);
  load(
      R"({"hosts": [{"ip": "10.0.0.9", "local_mac": "02:00:00:00:00:01"}], "types": [{"id": 3, "priority": 1}]})");
  EXPECT_NE(vek("hi list").out.find("  speed_limit:7|8 "), std::string::npos);
  EXPECT_NE(vek("qos typelist").out.find("3\thigh\t0K/s"), std::string::npos);
  refused("no such rule", {"qos spset del bz r"});
  refused("empty list", {"qos spset add xz s '' all gx 1 1 all", "qos spset add xz s 10.0.0.1 x gx 1 1 all"});
}

TEST_F(Speed, PriorityRulesStandOnce) {
  const std::string add = "qos sprule add pri p 2 1 1 0 0 0 5 6 10.0.0.1 '' '' '' proto=tcp:80 0";
  ok({add, "qos dns_ip a.b 1.2.3.4 tcp:80 1.1.1.1|-1"});
  refused("already there", {add});
  refused("empty list", {"qos sprule add pri q 2 1 1 0 0 0 5 6 '' '' '' '' '' 0"});
  refused("no such rule", {"qos sprule get xz p"});
  begins("qos sprule get pri p", "name:[p]\trun_prio:[2]\tdev_prio:[1]");
  begins("qos sprule list pri", "num: 1\nname:[p]\t run_prio:[2]");
}

}  // namespace
