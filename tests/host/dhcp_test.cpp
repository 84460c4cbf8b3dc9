// The DHCP server: pools, reservations, excluded addresses, switches, and the dnsmasq that serves them and
// the DNS proxy.
#include <unistd.h>

#include "host.h"

namespace {

class Dhcp : public HostTest {
 protected:
  Dhcp() { ok({"devmg add lan0 250", "devmg add lan1 250", "devmg add 'lan#' 250"}); }

  // Adds a pool, with other words in the place of some.
  static std::string pool(const std::string& changes = "") {
    std::string words =
        "dhcp add lan0 10.1.0.1 10.1.0.2 255.255.0.0 10.1.0.10 10.1.0.20 3600 9.9.9.9,1.1.1.1 a.lan admin "
        "0aff 7";
    for (const auto& [from, to] : pairs(changes)) words.replace(words.find(from), from.size(), to);
    return words;
  }
};

const char* const kOtherPool =
    "dhcp add lan1 10.3.0.1 10.3.0.1 255.255.0.0 10.3.0.1 10.3.255.254 3600 '' '' base '' ''";
const std::string kUsage = " dhcp\tadd del show member_list bind\n";

TEST_F(Dhcp, KeepsPools) {
  const std::string ends = "\n option43: 0AFF\n rcv:0,send:0\n\n";
  const std::string first =
      "dev: lan0 dhcp_type: admin srv_ip: 10.1.0.1\n\n gwaddr: 10.1.0.2,\n snmask: 255.255.0.0,\n"
      "leasetime: 3600  domain_name: a.lan srv_mac: 00:00:00:00:00:00\n\n dns: 9.9.9.9,1.1.1.1,\n"
      " ips: 10.1.0.10-10.1.0.20,\n filter: 7," +
      ends;
  refused("no such entry", {"dhcp show lan0", "dhcp del lan0"});
  for (int i = 0; i < 2; ++i) ok({pool()});
  shows("dhcp show lan0", first);
  // The type stays where nothing is said of it.
  ok({"dhcp new_add lan0 10.1.0.1 10.1.0.2,10.1.0.3,10.2.0.1 255.255.0.0,255.255.0.0,255.255.255.0 "
      "10.1.0.10,10.1.0.21,10.2.0.1 10.1.0.20,10.1.0.21,10.2.0.254 120 '' '' 0aff 7,8,9"});
  shows("dhcp show lan0",
        "dev: lan0 dhcp_type: admin srv_ip: 10.1.0.1\n\n gwaddr: 10.1.0.2,10.1.0.3,10.2.0.1,\n"
        " snmask: 255.255.0.0,255.255.0.0,255.255.255.0,\n"
        "leasetime: 120  domain_name:  srv_mac: 00:00:00:00:00:00\n\n dns: \n"
        " ips: 10.1.0.10-10.1.0.20,10.1.0.21-10.1.0.21,10.2.0.1-10.2.0.254,\n filter: 7,8,9," +
            ends);
  ok({pool(), kOtherPool, "dhcp del lan1"});
  refused("no such entry", {"dhcp show lan1"});
  shows("dhcp show lan0", first);
  ok({"devmg del lan0", "devmg add lan0 250"});
  refused("no such entry", {"dhcp show lan0"});
}

TEST_F(Dhcp, RefusesWhatCannotBeAPool) {
  ok({pool(), kOtherPool, "dhcp_reserve add lan0 02:00:00:00:00:05 10.1.0.63"});
  const std::string before = vek("dhcp show lan0").out;
  refused("unknown interface",
          {pool("lan0 lan9"), "dhcp del lan9", "dhcp show lan9", "dhcp member_list lan9"});
  refused("bad name", {pool("lan0 lan#"), pool("a.lan a..lan"), pool("a.lan a,b")});
  refused("bad address", {pool("10.1.0.1 127.0.0.1"), pool("10.1.0.1 10.1.0.0"),
                          pool("10.1.0.1 10.1.255.255"), pool("10.1.0.2 10.1.0.2x"),
                          pool("10.1.0.2 10.1.0.0"), pool("1.1.1.1 9.9.9"), pool("1.1.1.1 224.0.0.1")});
  refused("bad mask", {pool("255.255.0.0 24"), pool("255.255.0.0 255.0.255.0"),
                       pool("255.255.0.0 255.255.255.254"), pool("255.255.0.0 0.0.0.0")});
  refused("range ends before it starts", {pool("10.1.0.20 10.1.0.9")});
  refused("address outside the network", {pool("10.1.0.1 10.2.0.1"), pool("10.1.0.20 10.2.0.1"),
                                          pool("10.1.0.10 10.1.0.0"), pool("10.1.0.20 10.1.255.255")});
  refused("empty list", {pool("10.1.0.10 ,")});
  refused("bad time", {pool("3600 119"), pool("3600 31536001"), pool("3600 -1")});
  refused("number out of range", {pool("7 -1")});
  const std::string two =
      "10.1.0.2 10.1.0.2,10.1.9.2 10.1.0.20 10.1.0.20,10.1.9.30 255.255.0.0 255.255.0.0,255.255.";
  refused("overlaps another", {pool("lan0 lan1"), pool(two + "0.0 10.1.0.10 10.1.0.10,10.1.0.20"),
                               pool(two + "255.0 10.1.0.10 10.1.0.10,10.1.9.10")});
  refused("in use",
          {pool("10.1.0.1 10.1.0.63"), pool("10.1.0.2 10.1.0.63"), pool("255.255.0.0 255.255.255.192")});
  shows("dhcp show lan0", before);
}

TEST_F(Dhcp, KeepsReservations) {
  const auto mac = [](int i) { return "02:00:00:00:00:0" + std::to_string(i); };
  const auto add = [&](int i, const std::string& ip) { return "dhcp_reserve add lan0 " + mac(i) + " " + ip; };
  const auto lists = [&](const std::string& dev, std::initializer_list<int> numbers) {
    std::string all = "num: " + std::to_string(numbers.size()) + "\nipaddr  mac \n\n";
    for (const int i : numbers) all += "10.1.0.5" + std::to_string(i) + "  " + mac(i) + "   \n";
    shows("dhcp_reserve show " + dev, all);
  };
  ok({add(7, "10.9.0.7"), "dhcp_reserve del lan0 " + mac(7), pool(), add(6, "10.1.0.56"), add(5, "10.1.0.44"),
      "dhcp_not_assign add lan0 10.1.0.60 10.1.0.69", "dhcp_reserve add lan1 02:00:00:00:00:05 10.1.0.55"});
  for (int i = 0; i < 2; ++i) ok({add(5, "10.1.0.55")});  // instead of 10.1.0.44
  refused("unknown interface", {"dhcp_reserve add lan9 02:00:00:00:00:09 10.1.0.59", "dhcp_reserve show lan9",
                                "dhcp_reserve del lan9 02:00:00:00:00:05", "dhcp_reserve delall lan9"});
  refused("in use", {add(9, "10.1.0.55"), add(9, "10.1.0.1"), add(9, "10.1.0.2")});
  refused("overlaps another", {add(9, "10.1.0.65")});
  refused("address outside the network", {add(9, "10.2.0.9")});
  refused("bad address", {add(9, "10.1.0.0"), "dhcp_reserve add lan1 02:00:00:00:00:09 127.0.0.1"});
  refused("bad MAC address",
          {"dhcp_reserve add lan0 bogus 10.1.0.59", "dhcp_reserve add lan0 01:00:5e:00:00:01 10.1.0.59"});
  refused("no such entry", {"dhcp_reserve del lan0 " + mac(9)});
  lists("lan0", {5, 6});
  ok({"dhcp_reserve del lan0 " + mac(5)});
  lists("lan0", {6});
  ok({"dhcp_reserve delall lan0"});
  lists("lan0", {});
  lists("lan1", {5});
  insert(1, 1023, "dhcp_reservation SELECT 'lan1', i, x'0200000001' || i");
  refused("table full", {add(5, "10.1.0.55")});
}

TEST_F(Dhcp, KeepsAddressesThatAreNotAssigned) {
  const auto lists = [](const std::string& dev, const std::string& entries) {
    shows("dhcp_not_assign show " + dev,
          "num: " + std::to_string(std::ranges::count(entries, '\n')) + "\nipaddr \n" + entries);
  };
  const auto add = [](const std::string& words) { return "dhcp_not_assign add lan0 10.1.0." + words; };
  ok({"dhcp_reserve add lan0 02:00:00:00:00:05 10.1.0.80", add("90 10.1.0.99"), add("5 0"),
      "dhcp_not_assign add lan1 10.1.0.80 0"});
  for (int i = 0; i < 2; ++i) ok({add("64 255.255.255.240")});
  refused("overlaps another", {add("80 0"), add("71 10.1.0.80"), add("83 255.255.255.252")});
  refused("range ends before it starts", {add("9 10.1.0.8")});
  refused("bad address", {"dhcp_not_assign add lan0 224.0.0.1 0"});
  refused("no such entry", {"dhcp_not_assign del lan0 10.1.0.64 0", "dhcp_not_assign del lan1 10.1.0.5 0"});
  refused("unknown interface", {"dhcp_not_assign add lan9 10.1.0.5 0", "dhcp_not_assign del lan9 10.1.0.5 0",
                                "dhcp_not_assign show lan9", "dhcp_not_assign delall lan9"});
  lists("lan0", "  1: 10.1.0.5\n  2: 10.1.0.64/255.255.255.240\n  3: 10.1.0.90-10.1.0.99\n");
  ok({"dhcp_not_assign del lan0 10.1.0.90 10.1.0.99", "dhcp_not_assign del lan0 10.1.0.64 255.255.255.240"});
  lists("lan0", "  1: 10.1.0.5\n");
  ok({"dhcp_not_assign delall lan0"});
  lists("lan0", "");
  lists("lan1", "  1: 10.1.0.80\n");
  insert(1, 255, "dhcp_exclusion SELECT 'lan1', i, 0");
  refused("table full", {add("5 0")});
}

TEST_F(Dhcp, KeepsSwitchesAndStartsNothingInVain) {
  shows("dhcp bind get", "state:0\n\n\n");
  shows("dhcp bind set 1", "state:1\n\n\n");
  refused("switch is neither 0 nor 1", {"dhcp bind set 2", "dhcp defense_set 2 02:00:00:00:00:01"});
  shows("dhcp bind get", "state:1\n\n\n");
  ok({"dhcp defense_set 1 02:00:00:00:00:02,02:00:00:00:00:01,02:00:00:00:00:02"});
  refused("empty list", {"dhcp defense_set 1 bogus"});
  refused("bad MAC address", {"dhcp defense_set 1 02:00:00:00:00:03,01:00:5e:00:00:01"});
  shows("dhcp defense_get", "en:1,drop_num:0,mac_num:2\n02:00:00:00:00:02,02:00:00:00:00:01,\n");
  ok({"dhcp defense_set 0 ''"});
  shows("dhcp defense_get", "en:0,drop_num:0,mac_num:0\n\n");

  const auto start_says = [](const std::string& why) {
    const RunResult result = vek("dhcp server start");
    EXPECT_EQ(result.err,
              "vek: DHCP server: " + (geteuid() == 0 ? why : "only root may start it") + "\n" + kUsage);
    EXPECT_EQ(result.status, 1);
  };
  start_says("there is no pool");
  ok({"devmg add no-such-dev 250", pool("lan0 no-such-dev")});
  start_says("Linux has no interface no-such-dev");
  EXPECT_EQ(vek("dhcp server stop").err, kUsage);
}

// The router is the first process of a machine of its own. Its client has a network of its own behind lan0,
// and in it a DNS server that the router asks.
const char* const kRouter = R"sh(
unshare -n sleep 60 & client=$!
while [ "$(readlink /proc/$client/ns/net)" = "$(readlink /proc/$$/ns/net)" ]; do sleep 0.01; done
in_client() { nsenter -t $client -n "$@"; }
say() { echo $("$@" 2>&1 | grep -v bind); }
cd $VEK_STATE
cat >bound <<'.'
#!/bin/sh
[ $1 != bound ] || { echo "$ip/$mask $router $dns $domain $lease"; ip address add $ip/$mask dev $interface; }
.
chmod +x bound
ask() {
  in_client ip link set eth0 down
  in_client ip link set eth0 address $1 up
  in_client busybox udhcpc -i eth0 -fqn -t 20 -T 1 -s ./bound $2 2>/dev/null
}
resolve() { in_client busybox nslookup -type=a $1 192.168.7.1 | sed -n '/^Name/,$ s/^Address: //p'; }
servers() { cat /proc/[0-9]*/cmdline 2>/dev/null | tr '\0' ' ' | grep -o "[d]nsmasq --conf-file=$VEK_STATE/"; }

ip link set lo up
ip link add lan0 type veth peer name eth0 netns $client
ip link set lan0 up
vek dhcp add lan0 192.168.7.1 192.168.7.11,10.9.0.1 255.255.255.0,255.255.0.0 192.168.7.10,10.9.0.10 \
  192.168.7.11,10.9.0.11 3600 192.168.7.1 office.lan base '' 0
say vek dhcp server start
ip address add 192.168.7.1/24 dev lan0
say env PATH=/nowhere $(command -v vek) dhcp server start
ls | grep -c dnsmasq || :
say vek dhcp server start; say vek dhcp server start
servers | wc -l

say vek dhcp_reserve add lan0 02:00:00:00:00:05 192.168.7.50
ask 02:00:00:00:00:05 -xhostname:pc
vek dhcp member_list lan0 | while read -r ip mac lease start rest; do
  [ "$ip" != 192.168.7.50 ] || echo $mac $lease $((($(date +%s) - start) / 60)) $rest
done
in_client dnsmasq --conf-file=/dev/null -Rhz -u root -x $PWD/up -a 192.168.7.50 --local=/example.net/ \
  --host-record=www.example.net,198.51.100.7,60 --host-record=sub.printer.lan,198.51.100.8
vek dns set 1 0 40 0 0 192.168.7.50 '' 0
vek dns url add printer.lan 192.168.7.60 0
vek dns url add router.lan '' 1
vek dns url add prn.lan printer.lan 0
for name in printer.lan router.lan prn.lan sub.printer.lan www.example.net; do resolve $name; done
say vek dns getip www.example.net 3
say vek dns getip sub.printer.lan
say vek dns getip nobody.example.net 3
kill -9 $(cat up)
say vek dns getip WWW.example.net
vek dns list | while read -r id type line ttl age name ips; do
  [ "$ips" = "${ips%,}" ] || echo $((ttl + age)) $name $ips
done
vek dns dnsc_clear
say vek dns getip www.example.net

vek dhcp_not_assign add lan0 192.168.7.10 0
vek dhcp_not_assign add lan0 10.9.0.10 0
ask 02:00:00:00:00:06 -r192.168.7.10

server=$(cat dnsmasq.pid)
echo $client >dnsmasq.pid
say vek dhcp server stop
servers | wc -l
kill -0 $client
echo $server >dnsmasq.pid
say vek dhcp server stop
servers | wc -l
)sh";

