// Single values: numbers, addresses, byte strings, as text and back.
#include "platform/address.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "support/process.h"

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

void expect_number(const char* text, uint32_t any, uint32_t decimal, uint32_t hex) {
  SCOPED_TRACE(text == nullptr ? "null" : text);
  EXPECT_EQ(J_atoi(text), any);
  EXPECT_EQ(J_ato10(text), decimal);
  EXPECT_EQ(J_atohx16(text), hex);
}

TEST(Numbers, StopSignsAndSaturation) {
  expect_number("12", 12, 12, 0x12);
  expect_number("0x1F", 31, 0, 31);
  expect_number("ff", 0, 0, 255);
  expect_number(nullptr, 0, 0, 0);
  for (const auto& [text, number] :
       pairs("'' 0 ' \t7x9' 7 4294967296 4294967295 18446744073709551617 4294967295 -1 4294967295"
             " -99999999999 2147483648 --1 0 +1 0")) {
    const auto wanted = static_cast<uint32_t>(std::stoul(number));
    expect_number(text.c_str(), wanted, wanted, wanted);
  }
}

TEST(Ip4, TextBothWays) {
  for (const char* text : {"0.0.0.1", "10.20.30.100", "9.99.100.199", "255.255.255.255"}) {
    EXPECT_EQ(ip_text(StrToIp(text)), text);
  }
  const uint32_t address = StrToIp("1.2.3.4");
  EXPECT_EQ(written(4, [&](uint8_t* out) { memcpy(out, &address, 4); }), (Bytes{1, 2, 3, 4})) << "byte order";
  EXPECT_EQ(ip_text(StrToIp("010.001.1.09")), "10.1.1.9");
  for (const char* text :
       {"", "1.2.3", "1.2.3.4.", "1.2.3.4.5", " 1.2.3.4", "1.2.3.4 ", "256.1.1.1", "1.2.3.0004", "1..3.4",
        "1.2.3.-4", "a.b.c.d", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(StrToIp(text), 0U);
  }
  EXPECT_EQ(get_ip_from_mask_wei(0, 0), 0U);
  EXPECT_EQ(ip_text(get_ip_from_mask_wei(StrToIp("10.0.0.1"), 20)), "255.255.240.0");
  EXPECT_EQ(ip_text(get_ip_from_mask_wei(0, 4000)), "255.255.255.255");
}

TEST(Ip4, FoundInsideText) {
  for (const char* text : {"10.0.0.1", "10.0.0.1:53", "10.0.0.1/24", " 10.0.0.1-10.0.0.9",
                           "http://bob@10.0.0.1/x", "line 10.0.0.1.", "256.0.0.1,10.0.0.1"}) {
    EXPECT_EQ(ip_text(get_ip_from_str(text)), "10.0.0.1") << text;
  }
  for (const char* text : {"www.example.com/10.0.0.1", "10.0.0.1.example.com", "10.0.0.1-a.example.com",
                           "cdn10.0.0.1", "1.2.3.4.5", "http://", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(get_ip_from_str(text), 0U);
  }
}

std::string ip6_text(const std::string& text) {
  unsigned char address[17];
  if (StrToIp6(text.c_str(), address + 1) == 0) return "refused";
  char out[64];
  return Ip6ToStr(out, address + 1);
}

TEST(Ip6, CanonicalText) {
  // One zero group is not shortened; of several the longest run is, of two the first.
  for (const auto& [text, canonical] :
       pairs(":: :: 1:: 1:: 2001:0DB8:0:0:8:800:200C:417A 2001:db8::8:800:200c:417a"
             " 2001:db8::1:1:1:1:1 2001:db8:0:1:1:1:1:1 2001:0:0:1:0:0:0:1 2001:0:0:1::1"
             " 2001:db8:0:0:1:0:0:1 2001:db8::1:0:0:1 1:2:3:4:5:6:0:0 1:2:3:4:5:6:: 1:2:3:4:5:6:7:: "
             "1:2:3:4:5:6:7:0"
             " ::ffff:c000:201 ::ffff:192.0.2.1 64:ff9b::192.0.2.1 64:ff9b::c000:201"
             " 1:2:3:4:5:6:255.255.255.255 1:2:3:4:5:6:ffff:ffff")) {
    EXPECT_EQ(ip6_text(text), canonical);
  }
  for (const char* text : {"", ":", ":::", ":1", "1:", "1:2:3:4:5:6:7", "1:2:3:4:5:6:7:8:9", "1::2::3",
                           "1:2:3:4:5:6:7:8::", "::12345", "::g", "1:2:3:4:5:6:7:1.2.3.4", "::1.2.3",
                           "1.2.3.4", "1.2.3.4::", "fe80::1%eth0", "[::1]", "::1 "}) {
    EXPECT_EQ(ip6_text(text), "refused") << text;
  }
  EXPECT_EQ(written(16, [](uint8_t* out) { EXPECT_EQ(StrToIp6("1:2:3:4::x", out), 0); }), Bytes(16, 0));
  EXPECT_EQ(written(16, [](uint8_t* out) { EXPECT_EQ(StrToIPv6(nullptr, out), 0); }), Bytes(16, 0));
}

TEST(CombinedAddress, KeepsTheFamily) {
  char out[64];
  for (const char* text : {"10.1.2.3", "0.0.0.0", "::", "2001:db8::5", "::ffff:10.1.2.3"}) {
    unsigned char value[21];
    EXPECT_NE(StrToIpaddr(text, value + 1), 0) << text;
    EXPECT_STREQ(IpaddrToStr(out, value + 1), text);
  }
  EXPECT_EQ(written(20, [](uint8_t* to) { EXPECT_EQ(StrToIpaddr("1:2:x", to), 0); }), Bytes(20, 0));
  const std::array<unsigned char, 20> unknown = {9, 0, 0, 0, 1, 2, 3, 4};
  EXPECT_STREQ(IpaddrToStr(out, unknown.data()), "0.0.0.0");
}

TEST(Mac, StrictText) {
  const Bytes mac = {0x00, 0x1a, 0x2b, 0xc3, 0xdd, 0xff};
  for (const char* text : {"00:1a:2b:c3:dd:ff", "00-1A-2B-C3-DD-FF", "001a2bC3ddff"}) {
    EXPECT_EQ(written(6, [&](uint8_t* out) { EXPECT_EQ(StrToMac(text, out), 0) << text; }), mac);
  }
  for (const char* text : {"", "00:1a:2b:c3:dd", "00:1a:2b:c3:dd:ff:", "00:1a:2b:c3:dd:fg",
                           "0:1a:2b:c3:dd:fff", "00:1a-2b:c3:dd:ff", "00.1a.2b.c3.dd.ff", "001a2bc3ddf"}) {
    EXPECT_EQ(written(6, [&](uint8_t* out) { EXPECT_NE(StrToMac(text, out), 0) << text; }), Bytes(6, 0));
  }
  char text[18];
  EXPECT_STREQ(MacToStr(text, "\x00\x1a\x2b\xc3\xdd\xff"), "00:1a:2b:c3:dd:ff");
}

TEST(Mac, UncheckedTextAndCounting) {
  const auto unchecked = [](const char* text) {
    return written(6, [&](uint8_t* out) { str2mac_nocheck(text, out); });
  };
  EXPECT_EQ(unchecked("0:1:2a"), (Bytes{0, 1, 0x2a, 0, 0, 0}));
  EXPECT_EQ(unchecked("0011.2233.4455.66"), (Bytes{0, 0x11, 0x22, 0x33, 0x44, 0x55}));
  EXPECT_EQ(unchecked(nullptr), Bytes(6, 0));

  const auto added = [](uint32_t step, int bytes) {
    return written(6,
                   [&](uint8_t* out) { mac_add(memcpy(out, "\x01\x02\xff\xff\xff\xfe", 6), step, bytes); });
  };
  EXPECT_EQ(added(3, 4), (Bytes{1, 2, 0, 0, 0, 1})) << "wraps, and leaves the first bytes alone";
  EXPECT_EQ(added(3, 9), (Bytes{1, 3, 0, 0, 0, 1}));
  EXPECT_EQ(added(3, -1), (Bytes{1, 2, 0xff, 0xff, 0xff, 0xfe}));
}

TEST(ByteStrings, Hexadecimal) {
  for (const auto& [text, wanted] : pairs("0aFF10 0aff10 '0a:ff-10 20' 0aff1020 0102030405 01020304 '' '' "
                                          "0a0 '' 0a0g '' 0a: '' :0a '' 0a::0b ''")) {
    int count = 0;
    const Bytes bytes = written(4, [&](uint8_t* out) { count = string_to_hex(text.c_str(), out, 4); });
    std::string digits;
    for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
      digits += "0123456789abcdef"[bytes.at(i) / 16];
      digits += "0123456789abcdef"[bytes.at(i) % 16];
    }
    EXPECT_EQ(digits, wanted) << text;
  }
  EXPECT_EQ(string_to_hex(nullptr, nullptr, 4), 0);
}

TEST(ByteStrings, Base64) {
  const auto decoded = [](const char* text, size_t length) {
    char out[8] = "#######";
    const int count = base64_decode2(text, out, static_cast<int>(length), 6);
    EXPECT_EQ(static_cast<size_t>(count), strcspn(out, "#")) << text;
    return std::string(out, strcspn(out, "#"));
  };
  for (const auto& [text, bytes] :
       pairs("Zm9vYmFy foobar Zm9vYg== foob Zm9vYmE= fooba Zm9vYg foob +/+/ \xfb\xff\xbf"
             " 'Zm9v Yg==' foob Zm9vY '' Zg= '' Z=== '' Zm=v '' Zm-v '' Zm9vYmFyZg== ''")) {
    EXPECT_EQ(decoded(text.c_str(), text.size()), bytes);
  }
  EXPECT_EQ(decoded("Zm9vYmFy", 4), "foo");
  EXPECT_EQ(decoded("Zm9v", 100), "foo");
  EXPECT_EQ(decoded(nullptr, 4), "");
}

}  // namespace
