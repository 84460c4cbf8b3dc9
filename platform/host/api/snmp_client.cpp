// SNMP by way of the net-snmp library: finds one host in an agent's table of neighbours.
#include "api/snmp_client.h"

// The order of these two is the library's.
#include <arpa/inet.h>
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "api/guard.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

constexpr microseconds kMaxTry = std::chrono::seconds(1);
constexpr microseconds kMaxTime = 2 * kMaxTry;

// An agent that has been silent this often is left in peace for a while.
constexpr int kMaxSilences = 3;
constexpr auto kPeace = std::chrono::minutes(1);

// A name of something that agents know; what goes beyond the longest one that there can be is cut off.
struct Oid {
  oid parts[MAX_OID_LEN] = {};
  size_t size = 0;

  void add(oid part) {
    if (size < std::size(parts)) parts[size++] = part;
  }
  template <typename Part>
  void add(std::span<Part> more) {
    for (const Part part : more) add(part);
  }
  std::span<const oid> all() const { return {parts, size}; }
};

// A column of MAC addresses: its entries are named COLUMN.INTERFACE.KEY, where the key says which host.
struct Place {
  std::span<const oid> column;
  Oid key;
};

constexpr oid kMediaColumn[] = {1, 3, 6, 1, 2, 1, 4, 22, 1, 2};     // ipNetToMediaPhysAddress
constexpr oid kPhysicalColumn[] = {1, 3, 6, 1, 2, 1, 4, 35, 1, 4};  // ipNetToPhysicalPhysAddress

// The type of an address and its number of bytes.
constexpr oid kIp4[] = {1, 4};
constexpr oid kIp6[] = {2, 16};

Oid key_of(std::span<const oid> type, std::span<const uint8_t> address) {
  Oid key;
  key.add(type);
  key.add(address);
  return key;
}

// "ADDRESS" or "ADDRESS:PORT". Names are not looked up: that takes as long as it takes.
bool is_peer(std::string_view peer) {
  const size_t colon = peer.find(':');
  in_addr address;
  if (inet_pton(AF_INET, std::string(peer.substr(0, colon)).c_str(), &address) != 1) return false;
  if (colon == peer.npos) return true;
  uint16_t port = 0;
  const char* const end = peer.data() + peer.size();
  const auto [stop, error] = std::from_chars(peer.data() + colon + 1, end, port);
  return error == std::errc() && stop == end && port != 0;
}

struct Entry {
  Oid name;
  uint8_t mac[6] = {};
  bool is_mac = false;  // else the value is something else
};

// A conversation with one agent, which is over after kMaxTime.
class Agent {
 public:
  Agent(const char* community, const char* peer) {
    netsnmp_session session;
    snmp_sess_init(&session);
    std::string name = std::string("udp:") + peer;
    std::string words = community;
    session.version = SNMP_VERSION_2c;
    session.peername = name.data();
    session.community = reinterpret_cast<u_char*>(words.data());
    session.community_len = words.size();
    handle_ = snmp_sess_open(&session);
  }
  ~Agent() {
    if (handle_ != nullptr) snmp_sess_close(handle_);
  }
  Agent(const Agent&) = delete;
  Agent& operator=(const Agent&) = delete;

  bool has_answered() const { return has_answered_; }

  // The first entry behind a name. False when there is none, or no answer.
  bool next(const Oid& name, Entry& entry) {
    const auto left = std::chrono::duration_cast<microseconds>(deadline_ - Clock::now());
    if (handle_ == nullptr || left <= microseconds::zero()) return false;
    netsnmp_session* session = snmp_sess_session(handle_);
    session->retries = left > kMaxTry ? 1 : 0;
    session->timeout = static_cast<long>((left / (session->retries + 1)).count());

    netsnmp_pdu* request = snmp_pdu_create(SNMP_MSG_GETNEXT);
    if (request == nullptr) throw std::bad_alloc();
    snmp_add_null_var(request, name.parts, name.size);
    netsnmp_pdu* answer = nullptr;
    const bool is_answered = snmp_sess_synch_response(handle_, request, &answer) == STAT_SUCCESS;
    has_answered_ |= is_answered;
    const bool is_found = is_answered && answer->errstat == SNMP_ERR_NOERROR &&
                          answer->variables != nullptr && answer->variables->type == ASN_OCTET_STR;
    if (is_found) {
      const netsnmp_variable_list& found = *answer->variables;
      entry.name = {};
      entry.name.add(std::span(found.name, found.name_length));
      entry.is_mac = found.val_len == sizeof entry.mac;
      if (entry.is_mac) memcpy(entry.mac, found.val.string, sizeof entry.mac);
    }
    if (answer != nullptr) snmp_free_pdu(answer);
    return is_found;
  }

