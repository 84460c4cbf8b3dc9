// The routing commands with FRR behind them, and the router of its own that they are tried in.
#include <filesystem>

#include "host.h"

namespace {

class Routing : public HostTest {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists("/usr/lib/frr/zebra")) GTEST_SKIP() << "FRR is not installed";
    if (in_own_network("echo yes") != "yes\n") GTEST_SKIP() << "the machine allows no namespaces";
  }

  // A script in a router of its own.
  static RunResult enter(const std::string& script, const std::vector<std::string>& options = {"--routing"}) {
    std::vector<std::string> argv = {VEK_LAB, "enter"};
    argv.insert(argv.end(), options.begin(), options.end());
    argv.insert(argv.end(), {"/bin/sh", "-c", script});
    return run(argv);
  }
};

TEST_F(Routing, EntersARouterOfItsOwn) {
  const std::string number = std::to_string(1000000 + getpid());
  const RunResult result = enter("cd /run; number=" + number + " file=" + state.file("x") + R"sh(
ip -o link | sed 's/^[0-9]*: //; s/[@:].*//'
mkdir /etc/upgrade && touch /etc/upgrade/x /var/log/zebra.log /tmp/mnt/usblog/x && ls /run/vek
touch $file 2>/dev/null || echo read-only
vek devmg add lan0 250
ip netns exec wan0-peer ip -o route get 203.0.113.2 | wc -l
sleep $number & exit 7)sh",
                                 {});
  EXPECT_EQ(result.out, "lo\nlan0\nwan0\nwan1\nread-only\nok\n1\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.status, 7);
  EXPECT_EQ(vek("devmg list").out.find("lan0"), std::string::npos);
  for (const auto& process : std::filesystem::directory_iterator("/proc")) {
    std::ifstream file(process.path() / "cmdline");
    std::string words;
    std::getline(file, words);
    EXPECT_EQ(words.find(number), words.npos);
  }
  EXPECT_EQ(run({VEK_LAB, "enter", "/nowhere"}).status, 127);
}

// What vek says, and how that changes the running configuration: "-" and "+" with a line of it.
const char kSteps[] = R"(
ospf subnet add 10.0.0.0/8 0
  +router ospf+ network 10.0.0.0/8 area 0
ospf subnet add 10.0.0.0/8 0.0.0.0
ospf subnet add 10.0.0.0/8 1
  quagga_telnet: subnet 10.0.0.0/8 is in area 0
ospf subnet add 11.0.0.0/8 "$bad"
  quagga_telnet: bad area '0?router bgp 1'
ospf subnet del 11.0.0.0/8 0
  quagga_telnet: no such entry
ospf interface mod lan0 192.168.1.1 1 md5 secret 5 40 9 1 6 point-to-point
  + ip ospf authentication message-digest 192.168.1.1+ ip ospf cost 5 192.168.1.1
  + ip ospf dead-interval 40 192.168.1.1+ ip ospf hello-interval 9 192.168.1.1
  + ip ospf message-digest-key 1 md5 secret 192.168.1.1+ ip ospf network point-to-point
  + ip ospf passive 192.168.1.1+ ip ospf retransmit-interval 6 192.168.1.1
ospf interface mod lan0 192.168.1.1 1 md5 secret 5 40 9 1 6 point-to-point
ospf interface mod lan0 192.168.1.1 0 1 other 5 30 9 0 6 point-to-point
  - ip ospf authentication message-digest 192.168.1.1+ ip ospf authentication 192.168.1.1
  + ip ospf authentication-key other 192.168.1.1- ip ospf dead-interval 40 192.168.1.1
  + ip ospf dead-interval 30 192.168.1.1- ip ospf message-digest-key 1 md5 secret 192.168.1.1
  - ip ospf passive 192.168.1.1+ ip ospf priority 0 192.168.1.1
ospf interface mod lan0 '' 0 0 '' 7 '' '' '' '' ''
  + ip ospf cost 7- ip ospf network point-to-point
ospf interface mod lan0 192.168.1.9 0 0 '' 7 '' '' '' '' ''
  quagga_telnet: interface lan0 has no address 192.168.1.9
ospf interface mod lan0 '' 0 2 passwordoftoomany '' '' '' '' '' ''
  quagga_telnet: bad password 'passwordoftoomany'
