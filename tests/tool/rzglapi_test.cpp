// rzglapi: which platform function it calls with what, and what it answers.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tool/driver.h"

namespace {

using nlohmann::json;

const std::string kDone = R"({"ret":"0"})";
const std::string kFailed = R"({"ret":"-1"})";
const std::string kIp = "10.0.0.6";
const std::string kMac = "00:11:22:33:44:55";

Outcome rzglapi(std::vector<std::string> words, const std::string& script = "") {
  words.insert(words.begin(), "rzglapi");
  return vek(words, {}, {.script = script});
}

// The status is the same whatever happens, and the answers are JSON.
void expect_answer(const Outcome& outcome, const std::string& out, const std::string& err = "") {
  EXPECT_TRUE(json::accept(out)) << out;
  EXPECT_TRUE(outcome.orders.empty());
  expect_end(outcome, 1, out, err);
}

// One call; what it returns decides between the two answers.
void expect_call(const std::vector<std::string>& words, const std::string& call) {
  SCOPED_TRACE(call);
  const Outcome done = rzglapi(words);
  EXPECT_EQ(done.calls, std::vector{call});
  expect_answer(done, kDone);
  const std::string function = call.substr(0, call.find(' '));
  expect_answer(rzglapi(words, answer(function, 7)), kDone);
  expect_answer(rzglapi(words, answer(function, -7)), kFailed);
}

void expect_usage(const std::vector<std::string>& words, const std::string& usage) {
  SCOPED_TRACE(testing::PrintToString(words));
  const Outcome outcome = rzglapi(words);
  EXPECT_TRUE(outcome.calls.empty());
  expect_answer(outcome, kFailed, usage + "\n");
}

TEST(Rzglapi, LoginAndLogout) {
  expect_call({"login", "ip", kIp, "60", "bob"}, "ApiLoginByIpName bob 10.0.0.6 60");
  expect_call({"login", "ip", kIp, "-1"}, "ApiLoginByIpName (null) 10.0.0.6 4294967295");
  expect_call({"login", "mac", kMac, "60", "bob", "x"}, "ApiLoginByMacName bob 00:11:22:33:44:55 60");
  expect_call({"login", "mac", kMac, "60"}, "ApiLoginByMacName (null) 00:11:22:33:44:55 60");
  expect_call({"login", "ipmac", kIp, kMac, "60", "bob"},
              "ApiLoginByIpAndMacName bob 10.0.0.6 00:11:22:33:44:55 60");
  expect_call({"login", "ipmac", kIp, kMac, "60"},
              "ApiLoginByIpAndMacName (null) 10.0.0.6 00:11:22:33:44:55 60");
  expect_call({"logout", "ip", kIp}, "ApiLogoutByIp 10.0.0.6");
  expect_call({"logout", "mac", kMac}, "ApiLogoutByMac 00:11:22:33:44:55");
  expect_call({"logout", "ipmac", kIp, kMac}, "ApiLogoutByIp 10.0.0.6");
  expect_call({"checkonline", "ip", kIp}, "ApiIsIpOnline 10.0.0.6");
  expect_call({"checkonline", "mac", kMac}, "ApiIsMacOnline 00:11:22:33:44:55");
  expect_call({"checkonline", "ipmac", kIp, kMac}, "ApiIsIpMacOnline 10.0.0.6 00:11:22:33:44:55");
}

TEST(Rzglapi, HostUsageLines) {
  const struct {
    std::string action;
    std::string ip, mac, both;  // what follows the key
    std::string keys;
    std::vector<std::string> more;  // words that the action needs behind the host
  } kActions[] = {
      {"login",
       "ipstr timeout user",
       "macstr timeout user ",
       "ipstr macstr timeout user ",
       "ip/mac/ipmac  ",
       {"60"}},
      {"logout", "ipstr", "macstr", "ipstr macstr", "ip/mac/ipmac  ", {}},
      {"checkonline", "ipstr", "macstr", "ipstr macstr", "ip/mac/ipmac  ", {}},
      {"getonline", "ipstr", "macstr", "ipstr macstr", "ip/mac/ipmac/all  ", {}},
  };
  for (const auto& action : kActions) {
    const auto refused = [&](std::vector<std::string> words, const std::string& usage,
                             bool with_more = true) {
      words.insert(words.begin(), action.action);
      if (with_more) words.insert(words.end(), action.more.begin(), action.more.end());
      expect_usage(words, "  vek rzglapi " + action.action + " " + usage);
    };
    for (const char* bad : {"0.0.0.0", "10.0.0", "bogus"}) refused({"ip", bad}, "ip " + action.ip);
    for (const char* bad : {"00:00:00:00:00:00", "zz"}) refused({"mac", bad}, "mac " + action.mac);
    refused({"ipmac", "0.0.0.0", kMac}, "ipmac " + action.both);
    refused({"ipmac", kIp, "zz"}, "ipmac " + action.both);
    refused({"ipmac", kIp}, "ipmac " + action.both);
    refused({"ip"}, "ip " + action.ip, false);
    refused({"mac"}, "mac " + action.mac, false);
    refused({"IP", kIp}, action.keys);
    refused({}, action.keys, false);
  }
  expect_usage({"login", "ip", kIp}, "  vek rzglapi login ip ipstr timeout user");
  expect_usage({"login", "mac", kMac}, "  vek rzglapi login mac macstr timeout user ");
  expect_usage({"login", "ipmac", kIp, kMac}, "  vek rzglapi login ipmac ipstr macstr timeout user ");
  const std::string actions = "login/logout/white/black/checkonline/getonline/auth/portal";
  expect_usage({}, "  vek rzglapi " + actions);
  expect_usage({"LOGIN", "ip", kIp, "60"}, "  vek rzglapi " + actions);
}

Bytes host() {
  return Bytes().text(0, kIp).text(48, kMac).u64(72, UINT64_MAX).u64(80, 2).u64(88, 3).u64(96, 1ULL << 63);
}

const std::string kHost =
    R"({"ip":"10.0.0.6","mac":"00:11:22:33:44:55","up":"18446744073709551615","down":"2","send":"3",)"
    R"("recv":"9223372036854775808"})";
const std::string kNoHost = R"({"ip":"","mac":"","up":"0","down":"0","send":"0","recv":"0"})";

TEST(Rzglapi, OneHost) {
  const auto shows = [](const std::vector<std::string>& words, const std::string& call) {
    const std::string function = call.substr(0, call.find(' '));
    const Outcome outcome = rzglapi(words, answer(function, 0, host()));
    EXPECT_EQ(outcome.calls, std::vector{call});
    expect_answer(outcome, kHost);
    expect_answer(rzglapi(words, answer(function, -1, host())), kFailed);
    expect_answer(rzglapi(words), kNoHost);
  };
  shows({"getonline", "ip", kIp}, "ApiGetOnlineInfoByIp 10.0.0.6");
  shows({"getonline", "mac", kMac}, "ApiGetOnlineInfoByMac 00:11:22:33:44:55");
  shows({"getonline", "ipmac", kIp, kMac}, "ApiGetOnlineInfoByIpAndMac 10.0.0.6 00:11:22:33:44:55");

  // Texts that fill their fields, and what would break the JSON.
  const Outcome odd = rzglapi({"getonline", "ip", kIp},
                              answer("ApiGetOnlineInfoByIp", 0,
                                     Bytes()
                                         .text(0, std::string(47, 'i') + "\"")
                                         .text(48, "a\\b\n\x01\x1f\x7f\xc3\xa4/" + std::string(14, 'm'))));
  expect_answer(odd, R"({"ip":")" + std::string(47, 'i') + R"(\"","mac":"a\\b\u000a\u0001\u001f)" +
                         "\x7f\xc3\xa4/" + std::string(14, 'm') +
                         R"(","up":"0","down":"0","send":"0","recv":"0"})");
  EXPECT_EQ(json::parse(odd.out)["mac"], "a\\b\n\x01\x1f\x7f\xc3\xa4/" + std::string(14, 'm'));
}

