// The destination side of a rule: protocol entries and the block around them, read from text and printed.
#include <algorithm>
#include <cstdio>

#include "platform/list.h"
#include "text.h"

namespace {

using convert::Cut;
using convert::cut_at;
using convert::next_item;
using convert::parse_number;
using convert::Range;
using convert::take_prefix;

// A protocol entry of a record; platform/list.h has the meaning and the text.
struct ProtocolEntry {
  uint8_t protocol;
  uint8_t negated;
  uint16_t zero;
  Range<uint16_t> source;
  Range<uint16_t> destination;
};
static_assert(sizeof(ProtocolEntry) == 12 && offsetof(ProtocolEntry, source) == 4);

struct Protocol {
  uint8_t number;
  bool has_ports;
  std::string_view name;
};

constexpr Protocol kProtocols[] = {
    {0, true, "any"},    {1, false, "icmp"},  {2, false, "igmp"},     {6, true, "tcp"},  {17, true, "udp"},
    {33, true, "dccp"},  {47, false, "gre"},  {50, false, "esp"},     {51, false, "ah"}, {58, false, "icmp6"},
    {89, false, "ospf"}, {132, true, "sctp"}, {136, true, "udplite"},
};

const Protocol* find_protocol(uint8_t number) {
  const auto* found = std::find_if(std::begin(kProtocols), std::end(kProtocols),
                                   [&](const Protocol& known) { return known.number == number; });
  return found == std::end(kProtocols) ? nullptr : found;
}

bool parse_protocol_number(std::string_view text, uint8_t& number) {
  for (const Protocol& known : kProtocols) {
    if (text != known.name) continue;
    number = known.number;
    return true;
  }
  return parse_number(text, number);
}

constexpr Range<uint16_t> kAllPorts = {0, 65535};

bool is_all(const Range<uint16_t>& ports) { return ports.first == 0 && ports.last == 65535; }

bool parse_ports(std::string_view text, Range<uint16_t>& ports) {
  ports = kAllPorts;
  return text.empty() || convert::parse_number_range(text, ports);
}

bool parse_protocol(std::string_view item, ProtocolEntry& entry) {
  entry = {};
  entry.negated = take_prefix(item, "not-");
  const Cut protocol = cut_at(item, ":");
  if (!parse_protocol_number(protocol.head, entry.protocol)) return false;
  if (protocol.separator != '\0') {
    const Protocol* known = find_protocol(entry.protocol);
    if (known == nullptr || !known->has_ports) return false;
  }
  // One field of ports is the destination's; two are the source's and the destination's.
  const Cut ports = cut_at(protocol.tail, ":");
  const bool both = ports.separator != '\0';
  return parse_ports(both ? ports.head : std::string_view(), entry.source) &&
         parse_ports(both ? ports.tail : ports.head, entry.destination);
}

void print_ports(const Range<uint16_t>& ports) {
  if (is_all(ports)) return;
  std::printf("%u", ports.first);
  if (ports.first != ports.last) std::printf("-%u", ports.last);
}

void print_entry(const ProtocolEntry& entry) {
  if (entry.negated != 0) std::fputs("not-", stdout);
  const Protocol* known = find_protocol(entry.protocol);
  if (known != nullptr) {
    std::fwrite(known->name.data(), 1, known->name.size(), stdout);
  } else {
    std::printf("%u", entry.protocol);
  }
  if (!is_all(entry.source)) {
    std::putchar(':');
    print_ports(entry.source);
  }
  if (!is_all(entry.source) || !is_all(entry.destination)) std::putchar(':');
  print_ports(entry.destination);
  std::putchar(',');
}

// The fixed part of the block; platform/list.h has the meaning.
struct IpPortBlock {
  uint8_t cl_type;
  uint8_t cl_type_fei;
  uint8_t dns_en;
  uint8_t dns_wanid;
  uint8_t dns_typeid;
  uint8_t dns_wanid_fei;
  uint8_t dns_typeid_fei;
  uint8_t dns_fei;
  uint16_t ip4_count;
  uint16_t ip6_count;
  uint16_t protocol_count;
  uint8_t ip_fei;
  uint8_t given;
  uint8_t zero[4];
};
static_assert(sizeof(IpPortBlock) == 20 && offsetof(IpPortBlock, ip_fei) == 14);

constexpr uint8_t kClassGiven = 1;
constexpr uint8_t kDnsLineGiven = 2;
constexpr uint8_t kDnsTypeGiven = 4;

// A block text taken apart. Nothing is written to the caller's block before all of it has proved good.
struct BlockText {
  IpPortBlock head{};
  std::string_view addresses;
  std::string_view protocols;
  bool protocols_negated = false;
};

// Calls `accept` for each item of a list; false when it refuses one, or when there is none.
template <typename Accept>
bool for_all_items(std::string_view list, Accept accept) {
  bool any = false;
  while (!list.empty()) {
    const std::string_view item = next_item(list);
    if (item.empty()) continue;
    if (!accept(item)) return false;
    any = true;
  }
  return any;
}

bool read_class(BlockText& block, bool negated, std::string_view value) {
  block.head.cl_type_fei = negated;
  block.head.given |= kClassGiven;
  return parse_number(value, block.head.cl_type);
}

bool read_addresses(BlockText& block, bool negated, std::string_view value) {
  block.head.ip_fei = negated;
  block.addresses = value;
  unsigned ip4 = 0;
  unsigned ip6 = 0;
  const bool good = for_all_items(value, [&](std::string_view item) {
    Range<uint32_t> range4;
    Range<convert::Ip6> range6;
    if (convert::parse_ip4_range(item, range4)) return ++ip4 <= UINT16_MAX;
    return convert::parse_ip6_range(item, range6) && ++ip6 <= UINT16_MAX;
  });
  block.head.ip4_count = static_cast<uint16_t>(ip4);
  block.head.ip6_count = static_cast<uint16_t>(ip6);
  return good;
}

// An entry of a protocol section, which may be negated as a whole, but not twice.
bool parse_section_protocol(std::string_view item, bool section_negated, ProtocolEntry& entry) {
  if (!parse_protocol(item, entry) || (section_negated && entry.negated != 0)) return false;
  if (section_negated) entry.negated = 1;
  return true;
}

bool read_protocols(BlockText& block, bool negated, std::string_view value) {
  block.protocols = value;
  block.protocols_negated = negated;
  unsigned count = 0;
  const bool good = for_all_items(value, [&](std::string_view item) {
    ProtocolEntry entry;
    return parse_section_protocol(item, negated, entry) && ++count <= UINT16_MAX;
  });
  block.head.protocol_count = static_cast<uint16_t>(count);
  return good;
}

bool read_dns_item(IpPortBlock& head, std::string_view item) {
  const bool negated = take_prefix(item, "not-");
  const Cut cut = cut_at(item, ":");
  const bool is_line = cut.head == "line";
  if (!is_line && cut.head != "type") return false;
  const uint8_t given = is_line ? kDnsLineGiven : kDnsTypeGiven;
  if ((head.given & given) != 0) return false;
  head.given |= given;
  (is_line ? head.dns_wanid_fei : head.dns_typeid_fei) = negated;
  return parse_number(cut.tail, is_line ? head.dns_wanid : head.dns_typeid);
}

bool read_dns(BlockText& block, bool negated, std::string_view value) {
  block.head.dns_en = 1;
  block.head.dns_fei = negated;
  return value == "any" ||
         for_all_items(value, [&](std::string_view item) { return read_dns_item(block.head, item); });
}

struct Section {
  std::string_view key;
  bool (*read)(BlockText& block, bool negated, std::string_view value);
};

constexpr Section kSections[] = {
    {"class", read_class}, {"ip", read_addresses}, {"proto", read_protocols}, {"dns", read_dns}};

bool read_block_text(std::string_view text, BlockText& block) {
  unsigned seen = 0;
  if (convert::trim(text).empty() || convert::trim(text).back() == '+') return false;
  while (!text.empty()) {
    std::string_view section_text = next_item(text, '+');
    const bool negated = take_prefix(section_text, "not-");
    const Cut cut = cut_at(section_text, "=");
    const auto* section = std::find_if(std::begin(kSections), std::end(kSections),
                                       [&](const Section& known) { return known.key == cut.head; });
    if (section == std::end(kSections)) return false;
    const unsigned bit = 1U << (section - std::begin(kSections));
    if ((seen & bit) != 0 || !section->read(block, negated, cut.tail)) return false;
    seen |= bit;
  }
  return true;
}

size_t protocols_offset(const IpPortBlock& head) {
  return sizeof head + sizeof(Range<uint32_t>) * head.ip4_count +
         sizeof(Range<convert::Ip6>) * head.ip6_count;
}

size_t block_size(const IpPortBlock& head) {
  return protocols_offset(head) + sizeof(ProtocolEntry) * head.protocol_count;
}

void write_block(unsigned char* out, const BlockText& block) {
  std::memcpy(out, &block.head, sizeof block.head);
  unsigned char* ip4 = out + sizeof block.head;
  unsigned char* ip6 = ip4 + sizeof(Range<uint32_t>) * block.head.ip4_count;
  convert::read_list<Range<uint32_t>>(ip4, block.addresses, convert::parse_ip4_range);
  convert::read_list<Range<convert::Ip6>>(ip6, block.addresses, convert::parse_ip6_range);
  convert::read_list<ProtocolEntry>(out + protocols_offset(block.head), block.protocols,
                                    [&](std::string_view item, ProtocolEntry& entry) {
                                      return parse_section_protocol(item, block.protocols_negated, entry);
                                    });
}

}  // namespace

int add_prot(void* entries, const char* text) {
  return convert::read_list<ProtocolEntry>(entries, convert::view(text), parse_protocol);
}

int print_prot(const void* entries, uint32_t count, uint32_t room) {
  if (entries == nullptr) return 0;
  const auto* start = static_cast<const unsigned char*>(entries);
  const unsigned char* at = start;
  constexpr uint32_t kEntrySize = sizeof(ProtocolEntry);
  for (uint32_t left = std::min(count, room / kEntrySize); left > 0; --left) {
    ProtocolEntry entry;
    std::memcpy(&entry, at, kEntrySize);
    print_entry(entry);
    at += kEntrySize;
  }
  return static_cast<int>(at - start);
}

int get_ipport_str(void* block, const char* text) {
  BlockText parsed;
  // The length of a block travels as 16 bits.
  if (!read_block_text(convert::view(text), parsed) || block_size(parsed.head) > UINT16_MAX) return 0;
  write_block(static_cast<unsigned char*>(block), parsed);
  return static_cast<int>(block_size(parsed.head));
}

int get_ipport_str_vek(void* block, const char* text) { return get_ipport_str(block, text); }
