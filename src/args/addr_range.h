// Lists of address ranges, as many payloads carry them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/list.h"

class AnswerCursor;

// Fills a list, IPv4 and IPv6 items mixed in one text, with room bytes for the ranges behind its header.
// False, with nothing written, when the text's items could need more than that.
bool fill_addr_ranges(AddrRangeList& list, size_t room, const char* text);

// Prints ranges that lie at `ranges` wholly inside the record, each with a comma behind it. Returns the bytes
// they take.
uint32_t print_addr_ranges(const void* ranges, uint16_t v4_count, uint16_t v6_count);

// The same for ranges that come next in an answer, as far as the record holds them.
void print_addr_ranges(AnswerCursor& answer, uint16_t v4_count, uint16_t v6_count);
