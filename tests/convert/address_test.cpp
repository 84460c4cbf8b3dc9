// Single values: numbers, addresses, byte strings, as text and back.
#include "platform/address.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<unsigned>;

// What a conversion leaves in a destination that held garbage, at an odd address.
template <typename Convert>
Bytes written(size_t size, Convert convert) {
  std::array<uint8_t, 64> room;
  room.fill(0xee);
  convert(room.data() + 1);
  EXPECT_EQ(room[0], 0xee);
  EXPECT_EQ(room[size + 1], 0xee) << "wrote beyond its destination";
  return Bytes(room.begin() + 1, room.begin() + 1 + static_cast<long>(size));
}

std::string ip_text(uint32_t address) {
  char text[64];
  return IpToStr(text, address);
}

TEST(Numbers, StopSignsAndSaturation) {
  const struct {
    const char* text;
    uint32_t any, decimal, hex;
  } cases[] = {
      {"", 0, 0, 0},
      {nullptr, 0, 0, 0},
      {"12", 12, 12, 0x12},
      {" \t7x9", 7, 7, 7},
      {"0x1F", 31, 0, 31},
      {"0xg", 0, 0, 0},
      {"ff", 0, 0, 255},
      {"4294967295", 4294967295, 4294967295, 4294967295},
      {"4294967296", 4294967295, 4294967295, 4294967295},
      {"18446744073709551617", 4294967295, 4294967295, 4294967295},
      {"-1", 0xffffffff, 0xffffffff, 0xffffffff},
      {"-99999999999", 0x80000000, 0x80000000, 0x80000000},
      {"--1", 0, 0, 0},
      {"+1", 0, 0, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text == nullptr ? "null" : c.text);
    EXPECT_EQ(J_atoi(c.text), c.any);
    EXPECT_EQ(J_ato10(c.text), c.decimal);
    EXPECT_EQ(J_atohx16(c.text), c.hex);
  }
}

TEST(Ip4, TextBothWays) {
  for (const char* text : {"0.0.0.1", "10.20.30.40", "9.99.100.199", "255.255.255.255"}) {
    EXPECT_EQ(ip_text(StrToIp(text)), text);
  }
  const uint32_t address = StrToIp("1.2.3.4");
  EXPECT_EQ(written(4, [&](uint8_t* out) { memcpy(out, &address, 4); }), (Bytes{1, 2, 3, 4})) << "byte order";
  EXPECT_EQ(ip_text(StrToIp("010.001.1.09")), "10.1.1.9");
  for (const char* text : {"", "1.2.3", "1.2.3.4.", "1.2.3.4.5", " 1.2.3.4", "1.2.3.4 ", "256.1.1.1",
                           "1.2.3.0004", "1..3.4", "1.2.3.-4", "a.b.c.d", "10.0.0.1/24"}) {
    EXPECT_EQ(StrToIp(text), 0U) << text;
  }
  EXPECT_EQ(StrToIp(nullptr), 0U);
}

