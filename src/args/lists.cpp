// Writing and printing the lists of payloads.
#include "args/lists.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "args/print.h"
#include "platform/address.h"
#include "platform/list.h"

namespace {

// Takes the piece before the next separator off a text.
std::string_view next_piece(std::string_view& text, char separator) {
  const std::string_view piece(text.data(), std::min(text.find(separator), text.size()));
  text.remove_prefix(std::min(piece.size() + 1, text.size()));
  return piece;
}

// Calls visit with every item of a comma list that is not empty: the readers write nothing for those.
template <typename Visit>
void each_item(std::string_view list, Visit visit) {
  while (!list.empty()) {
    const std::string_view item = next_piece(list, ',');
    if (!item.empty()) visit(item);
  }
}

size_t most_elements(std::string_view list) {
  size_t count = 0;
  each_item(list, [&](std::string_view) { ++count; });
  return count;
}

// One range an item; only IPv6 items hold a colon.
size_t most_address_bytes(std::string_view list) {
  size_t bytes = 0;
  each_item(list, [&](std::string_view item) {
    bytes += item.find(':') != item.npos ? sizeof(V6Range) : sizeof(V4Range);
  });
  return bytes;
}

// Sections joined by '+', each "KEY=LIST" or "not-KEY=LIST".
size_t most_block_bytes(std::string_view text) {
  size_t bytes = sizeof(IpPortBlock);
  while (!text.empty()) {
    std::string_view list = next_piece(text, '+');
    const std::string_view key = next_piece(list, '=');
    if (key.ends_with("ip")) {
      bytes += most_address_bytes(list);
    } else if (key.ends_with("proto")) {
      bytes += most_elements(list) * sizeof(ProtocolEntry);
    } else if (!key.ends_with("class") && !key.ends_with("dns")) {  // those are in the fixed part
      bytes += (1 + most_elements(list)) * sizeof(V6Range);         // whatever it is: the most of any item
    }
  }
  return bytes;
}

template <typename Range>
void print_ranges(AnswerCursor& answer, uint16_t count) {
  for (const Range& range : answer.entries<Range>(count)) {
    if (range.first == range.last) {
      print("%s,", range.first);
    } else {
      print("%s-%s,", range.first, range.last);
    }
  }
}

}  // namespace

RangeCounts ListWriter::add_addresses(const char* text) {
  if (!make_sure_of(most_address_bytes(text))) return {};
  const uint16_t v4 = advance(get_iplist_str(at_, text), sizeof(V4Range));
  const uint16_t v6 = advance(get_ip6list_str(at_, text), sizeof(V6Range));
  return {v4, v6};
}

RangeCounts ListWriter::add_hosts(uint8_t type, const char* text) {
  if (type == kHostRanges) return add_addresses(text);
  return {add<NumberRange>(get_user_group_str, text), 0};
}

uint16_t ListWriter::add_block(ListReader read, const char* text) {
  if (*text == '\0') return 0;
  const size_t most = most_block_bytes(text);
  // The length of a block travels as 16 bits.
  if (!make_sure_of(most > UINT16_MAX ? SIZE_MAX : most)) return 0;
  return advance(read(at_, text), 1);
}

uint16_t ListWriter::add_elements(ListReader read, size_t size, const char* text) {
  if (!make_sure_of(most_elements(text) * size)) return 0;
  return advance(read(at_, text), size);
}

bool ListWriter::make_sure_of(size_t bytes) {
  fits_ = fits_ && bytes <= room_;
  return fits_;
}

uint16_t ListWriter::advance(int count, size_t size) {
  const auto elements = static_cast<uint16_t>(count);
  const size_t bytes = std::min(elements * size, room_);
  at_ += bytes;
  room_ -= bytes;
  bytes_ += static_cast<uint32_t>(bytes);
  return elements;
}

uint8_t take_host_type(char* word, uint8_t otherwise) {
  char* const mark = strchr(word, '>');
  if (mark == nullptr) return otherwise;
  *mark = '\0';
  return static_cast<uint8_t>(J_atoi(mark + 1));
}

uint8_t host_type_by_look(const char* word) { return strpbrk(word, ".:") != nullptr ? kHostRanges : 0; }

void print_addr_ranges(AnswerCursor& answer, uint16_t v4_count, uint16_t v6_count) {
  print_ranges<V4Range>(answer, v4_count);
  print_ranges<V6Range>(answer, v6_count);
}

void print_number_ranges(AnswerCursor& answer, uint16_t count) {
  for (const NumberRange& range : answer.entries<NumberRange>(count)) {
    if (range.first == range.last) {
      print("%d,", range.first);
    } else {
      print("%d-%d,", range.first, range.last);
    }
  }
}

void print_id_ranges(AnswerCursor& answer, uint16_t count) {
  for (const IdRange& range : answer.entries<IdRange>(count)) {
    if (range.first == range.last) {
      print("%08x,", range.first);
    } else {
      print("%08x-%08x,", range.first, range.last);
    }
  }
}

void print_protocols(AnswerCursor& answer, uint16_t count) {
  const int consumed = print_prot(answer.here(), count, answer.room());
  // A negative number is none that the platform library should return; then nothing more can be made out.
  answer.skip(static_cast<size_t>(consumed));
}
