// What payloads become as JSON and in a trace.
#include "shell/records.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "shell/json.h"
#include "shell/trace_text.h"
#include "shell/words.h"
#include "tool/driver.h"

namespace {

using nlohmann::json;

std::span<const uint8_t> bytes_in(const std::string& payload) {
  return {reinterpret_cast<const uint8_t*>(payload.data()), payload.size()};
}

json json_of(const Message& message) {
  std::string text;
  return append_json(text, message) ? json::parse(text) : json();
}

// All that is wanted is there; an object may have more members.
void expect_within(const json& wanted, const json& found, const std::string& where) {
  if (wanted.is_object() && found.is_object()) {
    for (const auto& [name, value] : wanted.items()) {
      expect_within(value, found.contains(name) ? found[name] : json("nothing"), where + "/" + name);
    }
  } else if (wanted.is_array() && found.is_array() && wanted.size() == found.size()) {
    for (size_t i = 0; i < wanted.size(); ++i)
      expect_within(wanted[i], found[i], where + "/" + std::to_string(i));
  } else {
    EXPECT_EQ(wanted, found) << where;
  }
}

// What is shown of a payload: each byte once, in its order. Only where a list's count stands somewhere within
// the payload may what is in front of it be left out.
struct Coverage : RecordVisitor {
  void begin_record(std::string_view, uint32_t) override {}
  void end_record() override {}
  void begin_list(std::string_view, uint32_t, int64_t) override {}
  void end_list() override {}
  void field(const Field& field) override {
    constexpr uint32_t kLastListStart = 44;
    if (field.offset != next && (field.offset < next || field.offset > kLastListStart)) faults += 1;
    next = field.offset + static_cast<uint32_t>(field.bytes.size());
  }
  void rest(uint32_t offset, std::span<const uint8_t> bytes) override { field({{}, nullptr, offset, bytes}); }

  uint32_t next = 0;
  int faults = 0;
};

}  // namespace

TEST(Records, EveryByteIsShownOnce) {
  const std::vector<uint8_t> payload(20000, 1);  // every count is more than there is
  for (const CommandWords& row : kCommandWords) {
    for (const bool is_answer : {false, true}) {
      const bool is_scattered = std::string_view(row.words) == "bbsfilter list";
      Coverage coverage;
      if (is_scattered || !decode({row.module, row.command, is_answer, 1, payload}, coverage)) continue;
      EXPECT_EQ(0, coverage.faults) << row.words;
      EXPECT_EQ(payload.size(), coverage.next) << row.words;
    }
  }
}

TEST(Records, EverySubCommandThatSendsAnOrderHasARow) {
  const std::vector<uint8_t> room(8192);
  size_t orders = 0;
  for (const CommandWords& row : kCommandWords) {
    if (row.module == 0) continue;
    ++orders;
    EXPECT_TRUE(is_known_command(row.module, row.command)) << row.words;
    const bool says_only_ok = std::string_view(row.words) == "qos sprule del";
    if (!row.has_answer || says_only_ok) continue;
    EXPECT_FALSE(json_of({row.module, row.command, true, 0, room}).is_null()) << row.words;
  }
  EXPECT_GT(orders, 250U);
  EXPECT_EQ("rule acc add", words_of(11, 9));
  EXPECT_TRUE(is_result_a_count(4, 20));
}

struct Case {
  uint32_t module;
  uint32_t command;
  bool is_answer;
  const char* payload;
  const char* wanted;
  uint32_t result = 0;
};