TEST(Rzglapi, AllHosts) {
  const auto all = [](const std::string& script) { return rzglapi({"getonline", "all", "x"}, script); };
  const Outcome none = all("");
  EXPECT_EQ(none.calls, (std::vector<std::string>{"ApiGetAllOnlineInfo 0", "ApiGetAllOnlineInfo 10"}));
  expect_answer(none, "[]");

  const std::string two = answer("ApiGetAllOnlineInfo", 1) + answer("ApiGetAllOnlineInfo", 2, host());
  const Outcome grown = all(two);
  EXPECT_EQ(grown.calls, (std::vector<std::string>{"ApiGetAllOnlineInfo 0", "ApiGetAllOnlineInfo 11"}));
  expect_answer(grown, "[" + kHost + "," + kNoHost + "]");

  // More than there is room for.
  const Outcome lying = all(answer("ApiGetAllOnlineInfo", 2) + answer("ApiGetAllOnlineInfo", 1000000));
  ASSERT_TRUE(json::accept(lying.out));
  EXPECT_EQ(json::parse(lying.out).size(), 12u);

  const Outcome failed = all(answer("ApiGetAllOnlineInfo", -1));
  EXPECT_EQ(failed.calls.size(), 1u);
  expect_answer(failed, kFailed);
  expect_answer(all(answer("ApiGetAllOnlineInfo", 3) + answer("ApiGetAllOnlineInfo", -1)), kFailed);
}

