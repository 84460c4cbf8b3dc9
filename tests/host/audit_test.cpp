// The behaviour audit: settings, quotas, who is audited, and the listener of the lab.
#include <cstring>

#include "host.h"
#include "platform/order.h"

namespace {

class Audit : public HostTest {
 protected:
  // Puts look-ups of these hosts in place, the first the oldest; a name is the host's address.
  void look_up(std::initializer_list<std::string> hosts) const {
    std::string list;
    size_t age = 100;
    for (const std::string& host : hosts) {
      list += std::string(list.empty() ? "" : ",") + R"({"mac": "02:00:00:00:00:02", "age": )" +
              std::to_string(age--) + R"(, "nat_ip": ")" + host + R"(", "dns_name": ")" + host + "\"}";
    }
    load(R"({"audit": {"dns": [)" + list + "]}}");
  }

  // Whose look-ups are fetched.
  static std::string seen() {
    std::string names;
    const std::string stream = vek("sj info_get").out;
    for (size_t at = 0; (at = stream.find("dns_name=", at)) != stream.npos;) {
      at += strlen("dns_name=");
      names += stream.substr(at, stream.find(' ', at) - at) + " ";
    }
    return names;
  }
};

TEST_F(Audit, SettingsAndTheOneQuotaOfPosts) {
  ok({"sj set 1 1 2 3 4 5 6 7", "sj post_set 1 8 9"});
  shows("sj get", "en: 1 info_en: 1 ct_num: 2 url_num: 3 qq_num: 4 bbs_num: 5 mail_num :6 dns_num :7\n");
  shows("sj2 get",
        "en: 1 ct_num: 100 zhanghao_num: 100 mail_num: 100 httpget_num: 100 post_num: 8 post_len :9\n");
  ok({"sj2 set 1 1 2 3 4 5 6", "sj set 0"});
  shows("sj post_get", "en: 1 post_maxnum: 5 post_maxlen: 6\n");
  shows("sj get", "en: 0 info_en: 0 ct_num: 0 url_num: 0 qq_num: 0 bbs_num: 0 mail_num :0 dns_num :0\n");
  refused("switch is neither 0 nor 1", {"sj set 1 2 1 1 1 1 1 1", "sj ip_def set 2"});
}

TEST_F(Audit, TheNewestAreKept) {
  const std::string all = "10.0.0.3 10.0.0.1 10.0.0.2 ";
  const auto day = [this] { look_up({"10.0.0.3", "10.0.0.1", "10.0.0.2"}); };
  day();
  EXPECT_EQ(seen(), all);
  EXPECT_EQ(seen(), all);  // fetching keeps them
  ok({"sj set 1 1 0 0 0 0 0 2"});
  EXPECT_EQ(seen(), "10.0.0.1 10.0.0.2 ");
  ok({"sj set 1 1 0 0 0 0 0 9"});
  EXPECT_EQ(seen(), "10.0.0.1 10.0.0.2 ");
  day();
  EXPECT_EQ(seen(), all);
  ok({"sj pool_show"});
  begins("errinfo 69",
         "audit pool: url 0/0, qq 0/0, bbs 0/0, mail 0/0, ct 0/0, other 0/0, dns 3/9, 624 bytes");
  for (const char* off : {"sj set 1 0 9 9 9 9 9 9", "sj set 0"}) {
    ok({off, "sj set 1 1 9 9 9 9 9 9"});
    shows("sj info_get", "sj info tol num=0 datalen=8\n\n\n");
    day();
  }
  EXPECT_EQ(vek("fls 69").status, 0);
  EXPECT_EQ(seen(), "");

  // What one fetch cannot hold goes, too.
  std::string posts;
  for (int i = 0; i < 20; ++i) {
    posts += std::string(i == 0 ? "" : ",") + R"({"ip": "10.0.0.2", "mac": "02:00:00:00:00:02", "age": )" +
             std::to_string(i) + R"(, "data": ")" + std::string(102399, static_cast<char>('a' + i)) + "\"}";
  }
  ok({"sj post_set 1 100 200000"});
  load(R"({"audit": {"post": [)" + posts + "]}}");
  const std::string held = vek("sj post_info_get").out;
  EXPECT_TRUE(held.starts_with("sj post tol num=9 datalen=922391\n"));
  EXPECT_TRUE(held.ends_with("post_data=" + std::string(102399, 'a') + "\n"));
  ok({"sj post_set 1 2 3"});
  const std::string cut = vek("sj post_info_get").out;
  EXPECT_EQ(std::ranges::count(cut, '\n'), 3);
  EXPECT_TRUE(cut.ends_with("post_data=aaa\n"));
  ok({"sj2 set 0"});
  begins("sj post_info_get", "sj post tol num=0 datalen=8\n");
}

