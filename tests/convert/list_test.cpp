// Comma lists, bit sets, protocol entries and destination blocks.
#include "platform/list.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "platform/address.h"
#include "support/process.h"

namespace {

// The numbers that a reader wrote at an odd address into garbage, which must survive behind them.
template <typename Number, size_t kPerElement, typename Read>
std::vector<Number> read_numbers(Read read) {
  std::vector<unsigned char> room(4096, 0xee);
  std::vector<Number> numbers(static_cast<size_t>(read(room.data() + 1)) * kPerElement);
  if (!numbers.empty()) memcpy(numbers.data(), room.data() + 1, numbers.size() * sizeof(Number));
  EXPECT_EQ(room[1 + numbers.size() * sizeof(Number)], 0xee) << "wrote behind the last element";
  return numbers;
}

using Numbers = std::vector<uint32_t>;

// The ranges of a list, IPv4 and then IPv6 ones, with a blank in front of each.
std::string ranges(const char* text, int most = 99) {
  std::string found;
  const auto add = [&found](const char* first, const std::string& last) {
    found += std::string(" ") + first + "-" + last;
  };
  char first[64];
  char last[64];
  const Numbers ip4 =
      read_numbers<uint32_t, 2>([&](void* out) { return get_iplist_str_max(out, text, most); });
  for (size_t i = 0; i < ip4.size(); i += 2) {  // in host byte order
    add(IpToStr(first, __builtin_bswap32(ip4[i])), IpToStr(last, __builtin_bswap32(ip4[i + 1])));
  }
  unsigned char room[512];
  const int count = get_ip6list_str(room + 1, text);
  for (int i = 0; i < count; ++i) add(Ip6ToStr(first, room + 1 + 32 * i), Ip6ToStr(last, room + 17 + 32 * i));
  return found;
}

TEST(AddressLists, Items) {
  const std::string all6 = "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff";
  for (const auto& [list, wanted] :
       pairs("10.0.0.1,10.0.0.5-10.0.0.9 ' 10.0.0.1-10.0.0.1 10.0.0.5-10.0.0.9'"
             " 10.0.0.77/24,10.0.0.77/255.255.254.0 ' 10.0.0.0-10.0.0.255 10.0.0.0-10.0.1.255'"
             " 1.2.3.4/0,1.2.3.4/32 ' 0.0.0.0-255.255.255.255 1.2.3.4-1.2.3.4'"
             " 1.2.3.4/0.0.0.0,1.2.3.4/255.255.255.255 ' 0.0.0.0-255.255.255.255 1.2.3.4-1.2.3.4'"
             " ' 0.0.0.0-0.0.0.0 ,,\t1.2.3.4 - 1.2.3.4,' ' 0.0.0.0-0.0.0.0 1.2.3.4-1.2.3.4'"
             " 0,9.0.0.1-8.0.0.1 ' 9.0.0.1-8.0.0.1'"
             " 2001:db8::1,10.0.0.1,::1-::ff ' 10.0.0.1-10.0.0.1 2001:db8::1-2001:db8::1 ::1-::ff'"
             " 2001:db8:ffff::7/36 ' 2001:db8:f000::-2001:db8:ffff:ffff:ffff:ffff:ffff:ffff'"
             " fd00::1/128,::/0 ' fd00::1-fd00::1 ::-" +
             all6 + "' ::2-::1 ' ::2-::1'")) {
    EXPECT_EQ(ranges(list.c_str()), wanted) << list;
  }
  // What is not understood stands in the list as a range that ends before it starts.
  for (const std::string& item :
       split("1.2.3.4/33 1.2.3.4/255.0.255.0 1.2.3.4- -1.2.3.4 1.2.3.4/ x 192.168.1.300 00")) {
    EXPECT_EQ(ranges(item.c_str()), " 255.255.255.255-0.0.0.0") << item;
  }
  for (const std::string& item : split("::/129 ::/255.0.0.0 1::2::3 1.2.3.4-::1 ::1- :")) {
    EXPECT_EQ(ranges(item.c_str()), " " + all6 + "-::") << item;
  }
  EXPECT_EQ(ranges("::1,1.1.1.1,fd00::/8", 1),
            " 1.1.1.1-1.1.1.1 ::1-::1 fd00::-fdff:ffff:ffff:ffff:ffff:ffff:ffff:ffff");
  EXPECT_EQ(ranges("1.1.1.1,2.2.2.2,x", 2), " 1.1.1.1-1.1.1.1 2.2.2.2-2.2.2.2");
  EXPECT_EQ(ranges("1.1.1.1", 0), "");
  EXPECT_EQ(ranges(nullptr), "");

  std::vector<char> room(8 * 65535 + 1, 0x5a);  // counts travel as 16 bits
  EXPECT_EQ(get_iplist_str(room.data(), unfolded("{1.1.1.1,}*70000").c_str()), 65535);
  EXPECT_EQ(room.back(), 0x5a);
}

TEST(NumberLists, RangesIdsAndNumbers) {
  for (auto* reader : {get_user_group_str, get_typeid_str, get_devlist_str, get_qosthdid_str}) {
    EXPECT_EQ(
        (read_numbers<uint16_t, 2>(
            [&](void* out) { return reader(out, "3, 5-9 ,65535,65536,9-5,-1,a,0,,7-7"); })),
        (std::vector<uint16_t>{3, 3, 5, 9, 65535, 65535, 65535, 0, 9, 5, 65535, 0, 65535, 0, 0, 0, 7, 7}));
  }
  EXPECT_EQ((read_numbers<uint32_t, 2>([](void* out) {
              return get_shibie_ips_str(out, "00010002-0001ffff,10,0xFFFFFFFF,123456789,2-1,0x,g");
            })),
            (Numbers{0x00010002, 0x0001ffff, 0x10, 0x10, 0xffffffff, 0xffffffff, 0xffffffff, 0, 2, 1,
                     0xffffffff, 0, 0xffffffff, 0}));
  EXPECT_EQ(
      (read_numbers<uint32_t, 1>([](void* out) { return get_u32_str(out, "1,0x10,4294967296, 5 ,,ff"); })),
      (Numbers{1, 16, 4294967295, 5, 4294967295}));
}

TEST(Splitting, KeepsEmptyPiecesAndTheBound) {
  for (const auto& [text, wanted] : pairs("a,,b a||b| a, a|| 1,2,3,4 1|2|3| ' a ' ' a |' '' ''")) {
    std::string list = text;
    std::string joined;
    char* pieces[4] = {};
    const int count = split_string(list.data(), ',', pieces, 3);
    for (int i = 0; i < count; ++i) joined += pieces[i] + std::string("|");
    EXPECT_EQ(joined, wanted);
    EXPECT_EQ(pieces[3], nullptr);
  }
  EXPECT_EQ(split_string(nullptr, ',', nullptr, 3), 0);
}

TEST(BitSets, WordsOf64AndTheirEnd) {
  using Words = std::vector<uint64_t>;
  const auto filled = [](void (*fill)(void*, const char*, int), const char* text) {
    Words words(3, ~uint64_t{0});
    fill(words.data(), text, 1);
    EXPECT_EQ(words[2], ~uint64_t{0});
    words.pop_back();
    return words;
  };
  EXPECT_EQ(filled(rule_set_bits, "0,3,35,62-65,,127"), (Words{0xc000000800000009U, 0x8000000000000003U}));
  for (const char* nothing : {"", "3,x", "3,127-128", "3,9-8", "3,65536"}) {
    EXPECT_EQ(filled(rule_set_bits, nothing), (Words{0, 0})) << nothing;
  }
  EXPECT_EQ(filled(wans_set_bits, "0,2,120,123"), (Words{10, 0b1010ULL << (120 - 64)}));
}

// ---- Protocols and destination blocks ----

std::string printed_protocols(const void* entries, uint32_t count, uint32_t room, int consumed) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(print_prot(entries, count, room), consumed);
  return testing::internal::GetCapturedStdout();
}

