// rzglapi: which platform function it calls with what, and what it answers.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tool/driver.h"

namespace {

using nlohmann::json;

const std::string kDone = R"({"ret":"0"})";
const std::string kFailed = R"({"ret":"-1"})";

// The words are separated by blanks.
Outcome rzglapi(const std::string& words, const std::string& script = "", const std::string& shell = "") {
  return vek(split("rzglapi " + words), {}, {.script = script, .shell = shell});
}

// The status is the same whatever happens, and every answer is JSON.
void expect_answer(const Outcome& outcome, const std::string& out, const std::string& err = "") {
  EXPECT_TRUE(json::accept(out)) << out;
  EXPECT_TRUE(outcome.orders.empty());
  expect_end(outcome, 1, out, err);
}

// One call; what it returns decides between the two answers.
void expect_call(const std::string& words, const std::string& call) {
  SCOPED_TRACE(words);
  const std::string function = call.substr(0, call.find(' '));
  const Outcome done = rzglapi(words, answer(function, 7));
  EXPECT_EQ(done.calls, std::vector{call});
  expect_answer(done, kDone);
  expect_answer(rzglapi(words, answer(function, -7)), kFailed);
}

TEST(Rzglapi, Calls) {
  expect_call("login ip 10.0.0.6 60 bob", "ApiLoginByIpName bob 10.0.0.6 60");
  expect_call("login ip 10.0.0.6 -1", "ApiLoginByIpName (null) 10.0.0.6 4294967295");
  expect_call("login mac 00:11:22:33:44:55 60 bob x", "ApiLoginByMacName bob 00:11:22:33:44:55 60");
  expect_call("login mac 00:11:22:33:44:55 60", "ApiLoginByMacName (null) 00:11:22:33:44:55 60");
  expect_call("login ipmac 10.0.0.6 00:11:22:33:44:55 60 bob",
              "ApiLoginByIpAndMacName bob 10.0.0.6 00:11:22:33:44:55 60");
  expect_call("login ipmac 10.0.0.6 00:11:22:33:44:55 60",
              "ApiLoginByIpAndMacName (null) 10.0.0.6 00:11:22:33:44:55 60");
  expect_call("logout ip 10.0.0.6", "ApiLogoutByIp 10.0.0.6");
  expect_call("logout mac 00:11:22:33:44:55", "ApiLogoutByMac 00:11:22:33:44:55");
  expect_call("logout ipmac 10.0.0.6 00:11:22:33:44:55", "ApiLogoutByIp 10.0.0.6");
  expect_call("checkonline ip 10.0.0.6", "ApiIsIpOnline 10.0.0.6");
  expect_call("checkonline mac 00:11:22:33:44:55", "ApiIsMacOnline 00:11:22:33:44:55");
  expect_call("checkonline ipmac 10.0.0.6 00:11:22:33:44:55", "ApiIsIpMacOnline 10.0.0.6 00:11:22:33:44:55");
  expect_call("white port add -1", "ApiAddWhitePort 4294967295");
  expect_call("white mac del zz", "ApiDelWhiteMac zz");  // not checked
  expect_call("auth set 1 2 -1 4", "ApiSetAuthenticateState 1 2 4294967295 4");
  expect_call("auth set 1 2 3", "ApiSetAuthenticateState 1 2 3 0");
  expect_call("portal set http://p/", "ApiSetPortal http://p/");
}

TEST(Rzglapi, UsageLines) {
  const std::string actions = "  vek rzglapi login/logout/white/black/checkonline/getonline/auth/portal";
  const std::string white = "vek rzglapi white ";
  std::vector<std::pair<std::string, std::string>> cases = {
      {"", actions},
      {"LOGIN ip 10.0.0.6 60", actions},
      {"login ip 10.0.0.6", "  vek rzglapi login ip ipstr timeout user"},
      {"login ip 0.0.0.0 60 bob", "  vek rzglapi login ip ipstr timeout user"},
      {"login mac 00:11:22:33:44:55", "  vek rzglapi login mac macstr timeout user "},
      {"login mac zz 60", "  vek rzglapi login mac macstr timeout user "},
      {"login ipmac 10.0.0.6 00:11:22:33:44:55", "  vek rzglapi login ipmac ipstr macstr timeout user "},
      {"login ipmac 10.0.0.6 zz 60", "  vek rzglapi login ipmac ipstr macstr timeout user "},
      {"getonline", "  vek rzglapi getonline ip/mac/ipmac/all  "},
      {"getonline ALL", "  vek rzglapi getonline ip/mac/ipmac/all  "},
      {"white", white + "mac/domain/ip/fip/port add/del/get/delall"},
      {"white mac", white + "mac/domain/ip/fip/port add/del/get/delall"},
      {"white url get", white + "mac/domain/ip/fip/port add/del/get/delall"},
      {"white mac add zz", white + "mac add macstr"},
      {"white mac add", white + "mac add/del/get/delall macstr"},
      {"white domain del", white + "domain add/del/get/delall domain"},
      {"white ip add", white + "ip add/del/get/delall ipstr"},
      {"white fip del", white + "fip add/del/get/delall ipstr"},
      {"white port add", white + "port add/del/get/delall port"},
      {"white mac foo", white + "mac add/del/get/delall"},
      {"white domain foo", white + "domain add/del/get/delall"},
      {"white ip foo", white + "domain add/del/get/delall"},
      {"white fip foo", white + "fip add/del/get/delall"},
      {"white port ADD 1", white + "port add/del/get/delall"},
      {"auth set 1 2", "  vek rzglapi set state savemac time loginmax"},
      {"auth", "  vek rzglapi auth get/set"},
      {"auth put", "  vek rzglapi auth get/set"},
      {"portal set", "  vek rzglapi portal url"},
      {"portal", "  vek rzglapi portal get/set"},
      {"portal put", "  vek rzglapi portal get/set"},
  };
  for (const std::string action : {"logout", "checkonline", "getonline"}) {
    for (const char* ip : {"", "0.0.0.0", "10.0.0"}) {
      cases.emplace_back(action + " ip " + ip, "  vek rzglapi " + action + " ip ipstr");
    }
    for (const char* mac : {"", "00:00:00:00:00:00", "zz"}) {
      cases.emplace_back(action + " mac " + mac, "  vek rzglapi " + action + " mac macstr");
    }
    for (const char* both : {"10.0.0.6", "10.0.0.6 zz", "0.0.0.0 00:11:22:33:44:55"}) {
      cases.emplace_back(action + " ipmac " + both, "  vek rzglapi " + action + " ipmac ipstr macstr");
    }
  }
  for (const std::string action : {"login", "logout", "checkonline"}) {
    cases.emplace_back(action, "  vek rzglapi " + action + " ip/mac/ipmac  ");
    cases.emplace_back(action + " IP 10.0.0.6 60", "  vek rzglapi " + action + " ip/mac/ipmac  ");
  }
  for (const std::string op : {"add", "del"}) {
    cases.emplace_back("white ip " + op + " 0.0.0.0", white + "ip " + op + " ipstr");
    cases.emplace_back("white fip " + op + " x", white + "fip " + op + " ipstr");
    cases.emplace_back("white port " + op + " 0", white + "port " + op + " ipstr");
    cases.emplace_back("black mac " + op + " zz", "vek rzglapi black mac " + op + " macstr");
  }
  for (const char* words : {"", " mac", " ip get", " mac foo", " mac add", " mac del"}) {
    cases.emplace_back(std::string("black") + words, "vek rzglapi black mac add/del/get/delall");
  }
  for (const auto& [words, usage] : cases) {
    SCOPED_TRACE(words);
    const Outcome outcome = rzglapi(words);
    EXPECT_TRUE(outcome.calls.empty());
    expect_answer(outcome, kFailed, usage + "\n");
  }
}

Bytes host() {
  return Bytes()
      .text(0, "10.0.0.6")
      .text(48, "00:11:22:33:44:55")
      .hex(72, "ffffffffffffffff 0200000000000000 0300000000000000 0000000000000080");
}

const std::string kHost =
    R"({"ip":"10.0.0.6","mac":"00:11:22:33:44:55","up":"18446744073709551615","down":"2","send":"3",)"
    R"("recv":"9223372036854775808"})";
const std::string kNoTraffic = R"(","up":"0","down":"0","send":"0","recv":"0"})";