TEST_F(Audit, OnlyListedHostsWhereNothingElseIsSaid) {
  const auto day = [this] { look_up({"10.0.0.1", "10.0.0.5", "10.0.1.1", "fd00::1", "fd00::9"}); };
  ok({"sj ip_set 10.0.0.2-10.0.0.9,10.0.1.1,fd00::/125>1"});
  shows("sj ip_get", " ip_duan:10.0.0.2-10.0.0.9,10.0.1.1,fd00::-fd00::7,\n");
  day();
  EXPECT_EQ(seen(), "10.0.0.1 10.0.0.5 10.0.1.1 fd00::1 fd00::9 ");
  shows("sj ip_def set 0", "act = 0\n");
  shows("sj ip_def get", "act = 0\n");
  day();
  EXPECT_EQ(seen(), "10.0.0.5 10.0.1.1 fd00::1 ");
  // Groups are those of the accounts that hosts are logged in with.
  ok({"sj ip_set 2,5-7", "user add alice secret 6 next next web 0 x 1 1 gx 1",
      "user add bob secret 8 next next web 0 x 1 1 gx 1"});
  shows("sj ip_get", " ip_group:2,5-7,\n");
  EXPECT_EQ(vek("rzglapi login ip 10.0.0.1 600 alice").status, 1);
  EXPECT_EQ(vek("rzglapi login ip 10.0.0.5 600 bob").status, 1);
  day();
  EXPECT_EQ(seen(), "10.0.0.1 ");
  ok({"sj ip_set ''"});
  shows("sj ip_get", " ip_group:\n");
  day();
  EXPECT_EQ(seen(), "");
}

// What no command line can ask for: lists whose sizes do not agree.
TEST_F(Audit, RefusesListsThatAreWrongInThemselves) {
  const struct {
    std::vector<std::pair<size_t, uint16_t>> numbers;  // in the payload
    std::string result;
  } cases[] = {
      {{{0, 1}, {4, 1}}, "record does not hold what it says"},
      {{{0, 1}, {4, 1}, {8, 9}}, "record does not hold what it says"},
      {{{0, 1}, {4, 10}, {8, 80}}, "record does not hold what it says"},
      {{{10, 2}}, "table full"},
      {{{4, 1}, {8, 4}, {12, 1}}, "range ends before it starts"},
      {{{0, 1}, {4, 1}, {8, 8}, {12, 1}}, "range ends before it starts"},
      {{{0, 1}, {4, 1}, {8, 8}}, ""},
  };
  for (const auto& c : cases) {
    uint16_t record[40] = {69, 0, sizeof record, 0, 0, 0, 16};
    for (const auto& [offset, number] : c.numbers) record[(16 + offset) / 2] = number;
    EXPECT_EQ(tesvel_order_opt_fun(record, sizeof record), 0);
    EXPECT_EQ(record[4] == 0 ? "" : tvlret_err_str[record[4]], c.result) << &c - cases;
  }
}

TEST_F(Audit, ScenariosAreReadByTheirRecords) {
  const auto refusal = [this](const std::string& audit) {
    std::ofstream(state.file("bad")) << R"({"audit": )" << audit << "}";
    const RunResult result = run({VEK_LAB, "load", state.file("bad")});
    EXPECT_EQ(result.status, 1);
    return result.err.substr(result.err.find("/audit"));
  };
  const std::string host = R"("mac": "02:00:00:00:00:02", "ip": "10.0.0.2")";
  EXPECT_EQ(refusal(R"({"urls": []})"), "/audit/urls: unknown list\n");
  EXPECT_EQ(refusal(R"({"qq": [{"mac": "02:00:00:00:00:02"}]})"), "/audit/qq/0: no \"ip\"\n");
  EXPECT_EQ(refusal(R"({"url": [{)" + host + R"(, "tm": 7}]})"), "/audit/url/0/tm: unknown member\n");
  EXPECT_EQ(refusal(R"({"url": [{)" + host + R"(, "url_length": 7}]})"),
            "/audit/url/0/url_length: unknown member\n");
  EXPECT_EQ(refusal(R"({"qq": [{)" + host + R"(, "qq": ")" + std::string(256, 'q') + "\"}]}"),
            "/audit/qq/0/qq: more than 255 characters\n");
  EXPECT_EQ(refusal(R"({"bbs": [{)" + host + R"(, "content": "a\nb"}]})"),
            "/audit/bbs/0/content: a control character in the text\n");
}

TEST_F(Audit, NoticesArePrinted) {
  if (in_own_network("echo").empty()) GTEST_SKIP() << "this machine allows no network of one's own";
  EXPECT_EQ(
      in_own_network("ip link set lo up; cd " + state.path() +
                     "; vek-lab audit-listen >out & "
                     "for i in $(seq 99); do grep -q :1727 /proc/net/udp && break; sleep 0.1; done;"
                     "vek-lab audit-listen 2>&1 || echo status $?; vek sj debug 2 02:00:00:00:00:ff 10.0.0.1;"
                     "kill $!; wait $!; echo status $?; sed s/=136[0-9]*/=136/ out"),
      "vek-lab: port 5927: Address already in use\nstatus 1\nok\nstatus 0\n"
      "mac=02:00:00:00:00:ff ip=10.0.0.1 account=136 state=1 type=4\n"
      "mac=02:00:00:00:01:00 ip=11.0.0.1 account=136 state=1 type=4\n");
}

}  // namespace
