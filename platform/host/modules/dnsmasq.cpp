// The dnsmasq that serves the pools: its settings are made of the tables of the DHCP server and of the DNS
// proxy. Its process is the one that its file in the state folder names, and that was started with that file.
#include "modules/dnsmasq.h"

#include <arpa/inet.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>
#include <stdexcept>

#include "linux/file.h"
#include "linux/net.h"
#include "linux/process.h"
#include "modules/dhcp.h"
#include "modules/dns.h"
#include "platform/address.h"
#include "state/time.h"

namespace {

[[noreturn]] void fail(const std::string& why) { throw std::runtime_error("DHCP server: " + why); }

std::string settings_file(const Store& store) { return store.folder() + "/dnsmasq.conf"; }
std::string leases_file(const Store& store) { return store.folder() + "/dnsmasq.leases"; }
std::string pid_file(const Store& store) { return store.folder() + "/dnsmasq.pid"; }
// Holds the id of the boot in which dnsmasq was ended to be started anew. It stays where that did not come to
// its end, so that the next change of the settings makes up for it.
std::string restart_file(const Store& store) { return store.folder() + "/dnsmasq.restart"; }

std::string text_of(HostIp4 ip) {
  char room[64];
  return IpToStr(room, htonl(ip.value));
}
std::string text_of(Ip4 ip) { return text_of(HostIp4{ntohl(ip.value)}); }

// ---- Settings ----

// The ranges without those addresses.
void take_out(std::vector<V4Range>& ranges, const V4Range& out) {
  std::vector<V4Range> left;
  for (const V4Range& range : ranges) {
    if (out.last.value < range.first.value || out.first.value > range.last.value) {
      left.push_back(range);
      continue;
    }
    if (range.first.value < out.first.value) left.push_back({range.first, {out.first.value - 1}});
    if (range.last.value > out.last.value) left.push_back({{out.last.value + 1}, range.last});
  }
  ranges = left;
}

// What a pool hands out: neither the router's own addresses nor those that are not to be assigned.
std::vector<V4Range> free_ranges(Store& store, const DhcpSettings<HostIp4>& settings, int pool) {
  std::vector<V4Range> ranges = {{settings.start_addr[pool], settings.end_addr[pool]}};
  const HostIp4 own{ntohl(settings.srv_ip.value)};
  take_out(ranges, {own, own});
  for (const HostIp4 gateway : settings.gwaddr) take_out(ranges, {gateway, gateway});
  Statement row = store.query("SELECT * FROM dhcp_exclusion WHERE dev = ?", settings.dev);
  while (row.next()) {
    DhcpExclusion exclusion = {};
    row.read_fields(exclusion);
    take_out(ranges, range_of(exclusion));
  }
  return ranges;
}

void write_ranges(Store& store, std::ostream& out, const DhcpSettings<HostIp4>& settings, int pool,
                  const std::string& tag) {
  const std::string mask_and_lease =
      "," + text_of(settings.snmask[pool]) + "," + std::to_string(settings.leasetime) + "\n";
  const std::vector<V4Range> ranges = free_ranges(store, settings, pool);
  for (const V4Range& range : ranges) {
    out << "dhcp-range=set:" << tag << "," << text_of(range.first) << "," << text_of(range.last)
        << mask_and_lease;
  }
  // Nothing to hand out but the reserved addresses.
  if (ranges.empty()) {
    out << "dhcp-range=set:" << tag << "," << text_of(network_of(settings, pool).first) << ",static"
        << mask_and_lease;
  }
}

std::string hex_of(const DhcpOption43& option43) {
  std::string hex;
  for (uint32_t i = 0; i < option43.length; ++i) {
    char digits[4];
    snprintf(digits, sizeof digits, ":%02x", option43.bytes[i]);
    hex += digits;
  }
  return hex.substr(1);
}

// A network that Linux has no address in: dnsmasq must be told where its hosts are.
void write_shared_network(std::ostream& out, const DhcpSettings<HostIp4>& settings, int pool) {
  if (contains(network_of(settings, pool), {ntohl(settings.srv_ip.value)})) return;
  out << "shared-network=" << text(settings.dev) << "," << text_of(settings.gwaddr[pool]) << "\n";
}

void write_options(std::ostream& out, const DhcpSettings<HostIp4>& settings, const DhcpOption43& option43,
                   int pool, const std::string& tag) {
  const std::string option = "dhcp-option=tag:" + tag + ",";
  out << option << "option:router," << text_of(settings.gwaddr[pool]) << "\n";
  std::string servers;
  for (const HostIp4 server : settings.dnss) {
    if (server.value != 0) servers += "," + text_of(server);
  }
  if (!servers.empty()) out << option << "option:dns-server" << servers << "\n";
  const std::string_view domain = text(settings.domain_name);
  if (!domain.empty()) out << option << "option:domain-name," << domain << "\n";
  if (option43.length == 0) return;
  // One byte alone would be taken for a text.
  out << option << "43,"
      << (option43.length == 1 ? std::to_string(option43.bytes[0]) + "b" : hex_of(option43)) << "\n";
}

// A reservation counts while a pool of its interface has the network for it.
void write_reservations(Store& store, std::ostream& out, const DhcpSettings<HostIp4>& settings) {
  Statement row = store.query("SELECT * FROM dhcp_reservation WHERE dev = ? ORDER BY ip", settings.dev);
  while (row.next()) {
    DhcpReservation reservation = {};
    row.read_fields(reservation);
    if (!has_network_for(settings, {ntohl(reservation.ip.value)})) continue;
    char mac[32];
    out << "dhcp-host=" << MacToStr(mac, &reservation.mac) << "," << text_of(reservation.ip) << "\n";
  }
}

// A fixed answer is all that there is to say of its name, and says nothing of the names below it. Another
// name is answered with its address where that is a fixed answer, too, or has just been asked for; else
// dnsmasq says the name alone, and who asks has to ask on.
void write_fixed_answers(Store& store, std::ostream& out) {
  std::string own_ips;
  Statement pool = store.query("SELECT DISTINCT srv_ip FROM dhcp_pool");
  while (pool.next()) {
    Ip4 ip;
    pool.read(ip);
    own_ips += "," + text_of(ip);
  }
  Statement row = store.query("SELECT name, kind, ip, other_name FROM dns_url ORDER BY name");
  while (row.next()) {
    std::string name;
    uint8_t kind;
    Ip4 ip;
    std::string other_name;
    row.read(name, kind, ip, other_name);
    if (kind == kUrlName) {
      out << "cname=" << name << "," << other_name << "\n";
      continue;
    }
    const std::string ips = kind == kUrlIp ? "," + text_of(ip) : own_ips;
    std::istringstream each(ips.substr(1));
    each.exceptions(std::ios::badbit);
    for (std::string one; std::getline(each, one, ',');) out << "host-record=" << name << "," << one << "\n";
    out << "local=/" << name << "/\nserver=/*." << name << "/#\n";
  }
}

void write_proxy(Store& store, std::ostream& out) {
  const DnsSettings settings = dns_settings(store);
  if (settings.en == 0) {
    out << "port=0\n";
    return;
  }
  out << "localise-queries\n";
  if (settings.log != 0) out << "log-queries\n";
  if (settings.min_tm != 0) out << "min-cache-ttl=" << settings.min_tm << "\n";
  if (settings.max_tm != 0) out << "max-cache-ttl=" << settings.max_tm << "\n";
  for (const std::string& server : dns_servers(settings)) out << "server=" << server << "\n";
  write_fixed_answers(store, out);
}

std::string settings_text(Store& store) {
  std::ostringstream out;
  out.exceptions(std::ios::badbit);  // without memory it would go on with a part of the text
  out << "# Made of the settings of vek, and made anew whenever they change.\n"
         "no-resolv\nno-hosts\nbind-dynamic\nexcept-interface=lo\ndhcp-authoritative\n";
  int number = 0;
  Statement row = store.query("SELECT * FROM dhcp_pool ORDER BY dev");
  while (row.next()) {
    DhcpPoolRequest request = {};
    row.read_fields(request);
    const DhcpSettings<HostIp4>& settings = request.pool.settings;
    out << "interface=" << text(settings.dev) << "\n";
    for (int pool = 0; pool < 3; ++pool) {
      if (settings.start_addr[pool].value == 0) continue;
      const std::string tag = "pool" + std::to_string(++number);
      write_ranges(store, out, settings, pool, tag);
      write_shared_network(out, settings, pool);
      write_options(out, settings, request.pool.option43, pool, tag);
    }
    write_reservations(store, out, settings);
  }
  // Without an interface it would answer on all of them.
  if (number == 0) {
    out << "port=0\n";
  } else {
    write_proxy(store, out);
  }
  return out.str();
}

// Empty when there is none. What cannot be read is not taken for nothing: a server may be at work.
std::string read_if_there(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open() && errno != ENOENT) fail(path + ": " + strerror(errno));
  return std::string((std::istreambuf_iterator<char>(file)), {});
}