TEST(Ip4, FoundInsideText) {
  const struct {
    const char* text;
    const char* found;
  } cases[] = {
      {"10.0.0.1", "10.0.0.1"},
      {"10.0.0.1:53", "10.0.0.1"},
      {"10.0.0.1/24", "10.0.0.1"},
      {" 10.0.0.1-10.0.0.9", "10.0.0.1"},
      {"http://bob@10.0.0.1/x", "10.0.0.1"},
      {"line 10.0.0.1.", "10.0.0.1"},
      {"256.0.0.1,10.0.0.1", "10.0.0.1"},
      {"www.example.com/10.0.0.1", "0.0.0.0"},
      {"10.0.0.1.example.com", "0.0.0.0"},
      {"10.0.0.1-a.example.com", "0.0.0.0"},
      {"cdn10.0.0.1", "0.0.0.0"},
      {"1.2.3.4.5", "0.0.0.0"},
      {"http://", "0.0.0.0"},
      {nullptr, "0.0.0.0"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(ip_text(get_ip_from_str(c.text)), c.found) << (c.text ? c.text : "null");
}

TEST(Ip4, MaskFromPrefixLength) {
  EXPECT_EQ(ip_text(get_ip_from_mask_wei(0, 0)), "0.0.0.0");
  EXPECT_EQ(ip_text(get_ip_from_mask_wei(StrToIp("10.0.0.1"), 20)), "255.255.240.0");
  EXPECT_EQ(ip_text(get_ip_from_mask_wei(0, 32)), "255.255.255.255");
  EXPECT_EQ(ip_text(get_ip_from_mask_wei(0, 4000)), "255.255.255.255");
}

std::string ip6_text(const char* text) {
  unsigned char address[17];
  if (StrToIp6(text, address + 1) == 0) return "refused";
  char out[64];
  return Ip6ToStr(out, address + 1);
}

TEST(Ip6, CanonicalText) {
  const struct {
    const char* text;
    const char* canonical;
  } cases[] = {
      {"::", "::"},
      {"::1", "::1"},
      {"1::", "1::"},
      {"2001:0DB8:0:0:8:800:200C:417A", "2001:db8::8:800:200c:417a"},
      {"2001:db8::1:1:1:1:1", "2001:db8:0:1:1:1:1:1"},  // one zero group is not shortened
      {"2001:0:0:1:0:0:0:1", "2001:0:0:1::1"},          // the longest run
      {"2001:db8:0:0:1:0:0:1", "2001:db8::1:0:0:1"},    // of two the first
      {"1:2:3:4:5:6:0:0", "1:2:3:4:5:6::"},
      {"1:2:3:4:5:6:7::", "1:2:3:4:5:6:7:0"},
      {"ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff", "ffff:ffff:ffff:ffff:ffff:ffff:ffff:ffff"},
      {"::ffff:192.0.2.1", "::ffff:192.0.2.1"},
      {"::ffff:c000:201", "::ffff:192.0.2.1"},
      {"64:ff9b::192.0.2.1", "64:ff9b::c000:201"},
      {"1:2:3:4:5:6:255.255.255.255", "1:2:3:4:5:6:ffff:ffff"},
  };
  for (const auto& c : cases) EXPECT_EQ(ip6_text(c.text), c.canonical) << c.text;
  for (const char* text : {"", ":", ":::", ":1", "1:", "1:2:3:4:5:6:7", "1:2:3:4:5:6:7:8:9", "1::2::3",
                           "1:2:3:4:5:6:7:8::", "::12345", "::g", "1:2:3:4:5:6:7:1.2.3.4", "::1.2.3",
                           "1.2.3.4", "1.2.3.4::", "fe80::1%eth0", "[::1]", "::1 "}) {
    EXPECT_EQ(ip6_text(text), "refused") << text;
  }
}

TEST(Ip6, FailureZeroesTheDestination) {
  const Bytes zeros(16, 0);
  EXPECT_EQ(written(16, [](uint8_t* out) { EXPECT_EQ(StrToIp6("1:2:3:4::x", out), 0); }), zeros);
  EXPECT_EQ(written(16, [](uint8_t* out) { EXPECT_EQ(StrToIPv6(nullptr, out), 0); }), zeros);
}

TEST(CombinedAddress, KeepsTheFamily) {
  for (const char* text : {"10.1.2.3", "0.0.0.0", "::", "2001:db8::5", "::ffff:10.1.2.3"}) {
    unsigned char value[21];
    EXPECT_NE(StrToIpaddr(text, value + 1), 0) << text;
    char out[64];
    EXPECT_STREQ(IpaddrToStr(out, value + 1), text);
  }
  EXPECT_EQ(written(20, [](uint8_t* out) { EXPECT_EQ(StrToIpaddr("1:2:x", out), 0); }), Bytes(20, 0));
  const std::array<unsigned char, 20> unknown = {9, 0, 0, 0, 1, 2, 3, 4};
  char out[64];
  EXPECT_STREQ(IpaddrToStr(out, unknown.data()), "0.0.0.0");
}

TEST(Mac, StrictText) {
  const Bytes mac = {0x00, 0x1a, 0x2b, 0xc3, 0xdd, 0xff};
  for (const char* text : {"00:1a:2b:c3:dd:ff", "00-1A-2B-C3-DD-FF", "001a2bC3ddff"}) {
    EXPECT_EQ(written(6, [&](uint8_t* out) { EXPECT_EQ(StrToMac(text, out), 0) << text; }), mac);
  }
  for (const char* text :
       {"", "00:1a:2b:c3:dd", "00:1a:2b:c3:dd:ff:", "00:1a:2b:c3:dd:fg", "0:1a:2b:c3:dd:fff",
        "00:1a-2b:c3:dd:ff", "00.1a.2b.c3.dd.ff", "001a2bc3ddf", " 01a2bc3ddff"}) {
    EXPECT_EQ(written(6, [&](uint8_t* out) { EXPECT_NE(StrToMac(text, out), 0) << text; }), Bytes(6, 0));
  }
  const unsigned char bytes[] = {0x00, 0x1a, 0x2b, 0xc3, 0xdd, 0xff};
  char text[18];
  EXPECT_STREQ(MacToStr(text, bytes), "00:1a:2b:c3:dd:ff");
}

TEST(Mac, UncheckedTextAndCounting) {
  const auto unchecked = [](const char* text) {
    return written(6, [&](uint8_t* out) { str2mac_nocheck(text, out); });
  };
  EXPECT_EQ(unchecked("0:1:2a"), (Bytes{0, 1, 0x2a, 0, 0, 0}));
  EXPECT_EQ(unchecked("0011.2233.4455.66"), (Bytes{0, 0x11, 0x22, 0x33, 0x44, 0x55}));
  EXPECT_EQ(unchecked(nullptr), Bytes(6, 0));

  const auto added = [](uint32_t step, int bytes) {
    return written(6, [&](uint8_t* out) {
      memcpy(out, "\x01\x02\xff\xff\xff\xfe", 6);
      mac_add(out, step, bytes);
    });
  };
  EXPECT_EQ(added(1, 4), (Bytes{1, 2, 0xff, 0xff, 0xff, 0xff}));
  EXPECT_EQ(added(3, 4), (Bytes{1, 2, 0, 0, 0, 1})) << "wraps, and leaves the first bytes alone";
  EXPECT_EQ(added(3, 9), (Bytes{1, 3, 0, 0, 0, 1}));
  EXPECT_EQ(added(3, -1), (Bytes{1, 2, 0xff, 0xff, 0xff, 0xfe}));
}

TEST(ByteStrings, Hexadecimal) {
  const struct {
    const char* text;
    Bytes bytes;
  } cases[] = {{"0aFF10", {0x0a, 0xff, 0x10}},
               {"0a:ff-10 20", {0x0a, 0xff, 0x10, 0x20}},
               {"0102030405", {1, 2, 3, 4}},
               {"", {}},
               {"0a0", {}},
               {"0a0g", {}},
               {"0a:", {}},
               {":0a", {}},
               {"0a::0b", {}},
               {nullptr, {}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text == nullptr ? "null" : c.text);
    int count = 0;
    Bytes bytes = written(4, [&](uint8_t* out) { count = string_to_hex(c.text, out, 4); });
    bytes.resize(static_cast<size_t>(count));
    EXPECT_EQ(bytes, c.bytes);
  }
}

TEST(ByteStrings, Base64) {
  const struct {
    const char* text;
    int length;
    int count;
    const char* bytes;
  } cases[] = {
      {"Zm9vYmFy", 8, 6, "foobar"},
      {"Zm9vYg==", 8, 4, "foob"},
      {"Zm9vYmE=", 8, 5, "fooba"},
      {"Zm9vYg", 6, 4, "foob"},
      {"Zm9vYmFy", 4, 3, "foo"},
      {"Zm9v", 100, 3, "foo"},
      {"+/+/", 4, 3, "\xfb\xff\xbf"},
      {"", 0, 0, ""},
      {nullptr, 4, 0, ""},
      {"Zm9vY", 5, -1, ""},
      {"Zm9v Yg==", 9, -1, ""},
      {"Zg=", 3, -1, ""},
      {"Z===", 4, -1, ""},
      {"Zm=v", 4, -1, ""},
      {"Zm9vYmFyZg==", 12, -1, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text == nullptr ? "null" : c.text);
    char out[7] = {'#', '#', '#', '#', '#', '#', '#'};
    EXPECT_EQ(base64_decode2(c.text, out, c.length, 6), c.count);
    EXPECT_EQ(std::string(out, strcspn(out, "#")), c.bytes);
  }
}

}  // namespace
