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
using convert::take_prefix;

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

constexpr NumberRange kAllPorts = {0, 65535};

bool is_all(const NumberRange& ports) { return ports.first == 0 && ports.last == 65535; }

bool parse_ports(std::string_view text, NumberRange& ports) {
  ports = kAllPorts;
  return text.empty() || (convert::parse_number_range(text, ports) && ports.first <= ports.last);
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

void print_ports(const NumberRange& ports) {
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

bool take_ip4_range(std::string_view item, V4Range& range) {
  return convert::parse_ip4_range(item, range) && range.first.value <= range.last.value;
}

bool take_ip6_range(std::string_view item, V6Range& range) {
  return convert::parse_ip6_range(item, range) &&
         std::memcmp(range.first.bytes, range.last.bytes, sizeof range.first.bytes) <= 0;
}

// No list has a place for addresses that are negated: two rules that mean opposite things would read alike.
bool read_addresses(BlockText& block, bool negated, std::string_view value) {
  if (negated) return false;
  block.addresses = value;
  unsigned v4 = 0;
  unsigned v6 = 0;
  const bool good = for_all_items(value, [&](std::string_view item) {
    V4Range range4;
    V6Range range6;
    if (take_ip4_range(item, range4)) return ++v4 <= UINT16_MAX;
    return take_ip6_range(item, range6) && ++v6 <= UINT16_MAX;
  });
  block.head.v4_count = static_cast<uint16_t>(v4);
  block.head.v6_count = static_cast<uint16_t>(v6);
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
  if (text.back() == '+') return false;
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
  return sizeof head + sizeof(V4Range) * head.v4_count + sizeof(V6Range) * head.v6_count;
}

size_t block_size(const IpPortBlock& head) {
  return protocols_offset(head) + sizeof(ProtocolEntry) * head.protocol_count;
}

void write_block(unsigned char* out, const BlockText& block) {
  std::memcpy(out, &block.head, sizeof block.head);
  unsigned char* v4 = out + sizeof block.head;
  unsigned char* v6 = v4 + sizeof(V4Range) * block.head.v4_count;
  convert::read_list<V4Range>(v4, block.addresses, convert::parse_ip4_range, convert::is_ip4_item);
  convert::read_list<V6Range>(v6, block.addresses, convert::parse_ip6_range, convert::is_ip6_item);
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
  const std::string_view sections = convert::trim(convert::view(text));
  if (sections.empty()) return 0;
  BlockText parsed;
  // The length of a block travels as 16 bits.
  if (!read_block_text(sections, parsed) || block_size(parsed.head) > UINT16_MAX) {
    std::memset(block, 0xff, sizeof(IpPortBlock));
    return sizeof(IpPortBlock);
  }
  write_block(static_cast<unsigned char*>(block), parsed);
  return static_cast<int>(block_size(parsed.head));
}

int get_ipport_str_vek(void* block, const char* text) { return get_ipport_str(block, text); }