void keep_for_owner(const std::string& path) {
  using std::filesystem::perms;
  std::filesystem::permissions(path, perms::owner_read | perms::owner_write);
}

// The file is whole and good, or as it was. What dnsmasq does not take stays beside it for a look.
void write_settings(const Store& store, const std::string& text) {
  const std::string path = settings_file(store);
  const std::string new_path = path + ".new";
  std::ofstream file(new_path, std::ios::binary);
  file << text << std::flush;
  if (!file) fail(new_path + " cannot be written");
  keep_for_owner(new_path);
  try {
    if (run_program({"dnsmasq", "--test", "--conf-file=" + new_path}, kSilenced) == 0) {
      std::filesystem::rename(new_path, path);
      return;
    }
  } catch (...) {
    unlink(new_path.c_str());
    throw;
  }
  fail("dnsmasq does not take " + new_path);
}

// ---- The process ----

std::string pid_word(const Store& store) { return "--pid-file=" + pid_file(store); }

// The number may be another's by now: after a restart of the machine, for one.
std::optional<Process> running(const Store& store) {
  const int64_t pid = strtoll(read_if_there(pid_file(store)).c_str(), nullptr, 10);
  const std::optional<Process> process = find_process(pid);
  if (!process) return {};
  const std::string words = read_if_there("/proc/" + std::to_string(pid) + "/cmdline");
  return words.find('\0' + pid_word(store) + '\0') != words.npos ? process : std::nullopt;
}