struct List {
  std::vector<std::string> words;
  std::string function;  // what follows ApiAdd and the like
  std::string value;
  std::string bad_value;  // empty: any is good
};

const List kLists[] = {
    {{"white", "mac"}, "WhiteMac", kMac, "zz"},   {{"white", "domain"}, "WhiteDomain", "example.org", ""},
    {{"white", "ip"}, "WhiteIp", kIp, "0.0.0.0"}, {{"white", "fip"}, "WhiteFip", kIp, "0.0.0.0"},
    {{"white", "port"}, "WhitePort", "443", "0"}, {{"black", "mac"}, "BlackMac", kMac, "zz"},
};

std::vector<std::string> words_of(const List& list, std::initializer_list<std::string> more) {
  std::vector<std::string> words = list.words;
  words.insert(words.end(), more);
  return words;
}

TEST(Rzglapi, ListsAreChanged) {
  for (const List& list : kLists) {
    expect_call(words_of(list, {"add", list.value, "x"}), "ApiAdd" + list.function + " " + list.value);
    expect_call(words_of(list, {"del", list.value}), "ApiDel" + list.function + " " + list.value);
    expect_call(words_of(list, {"delall", "x"}), "ApiDelall" + list.function);
  }
  expect_call({"white", "port", "add", "-1"}, "ApiAddWhitePort 4294967295");
  expect_call({"white", "mac", "del", "zz"}, "ApiDelWhiteMac zz");  // not checked
  expect_call({"white", "domain", "add", ""}, "ApiAddWhiteDomain ");
}

TEST(Rzglapi, ListUsageLines) {
  expect_usage({"white", "mac", "add", "zz"}, "vek rzglapi white mac add macstr");
  for (const std::string op : {"add", "del"}) {
    expect_usage({"white", "ip", op, "0.0.0.0"}, "vek rzglapi white ip " + op + " ipstr");
    expect_usage({"white", "fip", op, "x"}, "vek rzglapi white fip " + op + " ipstr");
    expect_usage({"white", "port", op, "0"}, "vek rzglapi white port " + op + " ipstr");
    expect_usage({"black", "mac", op, "zz"}, "vek rzglapi black mac " + op + " macstr");
    expect_usage({"white", "mac", op}, "vek rzglapi white mac add/del/get/delall macstr");
    expect_usage({"white", "domain", op}, "vek rzglapi white domain add/del/get/delall domain");
    expect_usage({"white", "ip", op}, "vek rzglapi white ip add/del/get/delall ipstr");
    expect_usage({"white", "fip", op}, "vek rzglapi white fip add/del/get/delall ipstr");
    expect_usage({"white", "port", op}, "vek rzglapi white port add/del/get/delall port");
    expect_usage({"black", "mac", op}, "vek rzglapi black mac add/del/get/delall");
  }
  expect_usage({"white", "mac", "foo"}, "vek rzglapi white mac add/del/get/delall");
  expect_usage({"white", "domain", "foo"}, "vek rzglapi white domain add/del/get/delall");
  expect_usage({"white", "ip", "foo"}, "vek rzglapi white domain add/del/get/delall");
  expect_usage({"white", "fip", ""}, "vek rzglapi white fip add/del/get/delall");
  expect_usage({"white", "port", "ADD", "1"}, "vek rzglapi white port add/del/get/delall");
  expect_usage({"black", "mac", "foo"}, "vek rzglapi black mac add/del/get/delall");
  for (const auto& words : {std::vector<std::string>{"white"}, {"white", "mac"}, {"white", "url", "get"}}) {
    expect_usage(words, "vek rzglapi white mac/domain/ip/fip/port add/del/get/delall");
  }
  for (const auto& words : {std::vector<std::string>{"black"}, {"black", "mac"}, {"black", "ip", "get"}}) {
    expect_usage(words, "vek rzglapi black mac add/del/get/delall");
  }
}