TEST(Rzglapi, OneHost) {
  const auto shows = [](const std::string& words, const std::string& call) {
    const std::string function = call.substr(0, call.find(' '));
    const Outcome outcome = rzglapi(words, answer(function, 0, host()));
    EXPECT_EQ(outcome.calls, std::vector{call});
    expect_answer(outcome, kHost);
    expect_answer(rzglapi(words, answer(function, -1, host())), kFailed);
    expect_answer(rzglapi(words), R"({"ip":"","mac":")" + kNoTraffic);
  };
  shows("getonline ip 10.0.0.6", "ApiGetOnlineInfoByIp 10.0.0.6");
  shows("getonline mac 00:11:22:33:44:55", "ApiGetOnlineInfoByMac 00:11:22:33:44:55");
  shows("getonline ipmac 10.0.0.6 00:11:22:33:44:55",
        "ApiGetOnlineInfoByIpAndMac 10.0.0.6 00:11:22:33:44:55");

  // Texts that fill their fields, and what would break the JSON.
  const std::string ip(48, 'i');
  const std::string mac = "a\\\"\n\x01\x1f\x7f\xc3\xa4/" + std::string(14, 'm');
  const Bytes odd_host = Bytes().text(0, ip).text(48, mac);
  const Outcome odd = rzglapi("getonline ip 10.0.0.6", answer("ApiGetOnlineInfoByIp", 0, odd_host));
  expect_answer(odd, R"({"ip":")" + ip + R"(","mac":"a\\\"\u000a\u0001\u001f)" + mac.substr(6) + kNoTraffic);
  EXPECT_EQ(json::parse(odd.out)["mac"], mac);
}

