// rzglapi: which platform function it calls with what, and what it answers.
#include <nlohmann/json.hpp>

#include "tool/driver.h"

namespace {

using nlohmann::json;

const std::string kDone = R"({"ret":"0"})";
const std::string kFailed = R"({"ret":"-1"})";

Outcome rzglapi(const std::string& words, const std::string& script = "", const std::string& shell = "") {
  return vek("rzglapi " + words, {.script = script, .shell = shell});
}

// The status is the same whatever happens, and every answer is JSON.
void expect_answer(const Outcome& outcome, const std::string& out, const std::string& err = "") {
  EXPECT_TRUE(json::accept(out)) << out;
  expect_unsent(outcome, 1, out, err);
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
  const std::string mac = "00:11:22:33:44:55";
  expect_call("login ip 10.0.0.6 60 bob", "ApiLoginByIpName bob 10.0.0.6 60");
  expect_call("login ip 10.0.0.6 -1", "ApiLoginByIpName (null) 10.0.0.6 4294967295");
  expect_call("login mac " + mac + " 60 bob x", "ApiLoginByMacName bob " + mac + " 60");
  expect_call("login mac " + mac + " 60", "ApiLoginByMacName (null) " + mac + " 60");
  expect_call("login ipmac 10.0.0.6 " + mac + " 60 bob",
              "ApiLoginByIpAndMacName bob 10.0.0.6 " + mac + " 60");
  expect_call("login ipmac 10.0.0.6 " + mac + " 60", "ApiLoginByIpAndMacName (null) 10.0.0.6 " + mac + " 60");
  expect_call("logout ip 10.0.0.6", "ApiLogoutByIp 10.0.0.6");
  expect_call("logout mac " + mac, "ApiLogoutByMac " + mac);
  expect_call("logout ipmac 10.0.0.6 " + mac, "ApiLogoutByIp 10.0.0.6");
  expect_call("checkonline ip 10.0.0.6", "ApiIsIpOnline 10.0.0.6");
  expect_call("checkonline mac " + mac, "ApiIsMacOnline " + mac);
  expect_call("checkonline ipmac 10.0.0.6 " + mac, "ApiIsIpMacOnline 10.0.0.6 " + mac);
  expect_call("white port add -1", "ApiAddWhitePort 4294967295");
  expect_call("white mac del zz", "ApiDelWhiteMac zz");  // not checked
  expect_call("auth set 1 2 -1 4", "ApiSetAuthenticateState 1 2 4294967295 4");
  expect_call("auth set 1 2 3", "ApiSetAuthenticateState 1 2 3 0");
  expect_call("portal set http://p/", "ApiSetPortal http://p/");
}

void complains(const std::string& usage, std::initializer_list<std::string> all_words) {
  for (const std::string& words : all_words) {
    SCOPED_TRACE(words);
    const Outcome outcome = rzglapi(words);
    EXPECT_TRUE(outcome.calls.empty());
    expect_answer(outcome, kFailed, usage + "\n");
  }
}

TEST(Rzglapi, UsageLines) {
  const std::string vek = "  vek rzglapi ";
  complains(vek + "login/logout/white/black/checkonline/getonline/auth/portal", {"", "LOGIN ip 10.0.0.6 60"});
  complains(vek + "login ip ipstr timeout user", {"login ip 10.0.0.6", "login ip 0.0.0.0 60 bob"});
  complains(vek + "login mac macstr timeout user ", {"login mac 00:11:22:33:44:55"});
  complains(vek + "login ipmac ipstr macstr timeout user ",
            {"login ipmac 10.0.0.6 00:11:22:33:44:55", "login ipmac 10.0.0.6 zz 60"});
  for (const std::string action : {"login", "logout", "checkonline"}) {
    complains(vek + action + " ip/mac/ipmac  ", {action + " IP 10.0.0.6 60"});
  }
  complains(vek + "getonline ip/mac/ipmac/all  ", {"getonline"});
  for (const std::string action : {"logout", "checkonline", "getonline"}) {
    complains(vek + action + " ip ipstr", {action + " ip", action + " ip 0.0.0.0"});
    complains(vek + action + " mac macstr",
              {action + " mac", action + " mac 00:00:00:00:00:00", action + " mac zz"});
    complains(vek + action + " ipmac ipstr macstr",
              {action + " ipmac 10.0.0.6", action + " ipmac 10.0.0.6 zz",
               action + " ipmac 0.0.0.0 00:11:22:33:44:55"});
  }
  complains(vek + "set state savemac time loginmax", {"auth set 1 2"});
  complains(vek + "auth get/set", {"auth put"});
  complains(vek + "portal url", {"portal set"});
  complains(vek + "portal get/set", {"portal put"});

  const std::string white = "vek rzglapi white ";
  complains(white + "mac/domain/ip/fip/port add/del/get/delall", {"white mac", "white url get"});
  for (const auto& [list, value] : pairs("mac macstr domain domain ip ipstr fip ipstr port port")) {
    complains(white + list + " add/del/get/delall " + value,
              {"white " + list + " add", "white " + list + " del"});
    complains(white + (list == "ip" ? "domain" : list) + " add/del/get/delall", {"white " + list + " ADD 1"});
  }
  complains(white + "mac add macstr", {"white mac add zz"});
  for (const std::string op : {" add", " del"}) {
    for (const std::string list : {"ip", "fip", "port"}) {
      complains(white + list + op + " ipstr", {"white " + list + op + " 0"});
    }
    complains("vek rzglapi black mac" + op + " macstr", {"black mac" + op + " zz"});
  }
  complains("vek rzglapi black mac add/del/get/delall",
            {"black", "black ip get", "black mac foo", "black mac add"});
}

const std::string kHost = "0:text 10.0.0.6 48:text 00:11:22:33:44:55 72:u64 -1 2 3 0x8000000000000000";
const std::string kHostOut =
    R"({"ip":"10.0.0.6","mac":"00:11:22:33:44:55","up":"18446744073709551615","down":"2","send":"3",)"
    R"("recv":"9223372036854775808"})";
const std::string kNoTraffic = R"(","up":"0","down":"0","send":"0","recv":"0"})";

