// Lists as text and in records: address ranges, number ranges, bit sets, destination blocks.
// Nothing here allocates, keeps state or depends on the locale. A null text is taken as the empty text, which
// gives an empty list. Destinations need no alignment.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// ---- List readers ----
//
// The text is a comma-separated list; blanks (space, tab) around an item, and around the '-' or '/' in it, do
// not matter, and empty items are skipped. A reader never skips what it does not understand: a list without
// the item could match more than was meant, or less. It writes an element that matches nothing, because it
// ends before it starts, and whoever is given the list must refuse that:
//   an item that is none of the reader's kind, or out of bounds: from the highest value to the lowest
//     (255.255.255.255-0.0.0.0, ffff:...:ffff-::, 65535-0, ffffffff-00000000)
//   a range whose ends are the wrong way round: as it was given
//
// How much room a reader needs: it writes at most one element for each comma-separated item of its own kind,
// nothing for an empty item, and no more than 65535 elements, since counts travel as 16 bits; the last of
// these is one that matches nothing when the list goes on behind it. So the number of commas plus one, times
// the element size, is enough; elements are written back to back, and nothing behind the last one is touched.
// Each reader returns the number of elements.

// IPv4 items, 8 bytes each: uint32_t first, uint32_t last, in host byte order. An item is an address
// ("10.0.0.1"), two ("10.0.0.5-10.0.0.9"), a prefix of RFC 4632 ("10.0.0.0/24") or an address with a mask of
// leading one bits ("10.0.0.0/255.255.255.0"); host bits set beside a prefix or mask are dropped. Every item
// without a ':' is meant for this reader, but for "0", which stands for no address and is skipped as an empty
// item is; items with a ':' are skipped.
int get_iplist_str(void* ranges, const char* text);
// The same, at most `most` ranges: the first ones of the list.
int get_iplist_str_max(void* ranges, const char* text, int most);

// IPv6 items, 32 bytes each: first and last address, 16 bytes each in network byte order. An item is an
// address, two ("2001:db8::1-2001:db8::9") or a prefix ("2001:db8::/32"); texts as StrToIp6 takes them. Items
// without a ':' are skipped, so both readers can be run on one text.
int get_ip6list_str(void* ranges, const char* text);

// Items of the four readers below, 4 bytes each: uint16_t first, uint16_t last. An item is a decimal number
// from 0 to 65535 or two with '-' between ("3", "5-9"): user groups; type ids (application classes);
// interface numbers; QoS channel numbers. What a list display prints can be given again.
int get_user_group_str(void* ranges, const char* text);
int get_typeid_str(void* ranges, const char* text);
int get_devlist_str(void* ranges, const char* text);
int get_qosthdid_str(void* ranges, const char* text);

// Identification ids, 8 bytes each: uint32_t first, uint32_t last, in host byte order. An item is a
// hexadecimal number of up to 8 digits, with or without "0x", or two with '-' between ("00010002",
// "00010002-0001ffff"): printed with "%08x" as they are stored, they can be given again.
int get_shibie_ips_str(void* ranges, const char* text);

// Numbers, 4 bytes each: uint32_t in host byte order, decimal or hexadecimal after "0x". No ranges. What is
// not understood becomes 4294967295, as a number does that is too large for J_atoi.
int get_u32_str(void* numbers, const char* text);

// ---- Splitting ----

// Splits `text` in place: each separator becomes a NUL, and pieces[0], pieces[1], ... point into the text,
// which must outlive them. Blanks stay. Empty pieces are kept; an empty text has none. At most `most` pieces
// are stored: the rest of the text is ignored, and not part of the last piece; who must know asks for one
// more than there may be. Returns the number of pieces; further entries of the array are not touched.
int split_string(char* text, char separator, char** pieces, int most);

// ---- Bit sets ----
//
// A set is `last_word` + 1 words of 64 bits in the machine's byte order (3 makes 32 bytes, ids 0 to 255); id
// n is bit n % 64 of word n / 64. The functions clear the whole set, then set what a list of numbers and
// ranges (as get_typeid_str) names. An item that is not understood, or that names an id beyond the set,
// leaves the whole set empty: it matches nothing, and whoever is given an empty set must refuse it. A
// negative `last_word` does nothing.

