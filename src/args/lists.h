// Lists in payloads: writing them behind a request's fixed part, and printing those of an answer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "args/answer.h"
#include "records/list.h"

// A reader of the platform library: writes what it finds in a text, returns how much that is.
using ListReader = int (*)(void* destination, const char* text);

struct RangeCounts {
  uint16_t v4;
  uint16_t v6;
};

// Writes lists back to back. The platform library's readers are not told how much room there is: what a text
// could need is counted here before it is read, and a text that could need more than is left is not read at
// all.
class ListWriter {
 public:
  ListWriter(void* start, size_t room) : at_(static_cast<uint8_t*>(start)), room_(room) {}
  // Behind the fixed part with which a request's payload begins, up to the end of its record.
  template <typename Fixed>
  static ListWriter behind(Fixed& fixed) {
    return {&fixed + 1, Answer(&fixed).room(uint32_t{sizeof fixed})};
  }

  // A list of an Element an item. Returns the number of elements.
  template <typename Element>
  uint16_t add(ListReader read, const char* text) {
    return add_elements(read, sizeof(Element), text);
  }
  // The text's IPv4 ranges, then its IPv6 ranges.
  RangeCounts add_addresses(const char* text);
  // The list of hosts of a type: addresses or user groups, the number of which stands for v4.
  RangeCounts add_hosts(uint8_t type, const char* text);
  // A destination block, read by get_ipport_str or its variant. Returns its bytes, 0 for an empty text.
  uint16_t add_block(ListReader read, const char* text);

  // An element that is at hand.
  template <typename Element>
  void put(const Element& element) {
    if (!make_sure_of(sizeof element)) return;
    memcpy(at_, &element, sizeof element);
    advance(1, sizeof element);
  }

  bool fits() const { return fits_; }  // false once a text was not read for want of room
  uint32_t bytes() const { return bytes_; }

 private:
  uint16_t add_elements(ListReader read, size_t size, const char* text);
  bool make_sure_of(size_t bytes);
  uint16_t advance(int count, size_t size);

  uint8_t* at_;
  size_t room_;
  uint32_t bytes_ = 0;
  bool fits_ = true;
};

// The type of a word that lists hosts: the number behind a '>', where the word is cut; without one the other.
uint8_t take_host_type(char* word, uint8_t otherwise);
// The type that a word looks like: only addresses have dots or colons.
uint8_t host_type_by_look(const char* word);

// What comes next in an answer, as far as the record holds it; each item has a comma behind it.
void print_addr_ranges(AnswerCursor& answer, uint16_t v4_count, uint16_t v6_count);
void print_number_ranges(AnswerCursor& answer, uint16_t count);
void print_id_ranges(AnswerCursor& answer, uint16_t count);
void print_protocols(AnswerCursor& answer, uint16_t count);
