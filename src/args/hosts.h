// The hosts that a rule is for, as one word of the command line and as lists show them; and lists of rules.
#pragma once

#include "args/answer.h"
#include "args/args.h"
#include "args/lists.h"
#include "args/print.h"

// The type behind the '>' of a word, else the type it looks like. A missing word is no hosts at all.
inline uint8_t host_type(const Args& args, int index) {
  char* const word = args.get(index);
  return word == nullptr ? 0 : take_host_type(word, host_type_by_look(word));
}

// Writes the hosts of a rule whose type is set, and their counts. Returns their bytes.
template <typename Rule>
uint32_t add_hosts(Rule& rule, ListWriter& lists, const char* word) {
  const uint32_t before = lists.bytes();
  const RangeCounts counts = lists.add_hosts(rule.type, word);
  rule.address_count = counts.v4;
  rule.v6_count = counts.v6;
  return lists.bytes() - before;
}

// The list of hosts of a type, as it comes next in an answer.
inline void print_host_list(AnswerCursor& answer, uint8_t type, uint16_t count, uint16_t v6_count) {
  if (type == kHostRanges) {
    print_addr_ranges(answer, count, v6_count);
  } else {
    print_number_ranges(answer, count);
  }
}

template <typename Rule>
void print_hosts(AnswerCursor& answer, const Rule& rule) {
  print("%s", rule.type == kHostRanges ? " ip_duan:" : " user_group:");
  print_host_list(answer, rule.type, rule.address_count, rule.v6_count);
}

// The rules of a list, each by the function, which reads on in the answer for what follows the rule.
template <typename Rule>
void print_rules(const Answer& answer, void (*print_rule)(AnswerCursor&, const Rule&)) {
  AnswerCursor cursor(answer, kListEntriesOffset);
  Rule rule;
  for (int32_t left = answer.get<int32_t>(kListCountOffset); left > 0 && cursor.read(rule); --left) {
    print_rule(cursor, rule);
  }
}