TEST(Records, AsJson) {
  // clang-format off
  const Case cases[] = {
      {2, 5, true, "4:u32 1 8:text eth0 24:u32 3 32:u16 250", R"({"num":1,"list":[{"dev":"eth0","flags":3,"type":250}]})"},
      {2, 11, true, "0:text eth0 16:u64 18446744073709551615", R"({"dev":"eth0","rx_broadcast":18446744073709551615,"tx_unicast":0})"},
      {3, 8, true, "4:u32 1 8:ip 10.0.0.9 20:hex 02005e001009 52:u32 5 92:u32 4294967295",
       R"({"list":[{"ip":"10.0.0.9","mac":"02:00:5e:00:10:09","state":[0,2],"count":-1}]})"},
      {3, 16, false, "0:text lan 16:ip 1.2.3.0 1.2.3.255", R"({"dev":"lan","first_ip":"1.2.3.0","last_ip":"1.2.3.255"})"},
      {4, 3, true, "4:u32 1 8:u16 1 1 12:u32 3 32:text a.b 35:ip 9.8.7.6 39:hex 20010db8000000000000000000000001",
       R"({"list":[{"name":"a.b","v4":["9.8.7.6"],"v6":["2001:db8::1"]}]})"},
      {4, 20, true, "0:ip 1.2.3.4 4:u8 1 3 0 8:text abc 11:ip 0.0.0.0 15:u8 2 1 2 19:text xyz",
       R"({"list":[{"ip":"1.2.3.4","name":"abc","other_name":""},{"kind":2,"name":"x","other_name":"yz"}]})", 2},
      {4, 17, false, "0:text a.b 127:u8 2 128:text c.d", R"({"name":"a.b","kind":2,"other_name":"c.d"})"},
      {5, 1, false, "0:text lan 32:hex 0a000a0a", R"({"pool":{"settings":{"dev":"lan","start_addr":["10.10.0.10","0.0.0.0","0.0.0.0"]}}})"},
      {5, 9, true, "20:u32 1 24:text lan 40:ip 10.0.0.5", R"({"num":1,"list":[{"dev":"lan","ip":"10.0.0.5"}]})"},
      {7, 12, false, "0:u32 3", R"({"number":3})"},
      {9, 9, true, "12:u32 1 28:ip 10.1.0.1 10.1.0.9", R"({"pool":[{"start":"10.1.0.1","end":"10.1.0.9"}],"bl":[],"session":[]})"},
      {10, 23, true, "4:u32 1 16:u16 2 32:u64 0 200:u8 1 236:text host", R"({"list":[{"wanid":2,"zc":{"en":1,"target_names":["host","",""]}}]})"},
      {10, 17, true, "0:u16 1 2:text two\\swords", R"({"wanid":1,"text":"two\\swords"})"},
      {11, 12, true, "4:u32 1 8:text web 107:u8 1 112:u8 1 128:u16 1 1 0 20 140:u16 5 9 144:hex 0100a8c0ff00a8c0 160:u16 1 0 0 172:hex 0000000affffff0a",
       R"({"list":[{"name":"web","act":1,"thd":[{"first":5,"last":9}],"v4":[{"first":"192.168.0.1","last":"192.168.0.255"}],)"
       R"("destination":[{"v4":[{"first":"10.0.0.0","last":"10.255.255.255"}]}]}]})"},
      {11, 2, true, "4:u32 1 8:text r 72:u8 2 88:u16 1 96:u16 3 7", R"({"list":[{"name":"r","type":2,"groups":[{"first":3,"last":7}]}]})"},
      {12, 4, true, "0:u16 1 4:hex 02005e001001", R"({"macs":[{"mac":"02:00:5e:00:10:01"}]})"},
      {13, 1, true, "4:u32 1 8:u64 9223372036854775809 64:u32 6 68:hex fe800000000000000000000000000001 448:hex c3a4ff22 1176:u8 0",
       R"({"num":1,"list":[{"flag":[0,63],"ip":"fe80::1","hostname":"ä�\""}]})"},
      {13, 19, true, "20:u32 1 44:u32 4 48:ip 8.8.8.8 64:hex 0035 116:text dns", R"({"list":[{"far_ip":"8.8.8.8","in_port":53,"name":"dns"}]})"},
      {14, 10, true, "4:u32 2 12:text a 64:u64 6 128:u16 1 20 132:hex 0100000a0200000a +152 4:text b",
       R"({"list":[{"name":"a","lines":[1,2],"ranges":[{"first":"10.0.0.1","last":"10.0.0.2"}]},{"name":"b","ranges":[]}]})"},
      {14, 26, true, "42:u16 1 44:ip 10.0.0.1 56:u32 4294967295 7", R"({"list":[{"ip":"10.0.0.1","hi_skb":[-1,7]}]})"},
      {16, 10, true, "4:u32 1 8:text ann 268:ip 10.0.0.3", R"({"list":[{"account":{"name":"ann","ip_start":"10.0.0.3"}}]})"},
      {35, 4, true, "0:u32 1 8:u32 40 12:u16 3 1 40:text bad", R"({"places":[{"data_length":3,"type":1,"word":"bad"}]})"},
      {36, 3, true, "4:u32 1 8:text p 76:u16 1 84:u8 3 85:text exe", R"({"list":[{"name":"p","postfixes":[{"length":3,"text":"exe"}]}]})"},
      {41, 1, false, "2164:u32 1 2168:text wan2 2184:u16 7", R"({"more":[{"name":"wan2","id":7}]})"},
      {45, 2, true, "36:u16 5 52:hex 8864 56:hex 0005", R"({"session_id":5,"header":{"ether_type":34916,"header_session_id":5}})"},
      {56, 5, true, "0:text p 80:u16 1 176:u16 2 3", R"({"name":"p","d_ips":[{"first":2,"last":3}]})"},
      {62, 3, true, "4:u32 1 8:u64 60 36:u32 4294967295", R"({"list":[{"last":60,"card_type":-1}]})"},
      {69, 4, true, "0:u32 67 2 8:u16 2 1 23:u8 3 32:hex 00001234 56:text abc 59:u16 5 0",
       R"({"tol_num":2,"sections":[{"type":2,"num":1,"records":[{"shibie_id":4660,"qq":"abc","ip":null}]},{"type":5,"records":[]}]})"},
      {69, 9, true, "0:u32 98 1 8:u32 7 92:u32 2 96:text hi", R"({"list":[{"tm":7,"data":"hi"}]})"},
      {74, 2, true, "4:u32 77", R"({"listeners":[0,77,0,0,0,0,0,0,0,0,0,0,0,0,0,0]})"},
      {82, 4, true, "4:u32 1 8:text u 74:u8 3 78:u16 1 84:text ads 340:u16 4 4", R"({"list":[{"url":"ads","groups":[{"first":4,"last":4}]}]})"},
      {1, 12, true, "4:u8 200", R"({"rssi":-56})"},
      // A count of far more than there is: whole entries alone.
      {2, 5, true, "4:u32 2147483647 8:text eth0 44:text cut", R"({"num":2147483647,"list":[{"dev":"eth0"}]})"},
      {2, 5, true, "4:hex ffffffff 8:text eth0 43:u8 0", R"({"num":-1,"list":[]})"},
      {32, 14, false, "", "null"},
      {99, 1, true, "0:u32 1", "null"},
  };
  // clang-format on
  for (const Case& each : cases) {
    SCOPED_TRACE(std::to_string(each.module) + "/" + std::to_string(each.command) + " " + each.payload);
    const std::string payload = bytes_of(each.payload);
    const bool is_cut = std::string_view(each.wanted).find("21474") != std::string_view::npos;
    const std::string whole = is_cut ? payload : payload + std::string(4096, '\0');
    expect_within(json::parse(each.wanted),
                  json_of({each.module, each.command, each.is_answer, each.result, bytes_in(whole)}), "");
  }
}

TEST(Records, AsTrace) {
  const std::string payload = bytes_of(
      "0:text web 96:u16 5 99:u8 1 105:u8 7 104:u8 1 120:u16 0 4 132:hex 0100a8c0ff00a8c0 158:u8 255");
  std::string trace;
  append_trace(trace, {11, 9, false, 0, bytes_in(payload)});
  EXPECT_EQ(R"(order rule acc add, module 11 command 9, 159 bytes
     0 name             "web"
    96 prio             5
    99 act              1
   100 log              0
   103 thd_type         0
   104 type             1
   105 ?                070000
   108 mac              00:00:00:00:00:00
   120 thd_count        0
   122 address_count    4
   124 v6_count         0
   126 ipport_bytes     0
   128 list_bytes       0
   132 thd              0 entries
   132 v4               4 entries
   132   [0]
   132     first            192.168.0.1
   136     last             192.168.0.255
   140   [1]
   140     first            0.0.0.0
   144     last             0.0.0.0
         and 1 more of zeros
         cut: there are 3
   156 ?                0000ff
   159 v6               0 entries
   159 destination      0 entries
)",
            trace);
}