ospf interface del lan0
  - ip ospf authentication 192.168.1.1- ip ospf authentication-key other 192.168.1.1
  - ip ospf cost 5 192.168.1.1- ip ospf cost 7- ip ospf dead-interval 30 192.168.1.1
  - ip ospf hello-interval 9 192.168.1.1- ip ospf priority 0 192.168.1.1
  - ip ospf retransmit-interval 6 192.168.1.1
ospf vlink add 1 1.2.3.4 9 5 1 50 md5 key
  + area 1 virtual-link 1.2.3.4 hello-interval 9 retransmit-interval 5 transmit-delay 1 dead-interval 50
  + area 1 virtual-link 1.2.3.4 authentication message-digest
  + area 1 virtual-link 1.2.3.4 message-digest-key 1 md5 key
ospf vlink add 0 1.2.3.4 9 5 1 50 md5 key
  quagga_telnet: Configuring VLs over the backbone is not allowed
ospf vlink add 2 1.2.3.5 '' '' '' '' text abc
  + area 2 virtual-link 1.2.3.5+ area 2 virtual-link 1.2.3.5 authentication
  + area 2 virtual-link 1.2.3.5 authentication-key abc
ospf vlink del 1 1.2.3.4
  - area 1 virtual-link 1.2.3.4 hello-interval 9 retransmit-interval 5 transmit-delay 1 dead-interval 50
  - area 1 virtual-link 1.2.3.4 authentication message-digest
  - area 1 virtual-link 1.2.3.4 message-digest-key 1 md5 key
ospf vlink init
  - area 2 virtual-link 1.2.3.5- area 2 virtual-link 1.2.3.5 authentication
  - area 2 virtual-link 1.2.3.5 authentication-key abc
ospf router_id set 9.9.9.9
  router id: 9.9.9.9
ospf parm init
  + ospf router-id 9.9.9.9
ospf subnet del 10.0.0.0/8
  - network 10.0.0.0/8 area 0
ospfv3 dev add lan0 0
  + ipv6 ospf6 area 0+router ospf6
ospfv3 dev add lan0 0.0.0.2
  - ipv6 ospf6 area 0+ ipv6 ospf6 area 0.0.0.2
ospfv3 interface mod lan0 1 5 30 9 2 6
  + ipv6 ospf6 cost 5+ ipv6 ospf6 dead-interval 30+ ipv6 ospf6 hello-interval 9+ ipv6 ospf6 passive
  + ipv6 ospf6 priority 2+ ipv6 ospf6 retransmit-interval 6
ospfv3 dev del lan0 3
  quagga_telnet: no such entry
ospfv3 interface init
  - ipv6 ospf6 cost 5- ipv6 ospf6 dead-interval 30- ipv6 ospf6 hello-interval 9- ipv6 ospf6 passive
  - ipv6 ospf6 priority 2- ipv6 ospf6 retransmit-interval 6
ospfv3 dev delall
  - ipv6 ospf6 area 0.0.0.2
rip subnet add 10.0.0.0/8
  +router rip+ network 10.0.0.0/8
rip keychain add chain 5 secret
  +key chain chain+ key 5+  key-string secret+ exit
rip interface mod lan0 192.168.1.1 1 md5 keychain chain 2 2 '1 2'
  + ip rip authentication key-chain chain+ ip rip authentication mode md5+ ip rip receive version 1 2
  + ip rip send version 2+ ip rip split-horizon poisoned-reverse+ passive-interface lan0
rip interface mod lan0 '' 0 text string abc 0 1 ''
  - ip rip authentication key-chain chain- ip rip authentication mode md5- ip rip receive version 1 2
  - ip rip send version 2- ip rip split-horizon poisoned-reverse+ ip rip authentication mode text
  + ip rip authentication string abc+ ip rip send version 1+ no ip rip split-horizon- passive-interface lan0
rip interface mod lan0 '' 0 '' '' '' 1 '' ''
  - ip rip authentication mode text- ip rip authentication string abc- ip rip send version 1
  - no ip rip split-horizon
rip keychain init
  -key chain chain- key 5-  key-string secret- exit
rip parm init
rip parm delall
  -router rip- network 10.0.0.0/8
ripng subnet add wan0
  +router ripng+ network wan0
ripng interface mod wan0 1 2
  + ipv6 ripng split-horizon poisoned-reverse+ passive-interface wan0