TEST(Rzglapi, ListsAreRead) {
  for (const List& list : kLists) {
    const std::string get = "ApiGet" + list.function;
    const std::string start = "{\"" + list.words[1] + "\":\"";
    const Outcome outcome = rzglapi(words_of(list, {"get"}), answer(get, 3, Bytes().text(0, "a,b")));
    EXPECT_EQ(outcome.calls, std::vector{get + " 4096"});
    expect_answer(outcome, start + "a,b\"}");
    expect_answer(rzglapi(words_of(list, {"get"}), answer(get, -1, Bytes().text(0, "a,b"))), kFailed);
  }
  const auto reads = [](size_t length, const std::vector<std::string>& calls) {
    const std::string text = std::string(length - 1, 'v') + ",";
    const Bytes cut = Bytes().text(0, text.substr(0, 4095));
    const Outcome outcome =
        rzglapi({"white", "ip", "get"}, answer("ApiGetWhiteIp", static_cast<long>(length), cut) +
                                            answer("ApiGetWhiteIp", 1, Bytes().text(0, text)));
    EXPECT_EQ(outcome.calls, calls);
    expect_answer(outcome, "{\"ip\":\"" + text + "\"}");
  };
  reads(4095, {"ApiGetWhiteIp 4096"});
  reads(4096, {"ApiGetWhiteIp 4096", "ApiGetWhiteIp 4112"});
  reads(5000, {"ApiGetWhiteIp 4096", "ApiGetWhiteIp 5016"});

  // A list without a NUL in the whole room, in both reads.
  const std::string full(6000, 'v');
  expect_answer(rzglapi({"white", "mac", "get"}, answer("ApiGetWhiteMac", 4095, Bytes().text(0, full))),
                "{\"mac\":\"" + full.substr(0, 4096) + "\"}");
  expect_answer(rzglapi({"white", "mac", "get"}, answer("ApiGetWhiteMac", 5000, Bytes().text(0, full))),
                "{\"mac\":\"" + full.substr(0, 5016) + "\"}");
  expect_answer(
      rzglapi({"black", "mac", "get"}, answer("ApiGetBlackMac", 5000) + answer("ApiGetBlackMac", -1)),
      kFailed);
}

TEST(Rzglapi, NoMemory) {
  if (getenv("VEK_TEST_RUNNER") != nullptr) GTEST_SKIP() << "the limit would bind the emulator";
  const auto starved = [](const std::vector<std::string>& words, const std::string& script) {
    const Outcome outcome = vek(words, {}, {.script = script, .shell = "ulimit -d 3000; exec \"$@\""});
    EXPECT_EQ(outcome.calls.size(), 1u);
    expect_answer(outcome, kFailed);
  };
  starved({"rzglapi", "white", "ip", "get"}, answer("ApiGetWhiteIp", 0x7FFFFFFF));
  starved({"rzglapi", "getonline", "all"}, answer("ApiGetAllOnlineInfo", 0x7FFFFFFF));
}

TEST(Rzglapi, Settings) {
  const Outcome get = rzglapi(
      {"auth", "get"},
      answer("ApiGetAuthenticateState", -1, Bytes().u32(0, 1).u32(4, 2).u32(8, 0xFFFFFFFF).u32(12, 4)));
  EXPECT_EQ(get.calls, std::vector<std::string>{"ApiGetAuthenticateState"});
  expect_answer(get, R"({"state":"1","savemac":"2","time":"-1","loginmax":"4"})");
  expect_answer(rzglapi({"auth", "get"}), R"({"state":"0","savemac":"0","time":"0","loginmax":"0"})");
  expect_call({"auth", "set", "1", "2", "-1", "4"}, "ApiSetAuthenticateState 1 2 4294967295 4");
  expect_call({"auth", "set", "1", "2", "3"}, "ApiSetAuthenticateState 1 2 3 0");
  expect_usage({"auth", "set", "1", "2"}, "  vek rzglapi set state savemac time loginmax");
  expect_usage({"auth", "put"}, "  vek rzglapi auth get/set");
  expect_usage({"auth"}, "  vek rzglapi auth get/set");

  const Outcome url =
      rzglapi({"portal", "get"}, answer("ApiGetPortal", 0, Bytes().text(0, "http://p/\"?a=1")));
  EXPECT_EQ(url.calls, std::vector<std::string>{"ApiGetPortal 1024"});
  expect_answer(url, R"({"url":"http://p/\"?a=1"})");
  expect_answer(rzglapi({"portal", "get"}, answer("ApiGetPortal", -1)), kFailed);
  expect_answer(
      rzglapi({"portal", "get"}, answer("ApiGetPortal", 0, Bytes().text(0, std::string(2000, 'u')))),
      "{\"url\":\"" + std::string(1024, 'u') + "\"}");
  expect_call({"portal", "set", "http://p/"}, "ApiSetPortal http://p/");
  expect_usage({"portal", "set"}, "  vek rzglapi portal url");
  expect_usage({"portal", "put"}, "  vek rzglapi portal get/set");
  expect_usage({"portal"}, "  vek rzglapi portal get/set");
}

}  // namespace