// Traffic-type ids, as given.
void rule_set_bits(void* bits, const char* text, int last_word);
// Line numbers, in the numbering of the multi-line rules: 0 to 120 count from one (line 0 is bit 1), larger
// numbers stand as given, since 0 means no line there.
void wans_set_bits(void* bits, const char* text, int last_word);

// ---- Protocol entries ----
//
// An entry is 12 bytes, the numbers in host byte order:
//    0  uint8_t   protocol number of IP, 0 for any
//    1  uint8_t   1 when the entry is negated, else 0
//    2  uint16_t  zero
//    4  uint16_t  first source port        6  uint16_t  last source port
//    8  uint16_t  first destination port  10  uint16_t  last destination port
// Ports that do not matter are 0 to 65535. Traffic matches a list when it matches one of the entries that are
// not negated, or when there are none such; and none of the negated ones.
//
// As text an entry is
//   [not-]PROTOCOL[:PORTS]          ports of the destination
//   [not-]PROTOCOL:PORTS:[PORTS]    ports of the source, then of the destination
// PROTOCOL is any, icmp, igmp, tcp, udp, dccp, gre, esp, ah, icmp6, ospf, sctp, udplite or a number up to
// 255; PORTS is "80" or "8000-8080", empty for all. Only any, tcp, udp, dccp, sctp and udplite take ports.

// Reads a list of entries, as the list readers do, with their bound on the room. An item that is not
// understood, ports the wrong way round included, becomes the entry of protocol 255 with ports 65535 to 0 on
// both sides, which matches nothing. Returns the number of entries.
int add_prot(void* entries, const char* text);

// Prints up to `count` entries on the stdio stream stdout, a comma after each, as add_prot and the
// destination block read them. Reads only whole entries within `room` bytes. Returns the bytes consumed, 12
// an entry.
int print_prot(const void* entries, uint32_t count, uint32_t room);

// ---- Destination block ----
//
// The destination side of a rule: up to four sections joined by '+', in any order, each at most once, and
// each one a further condition. No character of it is special to a shell.
//   [not-]class=N          class, 0 to 255
//   ip=LIST                destination addresses: IPv4 and IPv6 items as the list readers take them
//   [not-]proto=LIST       protocol entries; "not-" here stands for "not-" before every entry of the list
//   [not-]dns=LIST         DNS class: "any", or one or both of [not-]line:N and [not-]type:N, 0 to 255
// For example
//   proto=tcp:80,tcp:443
//   ip=10.0.0.0/8,fd00::/8+proto=udp:1024-65535:53
//   class=3+dns=line:2,not-type:7
//
// The addresses cannot be negated: no display of a block has a place for it.
//
// In the record, all numbers in the machine's byte order:
//    0  uint8_t   class                   1  uint8_t   1 when the class is negated
//    2  uint8_t   1 with a dns section    3  uint8_t   DNS line        4  uint8_t   DNS type
//    5  uint8_t   1 when the DNS line is negated       6  uint8_t   1 when the DNS type is negated
//    7  uint8_t   1 when the dns section is negated as a whole
//    8  uint16_t  number of IPv4 ranges  10  uint16_t  number of IPv6 ranges
//   12  uint16_t  number of protocol entries
//   14  uint8_t   zero
//   15  uint8_t   what was given, since 0 is a value too: 1 class, 2 DNS line, 4 DNS type
//   16  4 bytes   zero
//   20  the IPv4 ranges (8 bytes each), the IPv6 ranges (32 each), the protocol entries (12 each)

// Writes the block and returns its size in bytes. A text that says nothing (empty, or blank) gives 0, with
// nothing written. One that is wrong anywhere (an unknown word, an item that does not read, a section given
// twice or empty, a block above 65535 bytes) becomes a block of 20 bytes 0xff, which no text reads as:
// whoever is given it must refuse it. Writes at most 20 bytes and 32 for each item, so 20 + 32 * (1 + number
// of ',' and
// '+' in the text) is always enough room. Both functions take the same text and write the same block.
int get_ipport_str(void* block, const char* text);
int get_ipport_str_vek(void* block, const char* text);

#ifdef __cplusplus
}
#endif