ripng interface delall
  - ipv6 ripng split-horizon poisoned-reverse- passive-interface wan0
ripng subnet init
  - network wan0
ripng parm delall
  -router ripng
ipv6 router add 2001:db8::/32 fe80::1 lan0
  +ipv6 route 2001:db8::/32 fe80::1 lan0
ipv6 router add 2001:DB8:1::/48 2001:db8::0:1 ''
  +ipv6 route 2001:db8:1::/48 2001:db8::1
ipv6 router del 2001:db8::/32 fe80::1 lan1
  quagga_telnet: no such entry
ipv6 router init
  -ipv6 route 2001:db8::/32 fe80::1 lan0-ipv6 route 2001:db8:1::/48 2001:db8::1
)";

TEST_F(Routing, EverySectionBecomesConfiguration) {
  std::string script = "bad='0\nrouter bgp 1'; cd /run; : >a\n";
  std::string wanted;
  std::istringstream steps(kSteps);
  for (std::string line; std::getline(steps, line);) {
    if (line.empty() || line.starts_with("  ")) {
      wanted += line.empty() ? "" : line.substr(2);
      continue;
    }
    wanted += "\n$ " + line + "\n";
    script += "cat <<'END'\n\n$ " + line + "\nEND\n{ vek " + line + " 2>&1;" +
              "vtysh -c 'show running-config' | sed -n '/^ \\|^router\\|^key\\|^ipv6 route/{" +
              "s/\\([^ ]\\)  */\\1 /g; s/ $//; s/ retransmit-window 50//; p}' >b;" +
              "diff a b | sed -n 's/^> /+/p; s/^< /-/p'; } | tr -d '\\n'; mv b a\n";
  }
  EXPECT_EQ(enter(script).out, wanted);
}

TEST_F(Routing, TwoRoutersLearnRoutesOfEachOther) {
  const RunResult result = enter(R"sh(
for i in 7 8; do
  ip -n wan0-peer link add far$i type bridge
  ip -n wan0-peer address add 10.$i.0.1/24 dev far$i
  ip -n wan0-peer link set far$i up
done
ip netns exec wan0-peer sh -c '
  mount -t tmpfs tmpfs /run/frr
  export VEK_FRR_VTY=/run/frr/b
  mkdir $VEK_FRR_VTY
  for daemon in zebra mgmtd ospfd ripd; do
    [ -x /usr/lib/frr/$daemon ] || continue
    /usr/lib/frr/$daemon -d -u root -g root --vty_socket $VEK_FRR_VTY --log file:/run/frr/log 2>/dev/null
  done
  vek ospf interface mod eth0 "" 0 md5 secret "" 3 1 1 "" point-to-point
  vek ospf subnet add 10.7.0.0/24 0
  vek ospf subnet add 203.0.113.0/24 0
  vek rip subnet add 203.0.113.0/24
  vek rip subnet add 10.8.0.0/24
'
routes() { ip route | sed -n 's/^\(10[^ ]*\).* proto \([a-z]*\).*/\1 \2/p'; }
routes
vek ospf router_id set 1.1.1.1
vek ospf parm init
vek ospf interface mod wan0 203.0.113.2 0 md5 secret '' 3 1 1 '' point-to-point
vek ospf subnet add 203.0.113.0/24 0
vek rip subnet add 203.0.113.0/24
vek ipv6 router add 2001:db8::/32 fe80::1 wan1
for try in $(seq 100); do [ "$(routes | wc -l)" = 2 ] && break; sleep 0.2; done
routes
vek ospf info neighbor | grep -o '^203.0.113.1 .*Full' | tr -s ' '
vek ospf info database | grep -o 'Router with ID.*'
ip -6 route show 2001:db8::/32 | grep -o 'via fe80::1 dev wan1 proto static'
vek ipv6 router del 2001:db8::/32 fe80::1 wan1
for try in $(seq 20); do ip -6 route show | grep -q 2001:db8 || { echo gone; break; }; sleep 0.1; done
)sh");
  EXPECT_EQ(result.out,
            "router id: 1.1.1.1\n10.7.0.0/24 ospf\n10.8.0.0/24 rip\n203.0.113.1 1 Full\n"
            "Router with ID (1.1.1.1)\nvia fe80::1 dev wan1 proto static\ngone\n");
  EXPECT_EQ(result.err, "");
}

}  // namespace