 private:
  void* handle_;
  bool has_answered_ = false;
  Clock::time_point deadline_ = Clock::now() + kMaxTime;
};

Oid entry_name(const Place& place, oid interface) {
  Oid name;
  name.add(place.column);
  name.add(interface);
  name.add(place.key.all());
  return name;
}

// The last possible name before this one among names of the same length.
Oid just_before(Oid name) {
  oid& last = name.parts[name.size - 1];
  if (last == 0) {
    --name.size;
  } else {
    --last;
    name.add(MAX_SUBID);
  }
  return name;
}

// Asks once an interface of the agent, for what stands where the host would: tables of routers are long.
bool find(Agent& agent, const Place& place, uint8_t* mac) {
  const size_t column_size = place.column.size();
  Entry entry;
  for (oid interface = 0; interface <= INT32_MAX;) {
    const Oid wanted = entry_name(place, interface);
    if (!agent.next(just_before(wanted), entry)) return false;
    const std::span<const oid> name = entry.name.all();
    if (std::ranges::equal(name, wanted.all())) {
      if (entry.is_mac) memcpy(mac, entry.mac, sizeof entry.mac);
      return entry.is_mac;
    }
    // Out of the column, or an agent that goes in circles.
    if (name.size() <= column_size || !std::ranges::equal(name.first(column_size), place.column) ||
        name[column_size] < interface) {
      return false;
    }
    const oid found = name[column_size];
    interface = found == interface ? interface + 1 : found;
  }
  return false;
}

// The tables where a host may stand: the newer one of both kinds of addresses, and for IPv4 the one before
// it, which agents of any age have.
bool find_host(Agent& agent, std::span<const uint8_t> address, uint8_t* mac) {
  if (address.size() == 16) return find(agent, {kPhysicalColumn, key_of(kIp6, address)}, mac);
  return find(agent, {kMediaColumn, key_of({}, address)}, mac) ||
         find(agent, {kPhysicalColumn, key_of(kIp4, address)}, mac);
}

// The agent that was asked last.
struct Known {
  std::string community;
  std::string peer;
  int silences = 0;  // questions in a row that it has not answered
  Clock::time_point asked = {};
};

bool ask(const char* community, const char* peer, const char* ip, uint8_t* mac) {
  static Known last;
  uint8_t address[16];
  const bool is_ip4 = inet_pton(AF_INET, ip, address) == 1;
  if (!is_peer(peer) || (!is_ip4 && inet_pton(AF_INET6, ip, address) != 1)) return false;
  if (last.community != community || last.peer != peer) last = {community, peer};
  if (last.silences >= kMaxSilences && Clock::now() < last.asked + kPeace) return false;

  snmp_disable_log();
  Agent agent(community, peer);
  const bool is_found = find_host(agent, std::span(address).first(is_ip4 ? 4 : 16), mac);
  last.silences = agent.has_answered() ? 0 : last.silences + 1;
  last.asked = Clock::now();
  return is_found;
}

}  // namespace

extern "C" [[gnu::visibility("default")]] SnmpGetMac vek_snmp_get_mac;

int vek_snmp_get_mac(const char* community, const char* peer, const char* ip, void* mac) {
  return guarded([=] { return ask(community, peer, ip, static_cast<uint8_t*>(mac)) ? 0 : -1; }, -1);
}