TEST(Rzglapi, AllHosts) {
  const std::string function = "ApiGetAllOnlineInfo";
  const auto all = [](const std::string& script) { return rzglapi("getonline all x", script); };
  expect_answer(all(""), "[]");
  const Outcome grown = all(answer(function, 1) + answer(function, 2, host()));
  EXPECT_EQ(grown.calls, (std::vector{function + " 0", function + " 11"}));
  expect_answer(grown, "[" + kHost + R"(,{"ip":"","mac":")" + kNoTraffic + "]");
  // A count beyond the room that was given.
  EXPECT_EQ(json::parse(all(answer(function, 2) + answer(function, 1000000)).out).size(), 12u);
  const Outcome failed = all(answer(function, -1));
  EXPECT_EQ(failed.calls.size(), 1u);
  expect_answer(failed, kFailed);
  expect_answer(all(answer(function, 3) + answer(function, -1)), kFailed);
}

TEST(Rzglapi, Lists) {
  const struct {
    std::string words, function, key, value;
  } kLists[] = {
      {"white mac", "WhiteMac", "mac", "00:11:22:33:44:55"},
      {"white domain", "WhiteDomain", "domain", "a.b"},
      {"white ip", "WhiteIp", "ip", "10.0.0.6"},
      {"white fip", "WhiteFip", "fip", "10.0.0.6"},
      {"white port", "WhitePort", "port", "443"},
      {"black mac", "BlackMac", "mac", "00:11:22:33:44:55"},
  };
  for (const auto& [words, function, key, value] : kLists) {
    expect_call(words + " add " + value, "ApiAdd" + function + " " + value);
    expect_call(words + " del " + value, "ApiDel" + function + " " + value);
    expect_call(words + " delall x", "ApiDelall" + function);
    const Outcome get = rzglapi(words + " get", answer("ApiGet" + function, 3, Bytes().text(0, "a,b")));
    EXPECT_EQ(get.calls, std::vector{"ApiGet" + function + " 4096"});
    expect_answer(get, "{\"" + key + "\":\"a,b\"}");
    expect_answer(rzglapi(words + " get", answer("ApiGet" + function, -1)), kFailed);
  }
}

// What the first and the second reading return and fill in, and what is shown of it.
TEST(Rzglapi, LongLists) {
  const auto reads = [](long length, size_t first, size_t second, size_t shown, const char* room) {
    const Outcome outcome =
        rzglapi("white ip get", answer("ApiGetWhiteIp", length, Bytes().text(0, std::string(first, 'a'))) +
                                    answer("ApiGetWhiteIp", 0, Bytes().text(0, std::string(second, 'b'))));
    std::vector<std::string> calls = {"ApiGetWhiteIp 4096"};
    if (*room != '\0') calls.push_back(std::string("ApiGetWhiteIp ") + room);
    EXPECT_EQ(outcome.calls, calls);
    expect_answer(outcome, R"({"ip":")" + std::string(shown, *room == '\0' ? 'a' : 'b') + R"("})");
  };
  reads(4095, 4095, 0, 4095, "");
  reads(4096, 4095, 4096, 4096, "4112");
  reads(5000, 4095, 5000, 5000, "5016");
  reads(4095, 6000, 0, 4096, "");  // no NUL in the whole room
  reads(5000, 6000, 6000, 5016, "5016");
  expect_answer(rzglapi("black mac get", answer("ApiGetBlackMac", 5000) + answer("ApiGetBlackMac", -1)),
                kFailed);
}

TEST(Rzglapi, NoMemory) {
  if (getenv("VEK_TEST_RUNNER") != nullptr) GTEST_SKIP() << "the limit would bind the emulator";
  for (const auto& [words, function] :
       {std::pair("white ip get", "ApiGetWhiteIp"), std::pair("getonline all", "ApiGetAllOnlineInfo")}) {
    const Outcome outcome = rzglapi(words, answer(function, 0x7FFFFFFF), "ulimit -d 3000; exec \"$@\"");
    EXPECT_EQ(outcome.calls.size(), 1u);
    expect_answer(outcome, kFailed);
  }
}

TEST(Rzglapi, Settings) {
  const Bytes state = Bytes().hex(0, "01000000 02000000 ffffffff 04000000");
  const Outcome get = rzglapi("auth get", answer("ApiGetAuthenticateState", -1, state));
  EXPECT_EQ(get.calls, std::vector<std::string>{"ApiGetAuthenticateState"});
  expect_answer(get, R"({"state":"1","savemac":"2","time":"-1","loginmax":"4"})");

  const Outcome url = rzglapi("portal get", answer("ApiGetPortal", 0, Bytes().text(0, "http://p/\"?a=1")));
  EXPECT_EQ(url.calls, std::vector<std::string>{"ApiGetPortal 1024"});
  expect_answer(url, R"({"url":"http://p/\"?a=1"})");
  const std::string full(2000, 'u');
  expect_answer(rzglapi("portal get", answer("ApiGetPortal", 0, Bytes().text(0, full))),
                R"({"url":")" + full.substr(0, 1024) + R"("})");
  expect_answer(rzglapi("portal get", answer("ApiGetPortal", -1)), kFailed);
}

}  // namespace