TEST(Protocols, PrintedAsTheyAreRead) {
  unsigned char entries[256];
  const char* good = "tcp,not-udp:53,tcp:1024-65535:,any:0:80-90,sctp:5:6,icmp6,200,not-0:1,";
  ASSERT_EQ(add_prot(entries + 1, good), 8);
  EXPECT_EQ(printed_protocols(entries + 1, 8, 96, 96),
            "tcp,not-udp:53,tcp:1024-65535:,any:0:80-90,sctp:5:6,icmp6,200,not-any:1,");
  EXPECT_EQ(printed_protocols(entries + 1, 8, 35, 24), "tcp,not-udp:53,") << "only whole entries in the room";
  EXPECT_EQ(printed_protocols(entries + 1, 1, 96, 12), "tcp,");
  for (const char* bad :
       {"icmp:1", "tcp:9-1", "tcp:65536", "tcp:1:2:3", "256", "TCP", "not-", "not-not-tcp", ":80", "gre:"}) {
    ASSERT_EQ(add_prot(entries, bad), 1) << bad;
    EXPECT_EQ(printed_protocols(entries, 1, 12, 12), "255:65535-0:65535-0,") << bad;
  }
  EXPECT_EQ(add_prot(entries, nullptr), 0);
}

// The block that a text becomes; empty when nothing is written.
std::string block_of(const std::string& text, int (*read)(void*, const char*) = get_ipport_str) {
  std::string block(70000, '#');
  const auto size = static_cast<size_t>(read(block.data(), text.c_str()));
  EXPECT_EQ(block[size], '#');
  return block.substr(0, size);
}

