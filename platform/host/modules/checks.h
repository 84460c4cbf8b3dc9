// What modules check alike, and how they refuse.
#pragma once

#include <string>
#include <string_view>

#include "modules/order.h"
#include "records/list.h"
#include "state/store.h"

inline void refuse_unless(bool good, Result why) {
  if (!good) throw Refusal{why};
}

// For what a statement has changed or deleted.
inline void refuse_if_none(int changed, Result why = kNoSuchEntry) { refuse_unless(changed != 0, why); }

// After an insertion.
inline void refuse_if_full(Store& store, const std::string& table, int64_t most) {
  refuse_unless(store.number(("SELECT count(*) FROM " + table).c_str()) <= most, kTableFull);
}

// The records of a table of rules: as much as the answer to its list holds, so that no rule works unseen.
constexpr uint32_t kMaxTableBytes = 102400 - sizeof(OrderRecord) - kListEntriesOffset;

// One that is shown with a sign: what is above was typed with one, or is no number at all.
inline void check_number(uint32_t value) { refuse_unless(value <= INT32_MAX, kBadNumber); }

inline void check_switch(uint32_t value) { refuse_unless(value <= 1, kBadSwitch); }

// A list shows the text, a line an entry.
inline void check_text(std::string_view text) {
  for (const char c : text) refuse_unless(static_cast<uint8_t>(c) >= ' ' && c != 0x7f, kBadText);
}

inline void check_name(std::string_view name) {
  refuse_unless(!name.empty(), kBadName);
  check_text(name);
}

// Host names and domains (RFC 1123, section 2.1), with the underscores that services have in theirs.
inline void check_domain(std::string_view name) {
  size_t label_length = 0;
  char before = '.';
  for (const char c : name) {
    const bool is_dot = c == '.';
    const bool is_letter =
        (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    refuse_unless(is_letter || (before != '.' && (c == '-' || (is_dot && before != '-'))), kBadName);
    label_length = is_dot ? 0 : label_length + 1;
    refuse_unless(label_length <= 63, kBadName);
    before = c;
  }
  refuse_unless(before != '.' && before != '-', kBadName);
}

// Neither all zero nor that of a group of hosts.
inline bool is_host_mac(const Mac& mac) { return (mac.bytes[0] & 1) == 0 && mac != Mac{}; }

// Neither of this network's own (RFC 1122, section 3.2.1.3) nor a group of hosts or all of them.
inline bool is_host_ip(const Ip4& ip) {
  const uint32_t first_byte = ntohl(ip.value) >> 24;
  return first_byte != 0 && first_byte != 127 && first_byte < 224;
}

// Leading one bits and nothing else.
inline bool is_mask(const Ip4& mask) {
  const uint32_t host_bits = ~ntohl(mask.value);
  return (host_bits & (host_bits + 1)) == 0;
}
inline void check_mask(const Ip4& mask) { refuse_unless(is_mask(mask), kBadMask); }

// For a range that ends before it starts: it was given so, or it stands for an item that was not understood.
template <typename Range>
[[noreturn]] void refuse_range(const Range& range, Result not_understood) {
  const bool is_mark = memcmp(&range, &kNotUnderstood<Range>, sizeof range) == 0;
  throw Refusal{is_mark ? not_understood : kBadRange};
}

// The elements of lists.
inline void check_element(const V4Range& range) {
  if (range.first.value > range.last.value) refuse_range(range, kBadAddress);
}
inline void check_element(const V6Range& range) {
  if (memcmp(&range.first, &range.last, sizeof range.first) > 0) refuse_range(range, kBadAddress);
}
inline void check_element(const NumberRange& range) {
  if (range.first > range.last) refuse_range(range, kBadList);
}
inline void check_element(const IdRange& range) {
  if (range.first > range.last) refuse_range(range, kBadList);
}
inline void check_element(const ProtocolEntry& entry) {
  refuse_unless(entry.source.first <= entry.source.last && entry.destination.first <= entry.destination.last,
                kBadDestination);
}
inline void check_element(const IpPortBlock& block) {
  refuse_unless(block.cl_type_fei <= 1 && block.dns_en <= 1, kBadDestination);  // 0xff: not understood
}

// Steps over the lists that follow a record, those of a destination block among them included, and checks
// their elements. What the counts speak of must be there.
template <typename Record>
void check_lists(const Record& record, std::span<const uint8_t>& bytes) {
  Record::each_list(record, [&]<typename Element>(const char*, ListOf<Element> list) {
    for (uint32_t i = 0; i < list.count; ++i) {
      refuse_unless(bytes.size() >= sizeof(Element), kBadRecord);
      Element element;
      memcpy(&element, bytes.data(), sizeof element);
      bytes = bytes.subspan(sizeof element);
      check_element(element);
      if constexpr (HasLists<Element>) check_lists(element, bytes);
    }
  });
}