// What it says but for "ok" and empty lines.
const char* const kSays = R"(vek: DHCP server: lan0 does not have the address 192.168.7.1
vek: dnsmasq cannot be run: No such file or directory
0
1
192.168.7.50/24 192.168.7.11 192.168.7.1 office.lan 3600
02:00:00:00:00:05 3600 0 1 1 pc lan0
192.168.7.60
192.168.7.1
192.168.7.60
198.51.100.8
198.51.100.7
ip_num: 1 198.51.100.7
ip_num: 1 198.51.100.8
err:unknown host
ip_num: 1 198.51.100.7
40 sub.printer.lan 198.51.100.8,
60 www.example.net 198.51.100.7,
err:no answer
10.9.0.11/16 10.9.0.1 192.168.7.1 office.lan 3600
1
0
)";

TEST_F(Dhcp, ServesRealClients) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may start the server";
  for (const char* program : {"dnsmasq", "busybox", "ip", "nsenter"}) {
    const std::string look = std::string("PATH=$PATH:/sbin:/usr/sbin command -v ") + program;
    if (run({"/bin/sh", "-c", look}).status != 0) GTEST_SKIP() << program << " is not installed";
  }
  const auto in_own_machine = [](const std::string& script) {
    return run({"/usr/bin/timeout", "-s", "KILL", "60", "unshare", "-nmpf", "--kill-child", "--mount-proc",
                "/bin/sh", "-ec", "PATH=$PATH:/sbin:/usr/sbin\n" + script});
  };
  if (in_own_machine("echo yes").out != "yes\n") GTEST_SKIP() << "the machine allows no namespaces";
  std::string said;
  std::istringstream lines(in_own_machine(kRouter).out);
  for (std::string line; std::getline(lines, line);) {
    if (!line.empty() && line != "ok") said += line + "\n";
  }
  EXPECT_EQ(said, kSays);
}

}  // namespace