TEST(DestinationBlock, LayoutOfEverySection) {
  EXPECT_EQ(to_hex(block_of("not-class=3+ip=10.0.0.0/8,fd00::/8+proto=tcp:80+dns=not-line:2,type:7")),
            unfolded("03010102070100000100010001000007000000000000000affffff0afd{00}*15fd{ff}*14ff"
                     "060000000000ffff50005000"));
  EXPECT_EQ(to_hex(block_of("not-dns=any")), unfolded("0000010000000001{00}*12"));

  const std::string text = "not-proto=tcp:1-2:3,udp+ip=1.1.1.1";
  const std::string block = block_of(text);
  ASSERT_EQ(block.size(), 20U + 8 + 24);
  const std::string protocols = printed_protocols(block.data() + 28, 2, 24, 24);
  EXPECT_EQ(protocols, "not-tcp:1-2:3,not-udp,");
  EXPECT_EQ(block_of("ip=1.1.1.1,+proto=" + protocols), block) << "and in another order";
  EXPECT_EQ(block_of(text, get_ipport_str_vek), block);
}

const std::string kNotUnderstood(20, '\xff');

TEST(DestinationBlock, BadTextBecomesABlockThatNoTextReadsAs) {
  EXPECT_EQ(block_of(" "), "");
  for (const std::string& text :
       split("none not-ip=1.1.1.1 ip=9.0.0.1-8.0.0.1 ip=0 ip ip=, ip=1.1.1.1,x ip=1.1.1.1/33 ip=1.1.1.1+ "
             "+ip=1.1.1.1"
             " ip=1.1.1.1++class=1 ip=1.1.1.1+ip=2.2.2.2 class=256 class= class=1,2 not-not-class=1"
             " not-proto=not-tcp proto=tcp:80,icmp:1 dns= dns=line dns=line:256 dns=line:1,line:2 "
             "dns=any,line:1"
             " dns=wan:1 class=1+proto=bogus CLASS=1")) {
    EXPECT_EQ(block_of(text), kNotUnderstood) << text;
  }
  EXPECT_EQ(get_ipport_str(nullptr, nullptr), 0);
  const std::string longest = "ip=::1" + unfolded("{,::1}*2046");
  EXPECT_EQ(block_of(longest).size(), 20U + 32 * 2047);
  EXPECT_EQ(block_of(longest + ",::1"), kNotUnderstood) << "longer than 16 bits can say";
}

}  // namespace
