// SNMP by way of the net-snmp library: finds one host in an agent's table of neighbours.
#include "api/snmp_client.h"

// The order of these two is the library's.
#include <arpa/inet.h>
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>

#include <charconv>
#include <chrono>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::microseconds;

constexpr microseconds kMaxTry = std::chrono::seconds(1);
constexpr microseconds kMaxTime = 2 * kMaxTry;

using Oid = std::vector<oid>;

// A column of MAC addresses: its entries are named COLUMN.INTERFACE.KEY, where the key says which host.
struct Place {
  Oid column;
  Oid key;
};

// The tables where a host may stand: the newer one of both kinds of addresses, and for IPv4 the one before
// it, which agents of any age have.
std::vector<Place> places_of(const char* ip) {
  const Oid media_column = {1, 3, 6, 1, 2, 1, 4, 22, 1, 2};     // ipNetToMediaPhysAddress
  const Oid physical_column = {1, 3, 6, 1, 2, 1, 4, 35, 1, 4};  // ipNetToPhysicalPhysAddress
  uint8_t bytes[16];
  if (inet_pton(AF_INET, ip, bytes) == 1) {
    const Oid key(bytes, bytes + 4);
    Oid typed_key = {1, 4};  // ipv4, of four bytes
    typed_key.insert(typed_key.end(), key.begin(), key.end());
    return {{media_column, key}, {physical_column, typed_key}};
  }
  if (inet_pton(AF_INET6, ip, bytes) == 1) {
    Oid typed_key = {2, 16};  // ipv6
    typed_key.insert(typed_key.end(), bytes, bytes + 16);
    return {{physical_column, typed_key}};
  }
  return {};
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
  std::vector<uint8_t> value;
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

  // The first entry behind a name. False when there is none, or no answer.
  bool next(const Oid& name, Entry& entry) {
    const auto left = std::chrono::duration_cast<microseconds>(deadline_ - Clock::now());
    if (handle_ == nullptr || left <= microseconds::zero()) return false;
    netsnmp_session* session = snmp_sess_session(handle_);
    session->retries = left > kMaxTry ? 1 : 0;
    session->timeout = static_cast<long>((left / (session->retries + 1)).count());

    netsnmp_pdu* request = snmp_pdu_create(SNMP_MSG_GETNEXT);
    snmp_add_null_var(request, name.data(), name.size());
    netsnmp_pdu* answer = nullptr;
    const int status = snmp_sess_synch_response(handle_, request, &answer);
    const bool is_found = status == STAT_SUCCESS && answer->errstat == SNMP_ERR_NOERROR &&
                          answer->variables != nullptr && answer->variables->type == ASN_OCTET_STR;
    if (is_found) {
      const netsnmp_variable_list& found = *answer->variables;
      entry.name.assign(found.name, found.name + found.name_length);
      entry.value.assign(found.val.string, found.val.string + found.val_len);
    }
    if (answer != nullptr) snmp_free_pdu(answer);
    return is_found;
  }

 private:
  void* handle_;
  Clock::time_point deadline_ = Clock::now() + kMaxTime;
};

Oid joined(const Oid& column, oid interface, const Oid& key) {
  Oid name = column;
  name.push_back(interface);
  name.insert(name.end(), key.begin(), key.end());
  return name;
}

// The last possible name before this one among names of the same length.
Oid just_before(Oid name) {
  if (name.back() == 0) {
    name.pop_back();
  } else {
    --name.back();
    name.push_back(MAX_SUBID);
  }
  return name;
}

// Asks once an interface of the agent, for what stands where the host would: tables of routers are long.
bool find(Agent& agent, const Place& place, uint8_t* mac) {
  const size_t key_start = place.column.size() + 1;
  Entry entry;
  for (oid interface = 0; interface <= INT32_MAX;) {
    const Oid wanted = joined(place.column, interface, place.key);
    if (!agent.next(just_before(wanted), entry)) return false;
    if (entry.name == wanted) {
      if (entry.value.size() != 6) return false;
      memcpy(mac, entry.value.data(), 6);
      return true;
    }
    // Out of the column, or an agent that goes in circles.
    if (entry.name.size() < key_start ||
        !std::equal(place.column.begin(), place.column.end(), entry.name.begin()) ||
        entry.name[key_start - 1] < interface) {
      return false;
    }
    const oid found = entry.name[key_start - 1];
    interface = found == interface ? interface + 1 : found;
  }
  return false;
}

}  // namespace

extern "C" [[gnu::visibility("default")]] SnmpGetMac vek_snmp_get_mac;

int vek_snmp_get_mac(const char* community, const char* peer, const char* ip, void* mac) {
  if (!is_peer(peer)) return -1;
  snmp_disable_log();
  Agent agent(community, peer);
  for (const Place& place : places_of(ip)) {
    if (find(agent, place, static_cast<uint8_t*>(mac))) return 0;
  }
  return -1;
}