// It is in the background, and serves, when the program that was run ends well.
void launch(const Store& store) {
  const std::string leases = leases_file(store);
  const int status = run_program(
      {"dnsmasq", "--conf-file=" + settings_file(store), pid_word(store), "--dhcp-leasefile=" + leases},
      kOurs);
  if (status != 0) fail("dnsmasq has ended with status " + std::to_string(status));
  keep_for_owner(leases);
  if (!running(store)) fail("dnsmasq has not stayed");
  unlink(restart_file(store).c_str());
}

// What would only show when the first client asks in vain. Empty: all is well.
std::string fault_of_interfaces(Store& store) {
  Statement row = store.query("SELECT dev, srv_ip FROM dhcp_pool ORDER BY dev");
  bool is_any = false;
  while (row.next()) {
    std::string dev;
    Ip4 ip;
    row.read(dev, ip);
    if (!linux_interface(dev)) return "Linux has no interface " + dev;
    if (!linux_has_address(dev, ip)) return dev + " does not have the address " + text_of(ip);
    is_any = true;
  }
  return is_any ? "" : "there is no pool";
}

}  // namespace

void start_dnsmasq(Store& store) {
  if (running(store)) return;
  if (geteuid() != 0) fail("only root may start it");
  if (const std::string fault = fault_of_interfaces(store); !fault.empty()) fail(fault);
  write_settings(store, settings_text(store));
  launch(store);
}

void stop_dnsmasq(Store& store) {
  unlink(restart_file(store).c_str());
  if (const std::optional<Process> process = running(store)) end_process(*process);
  unlink(pid_file(store).c_str());
}

void follow_settings(Store& store) {
  store.begin();
  const std::optional<Process> process = running(store);
  const bool is_cut_short = read_if_there(restart_file(store)) == boot_id();
  const std::string settings = process || is_cut_short ? settings_text(store) : "";
  if (is_cut_short || (process && settings != read_if_there(settings_file(store)))) {
    write_settings(store, settings);
    replace_file(restart_file(store), boot_id());
    if (process) end_process(*process);
    launch(store);
    // The other pools are served.
    const std::string fault = fault_of_interfaces(store);
    if (!fault.empty()) fprintf(stderr, "vek: DHCP server: %s\n", fault.c_str());
  }
  store.commit();
}

void clear_dnsmasq_cache(Store& store) {
  const std::optional<Process> process = running(store);
  if (process) signal_process(*process, SIGHUP);
}

// A line a lease: when it ends, MAC, address, name of the host ("*" when it has told none).
std::vector<DhcpLease> dnsmasq_leases(Store& store) {
  std::vector<DhcpLease> leases;
  std::istringstream lines(read_if_there(leases_file(store)));
  lines.exceptions(std::ios::badbit);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    words.exceptions(std::ios::badbit);
    uint64_t end = 0;
    std::string mac;
    std::string ip;
    std::string hostname;
    words >> end >> mac >> ip >> hostname;
    DhcpLease lease = {};
    lease.ip = {StrToIp(ip.c_str())};
    if (StrToMac(mac.c_str(), &lease.mac) != 0 || lease.ip.value == 0) continue;
    if (end <= calendar_seconds()) continue;
    if (hostname != "*") copy_text(lease.hostname, hostname);
    lease.start = end;
    leases.push_back(lease);
  }
  std::ranges::sort(leases, {}, [](const DhcpLease& lease) { return ntohl(lease.ip.value); });
  return leases;
}