TEST(Rzglapi, OneHost) {
  for (const auto& [words, call] :
       {std::pair<std::string, std::string>("ip 10.0.0.6", "ApiGetOnlineInfoByIp 10.0.0.6"),
        {"mac 00:11:22:33:44:55", "ApiGetOnlineInfoByMac 00:11:22:33:44:55"},
        {"ipmac 10.0.0.6 00:11:22:33:44:55", "ApiGetOnlineInfoByIpAndMac 10.0.0.6 00:11:22:33:44:55"}}) {
    const std::string function = call.substr(0, call.find(' '));
    const Outcome outcome = rzglapi("getonline " + words, answer(function, 0, kHost));
    EXPECT_EQ(outcome.calls, std::vector{call});
    expect_answer(outcome, kHostOut);
    expect_answer(rzglapi("getonline " + words, answer(function, -1, kHost)), kFailed);
  }
  // Texts that fill their fields, and what would break the JSON.
  const Outcome odd =
      rzglapi("getonline ip 10.0.0.6",
              answer("ApiGetOnlineInfoByIp", 0, "0:text {i}*48 48:hex 615c220a011f7fc3a42f{6d}*14"));
  expect_answer(odd, R"({"ip":")" + std::string(48, 'i') + R"(","mac":"a\\\"\u000a\u0001\u001f)" +
                         "\x7f\xc3\xa4/" + std::string(14, 'm') + kNoTraffic);
}

TEST(Rzglapi, AllHosts) {
  const std::string function = "ApiGetAllOnlineInfo";
  const auto all = [](const std::string& script) { return rzglapi("getonline all x", script); };
  expect_answer(all(""), "[]");
  const Outcome grown = all(answer(function, 1) + answer(function, 2, kHost));
  EXPECT_EQ(grown.calls, (std::vector{function + " 0", function + " 11"}));
  expect_answer(grown, "[" + kHostOut + R"(,{"ip":"","mac":")" + kNoTraffic + "]");
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
    const Outcome get = rzglapi(words + " get", answer("ApiGet" + function, 3, "0:text a,b"));
    EXPECT_EQ(get.calls, std::vector{"ApiGet" + function + " 4096"});
    expect_answer(get, "{\"" + key + "\":\"a,b\"}");
    expect_answer(rzglapi(words + " get", answer("ApiGet" + function, -1)), kFailed);
  }
}

// What the first and the second reading return and fill in, and what is shown of it.
TEST(Rzglapi, LongLists) {
  const auto reads = [](long length, const std::string& first, const std::string& second,
                        const std::string& shown, const std::string& room) {
    const Outcome outcome = rzglapi("white ip get", answer("ApiGetWhiteIp", length, "0:text " + first) +
                                                        answer("ApiGetWhiteIp", 0, "0:text " + second));
    std::vector<std::string> calls = {"ApiGetWhiteIp 4096"};
    if (!room.empty()) calls.push_back("ApiGetWhiteIp " + room);
    EXPECT_EQ(outcome.calls, calls);
    expect_answer(outcome, R"({"ip":")" + unfolded(shown) + R"("})");
  };
  reads(4095, "{a}*4095", "b", "{a}*4095", "");
  reads(4096, "{a}*4095", "{b}*4096", "{b}*4096", "4112");
  reads(4095, "{a}*6000", "b", "{a}*4096", "");  // no NUL in the whole room
  reads(5000, "{a}*6000", "{b}*6000", "{b}*5016", "5016");
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
  const Outcome get = rzglapi("auth get", answer("ApiGetAuthenticateState", -1, "0:u32 1 2 -1 4"));
  EXPECT_EQ(get.calls, std::vector<std::string>{"ApiGetAuthenticateState"});
  expect_answer(get, R"({"state":"1","savemac":"2","time":"-1","loginmax":"4"})");
  const Outcome url = rzglapi("portal get", answer("ApiGetPortal", 0, "0:text http://p/\"{u}*2000"));
  EXPECT_EQ(url.calls, std::vector<std::string>{"ApiGetPortal 1024"});
  expect_answer(url, unfolded(R"(url":"http://p/\"{u}*1014"})").insert(0, "{\""));
  expect_answer(rzglapi("portal get", answer("ApiGetPortal", -1)), kFailed);
}

}  // namespace
