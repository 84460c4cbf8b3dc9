// Single values: numbers, addresses, byte strings, as text and back.
#include "platform/address.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "support/process.h"

namespace {

// What a conversion leaves, in digits, in a destination that held garbage, at an odd address.
template <typename Convert>
std::string written(size_t size, Convert convert) {
  std::array<uint8_t, 64> room;
  room.fill(0xee);
  convert(room.data() + 1);
  EXPECT_EQ(room[0] + room[size + 1], 2 * 0xee) << "wrote beyond its destination";
  return to_hex({reinterpret_cast<char*>(room.data() + 1), size});
}

// Each text of a table becomes what stands behind it.
template <typename Convert>
void expect_each(Convert convert, const std::string& table) {
  for (const auto& [text, wanted] : pairs(table)) EXPECT_EQ(convert(text.c_str()), wanted) << text;
}
// Each of these is refused.
template <typename Convert>
void expect_none(Convert convert, const std::string& texts) {
  for (const std::string& text : split(texts)) EXPECT_EQ(convert(text.c_str()), "none") << text;
  EXPECT_EQ(convert(nullptr), "none");
}

TEST(Numbers, StopSignsAndSaturation) {
  const auto by_all = [](const char* text) {
    return std::to_string(J_atoi(text)) + "|" + std::to_string(J_ato10(text)) + "|" +
           std::to_string(J_atohx16(text));
  };
  expect_each(by_all,
              "12 12|12|18 0x1F 31|0|31 ff 0|0|255 '' 0|0|0 --1 0|0|0 +1 0|0|0 ' \t7x9' 7|7|7"
              " 4294967296 4294967295|4294967295|4294967295 -1 4294967295|4294967295|4294967295"
              " 18446744073709551617 4294967295|4294967295|4294967295"
              " -99999999999 2147483648|2147483648|2147483648");
  EXPECT_EQ(by_all(nullptr), "0|0|0");
}

std::string ip_text(uint32_t address) {
  char text[64];
  return address == 0 ? "none" : IpToStr(text, address);
}

TEST(Ip4, TextBothWays) {
  const auto both_ways = [](const char* text) { return ip_text(StrToIp(text)); };
  expect_each(both_ways,
              "0.0.0.1 0.0.0.1 10.20.30.100 10.20.30.100 9.99.100.199 9.99.100.199"
              " 255.255.255.255 255.255.255.255 010.001.1.09 10.1.1.9");
  expect_none(both_ways,
              "'' 1.2.3 1.2.3.4. 1.2.3.4.5 ' 1.2.3.4' '1.2.3.4 ' 256.1.1.1 1.2.3.0004 1..3.4"
              " 1.2.3.-4 a.b.c.d");
  const uint32_t address = StrToIp("1.2.3.4");
  EXPECT_EQ(written(4, [&](uint8_t* out) { memcpy(out, &address, 4); }), "01020304") << "byte order";
  EXPECT_EQ(get_ip_from_mask_wei(0, 0), 0U);
  EXPECT_EQ(ip_text(get_ip_from_mask_wei(StrToIp("10.0.0.1"), 20)), "255.255.240.0");
  EXPECT_EQ(ip_text(get_ip_from_mask_wei(0, 4000)), "255.255.255.255");
}

TEST(Ip4, FoundInsideText) {
  const auto found = [](const char* text) { return ip_text(get_ip_from_str(text)); };
  for (const std::string& text : split("10.0.0.1 10.0.0.1:53 10.0.0.1/24 ' 10.0.0.1-10.0.0.9'"
                                       " http://bob@10.0.0.1/x 'line 10.0.0.1.' 256.0.0.1,10.0.0.1")) {
    EXPECT_EQ(found(text.c_str()), "10.0.0.1") << text;
  }
  expect_none(found,
              "www.example.com/10.0.0.1 10.0.0.1.example.com 10.0.0.1-a.example.com cdn10.0.0.1"
              " 1.2.3.4.5 http://");
}

TEST(Ip6, CanonicalText) {
  const auto both_ways = [](const char* text) {
    unsigned char address[17];
    char out[64];
    return std::string(StrToIp6(text, address + 1) == 0 ? "none" : Ip6ToStr(out, address + 1));
  };
  // One zero group is not shortened; of several the longest run is, of two the first.
  expect_each(both_ways,
              ":: :: 1:: 1:: 2001:0DB8:0:0:8:800:200C:417A 2001:db8::8:800:200c:417a"
              " 2001:db8::1:1:1:1:1 2001:db8:0:1:1:1:1:1 2001:0:0:1:0:0:0:1 2001:0:0:1::1"
              " 2001:db8:0:0:1:0:0:1 2001:db8::1:0:0:1 1:2:3:4:5:6:0:0 1:2:3:4:5:6:: 1:2:3:4:5:6:7::"
              " 1:2:3:4:5:6:7:0 ::ffff:c000:201 ::ffff:192.0.2.1 64:ff9b::192.0.2.1 64:ff9b::c000:201"
              " 1:2:3:4:5:6:255.255.255.255 1:2:3:4:5:6:ffff:ffff");
  expect_none(both_ways,
              "'' : ::: :1 1: 1:2:3:4:5:6:7 1:2:3:4:5:6:7:8:9 1::2::3 1:2:3:4:5:6:7:8:: ::12345"
              " ::g 1:2:3:4:5:6:7:1.2.3.4 ::1.2.3 1.2.3.4 1.2.3.4:: fe80::1%eth0 [::1] '::1 '");
  EXPECT_EQ(written(16, [](uint8_t* out) { StrToIp6("1:2:3:4::x", out); }), std::string(32, '0'));
  EXPECT_EQ(written(16, [](uint8_t* out) { EXPECT_EQ(StrToIPv6(nullptr, out), 0); }), std::string(32, '0'));
}

TEST(CombinedAddress, KeepsTheFamily) {
  char out[64];
  for (const char* text : {"10.1.2.3", "0.0.0.0", "::", "2001:db8::5", "::ffff:10.1.2.3"}) {
    unsigned char value[21];
    EXPECT_NE(StrToIpaddr(text, value + 1), 0) << text;
    EXPECT_STREQ(IpaddrToStr(out, value + 1), text);
  }
  EXPECT_EQ(written(20, [](uint8_t* to) { EXPECT_EQ(StrToIpaddr("1:2:x", to), 0); }), std::string(40, '0'));
  const std::array<unsigned char, 20> unknown = {9, 0, 0, 0, 1, 2, 3, 4};
  EXPECT_STREQ(IpaddrToStr(out, unknown.data()), "0.0.0.0");
}

TEST(Mac, TextAndCounting) {
  const auto strict = [](const char* text) {
    bool refused = false;
    const std::string mac = written(6, [&](uint8_t* out) { refused = StrToMac(text, out) != 0; });
    return !refused ? mac : mac == "000000000000" ? "none" : "not cleared";
  };
  expect_each(strict,
              "00:1a:2b:c3:dd:ff 001a2bc3ddff 00-1A-2B-C3-DD-FF 001a2bc3ddff 001a2bC3ddff 001a2bc3ddff");
  expect_none(strict,
              "'' 00:1a:2b:c3:dd 00:1a:2b:c3:dd:ff: 00:1a:2b:c3:dd:fg 0:1a:2b:c3:dd:fff"
              " 00:1a-2b:c3:dd:ff 00.1a.2b.c3.dd.ff 001a2bc3ddf");
  char text[18];
  EXPECT_STREQ(MacToStr(text, "\x00\x1a\x2b\xc3\xdd\xff"), "00:1a:2b:c3:dd:ff");

  const auto unchecked = [](const char* digits) {
    return written(6, [&](uint8_t* out) { str2mac_nocheck(digits, out); });
  };
  expect_each(unchecked, "f:1:2a 0f012a000000 0011.2233.4455.66 001122334455");
  EXPECT_EQ(unchecked(nullptr), "000000000000");

  const auto added = [](uint32_t step, int bytes) {
    return written(6,
                   [&](uint8_t* out) { mac_add(memcpy(out, "\x01\x02\xff\xff\xff\xfe", 6), step, bytes); });
  };
  EXPECT_EQ(added(3, 4), "010200000001") << "wraps, and leaves the first bytes alone";
  EXPECT_EQ(added(3, 9), "010300000001");
  EXPECT_EQ(added(3, -1), "0102fffffffe");
}

TEST(ByteStrings, HexadecimalAndBase64) {
  const auto read = [](const char* text) {
    int count = 0;
    const std::string bytes = written(4, [&](uint8_t* out) { count = string_to_hex(text, out, 4); });
    return bytes.substr(0, 2 * static_cast<size_t>(count));
  };
  expect_each(read,
              "0aFF10 0aff10 '0a:ff-10 20' 0aff1020 0102030405 01020304 '' '' 0a0 '' 0a0g '' 0a: ''"
              " :0a '' 0a::0b ''");
  EXPECT_EQ(string_to_hex(nullptr, nullptr, 4), 0);

  const auto decoded = [](const char* text, size_t length) {
    char out[8] = "#######";
    const int count = base64_decode2(text, out, static_cast<int>(length), 6);
    EXPECT_EQ(static_cast<size_t>(count), strcspn(out, "#")) << text;
    return std::string(out, strcspn(out, "#"));
  };
  expect_each(
      [&](const char* text) { return decoded(text, strlen(text)); },
      "Zm9vYmFy foobar Zm9vYg== foob Zm9vYmE= fooba Zm9vYg foob IA== ' ' +/+/ \xfb\xff\xbf 'Zm9v Yg==' foob"
      " Zm9vY '' Zg= '' Z=== '' Zm=v '' Zm-v '' Zm9vYmFyZg== ''");
  EXPECT_EQ(decoded("Zm9vYmFy", 4), "foo");
  EXPECT_EQ(decoded("Zm9v", 100), "foo");
  EXPECT_EQ(decoded(nullptr, 4), "");
}

}  // namespace
