// sj, sj2: what they send and what they print.
#include <arpa/inet.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>

#include "tool/driver.h"

namespace {

TEST(Audit, Settings) {
  const std::string usage = "en[0/1] info_en[0/1] ct_num url_num qq_num bbs_num mail_num dns_num";
  sends("sj set on 258 2 3 4 5 6 0x10007", {69, 1}, "0:u8 1 2 2:u16 2 3 4 5 6 7");
  sends("sj set 0 1 2 3 4 5 6 7", {69, 1}, "");
  rejects(usage, {"sj set", "sj set 1 1 10 10 10 10 10", "sj set 00 1 10 10 10 10 10"});
  shows("sj get", {69, 2}, "", "0:u8 1 2 2:u16 1 2 3 4 5 65535 14:hex eeee",
        "en: 1 info_en: 2 ct_num: 1 url_num: 2 qq_num: 3 bbs_num: 4 mail_num :5 dns_num :65535\n");

  sends("sj post_set 1 10 -1", {69, 5}, "0:u8 1 2:u16 10 4:u32 -1");
  sends("sj post_set 0", {69, 5}, "");
  rejects("en[0/1] post_maxnum post_maxlen", {"sj post_set", "sj post_set 1 10"});
  shows("sj post_get", {69, 6}, "", "0:u8 1 0xee 2:u16 2 4:u32 -1", "en: 1 post_maxnum: 2 post_maxlen: -1\n");

  sends("sj2 set 1 1 2 3 4 5 6", {69, 7}, "0:u8 1 2:u16 1 2 3 4 5 16:u32 6");
  sends("sj2 set 0", {69, 7}, "");
  rejects("en[0/1] ct_num qq_num mail_num httpget_num post_num post_len", {"sj2 set", "sj2 set 1 1 2 3 4 5"});
  shows("sj2 get", {69, 8}, "", "0:u8 1 0xee 2:u16 1 2 3 4 5 12:hex eeeeeeee 16:u32 6",
        "en: 1 ct_num: 1 zhanghao_num: 2 mail_num: 3 httpget_num: 4 post_num: 5 post_len :6\n");

  sends("sj pool_show", {69, 3}, "");
  sends("sj2 mem", {69, 14}, "");
  for (const std::string row :
       {" sj\tset/get en[0/1] info_en ct_num url_num qq_num mail_num bbs_num\n",
        " sj2\tset/get en[0/1] ct_num qq_num mail_num httpget_num post_num post_len\n httpget_info\n "
        "post_info_get\n zhanghao_get\n ctinfo_get\n mail_get\n mem\n"}) {
    const std::string word = row.substr(1, row.find('\t') - 1);
    for (const std::string sub : {"", " GET", " ''"}) expect_unsent(vek(word + sub), 1, "", row);
  }
}

TEST(Audit, HostsAndDefault) {
  const Route set = {69, 16, 102416};
  sends("sj ip_set 10.0.0.1,fd00::1,10.0.0.5-10.0.0.9>1", set,
        "0:u8 1 4:u16 2 1 8:u32 48 0x0a000001 0x0a000001 0x0a000005 0x0a000009"
        " 28:hex fd{00}*14 01fd{00}*14 01");
  sends("sj ip_set 7,20-30", set, "4:u16 2 8:u32 8 12:u16 7 7 20 30");
  rejects("vek_host_ip", {"sj ip_set", "sj ip_set {1,}*25598"});
  const Route get = {69, 17, 102416};
  shows("sj ip_get", get, "",
        "0:u8 1 4:u16 1 1 8:u32 40 0x0a000001 0x0a000002 20:hex fd{00}*14 01fd{00}*14 01",
        " ip_duan:10.0.0.1-10.0.0.2,fd00::1,\n");
  shows("sj ip_get", get, "", "0:u8 2 4:u16 2 1 8:u32 8 12:u16 7 7 20 30", " ip_group:7,20-30,\n");
  EXPECT_EQ(vek("sj ip_get", {.answer = "4:u16 65535"}).out.size(), 11u + 2 * (102400u - 12) / 4);

  shows("sj ip_def set -1", {69, 18, 10256}, "0:u32 1 -1", "4:u32 -2", "act = -2\n");
  shows("sj ip_def get 7", {69, 18, 10256}, "", "0:u32 1 1", "act = 1\n");
  rejects("set act", {"sj ip_def", "sj ip_def set", "sj ip_def 1 1"});
}

// The pieces back to back behind the head that counts them; a datalen of its own, where it lies.
std::string records_of(size_t count, const std::vector<std::string>& pieces, long more = 0) {
  size_t at = 8;
  std::string answer;
  for (const std::string& piece : pieces) {
    answer += " +" + std::to_string(at) + " " + piece;
    at += bytes_of(piece).size();
  }
  return "0:u32 " + std::to_string(static_cast<long>(at) + more) + " " + std::to_string(count) + answer;
}
std::string section(int type, int num) {
  return "0:u16 " + std::to_string(type) + " " + std::to_string(num) + " 4:hex eeeeeeee";
}

const std::string kHead =
    "0:hex a00102030405eeee 8:u64 -1 16:hex 0001abcd 20:u32 4 24:ip 10.0.0.2 28:hex {ee}*52 ";
const std::string kPlace = "mac=a0:01:02:03:04:05 ip=10.0.0.2 ";
const std::string kHeadText = kPlace + "tm=18446744073709551615 ";
const std::string kIdText = kHeadText + "shibie_id=0001ABCD ";
const std::string kNoHead = "mac=00:00:00:00:00:00 ip=0.0.0.0 tm=0 ";

TEST(Audit, Stream) {
  // Each text one longer than is shown of it, then as long; then one with a NUL inside, and one that claims
  // more than all texts have.
  const std::string url = kHead + "80:hex c00101bbeeee 86:u16 ";
  const std::string urls[] = {url +
                                  "2615 600 128 128 512 128 512 607 0xeeee 104:text {u}*600 {a}*128 {k}*128 "
                                  "{t}*512 {c}*128 {p}*512 {r}*607",
                              url +
                                  "2426 511 127 127 511 127 511 511 102:hex eeee 104:text {u}*511 {a}*127 "
                                  "{k}*127 {t}*511 {c}*127 {p}*511 {r}*512",
                              url + "9 5 0 0 3 0 0 9 102:hex eeee 104:hex 61620063646566672f"};
  const std::string cut = kHeadText +
                          "url={u}*511 refer={r}*511 user_agent={a}*127 keyword={k}*127 title={t}*511 "
                          "content_type={c}*127 post_data={p}*511 post_datalen=";
  const std::string url_text =
      unfolded(cut + "512 inport=49153 fport=443\n" + cut + "511 inport=49153 fport=443\n" + kHeadText +
               "url=ab refer=/ user_agent= keyword= title=efg content_type= post_data= post_datalen=0 "
               "inport=49153 fport=443\n");
  const auto strings = [](const std::string& lengths) { return kHead + "80:hex {ee}*6 86:u16 " + lengths; };
  const std::vector<std::string> stream = {
      section(1, 3),
      urls[0],
      urls[1],
      urls[2],
      section(2, 2),
      kHead.substr(0, kHead.find("28:")) + "28:hex {ee}*12 7:u8 128 40:text {q}*128",
      "0:hex {00}*28 {ee}*12 7:u8 127 40:text {q}*127",
      section(3, 1),
      strings("1152 512 128 512 0xeeee 96:text {u}*512 {a}*128 {c}*512"),
      section(4, 1),
      strings("640 64 64 512 0xeeee 96:text {f}*64 {t}*64 {s}*512"),
      section(5, 2),
      kHead + "40:u32 6 44:hex fd{00}*14 12 {ee}*20 80:hex c00101bbeeee0300aabbcc",
      "0:hex {00}*88",
      section(6, 1),
      strings("256 128 128 92:hex eeeeeeee 96:text {a}*128 {p}*128"),
      section(7, 1),
      "0:hex {ee}*256",
      section(8, 3),
      section(9, 1),
      "0:hex {ee}*208 20:u32 4 24:ip 10.0.0.9 60:u32 4 64:ip 1.2.3.4 128:hex a00102030405 144:text {d}*64",
      section(10, 9),
      section(0, 9)};
  const std::string qq_text =
      unfolded(kIdText + "qq={q}*127\n" + kNoHead + "shibie_id=00000000 qq={q}*127\n");
  const std::string bbs_text = unfolded(kIdText + "url={u}*511 account={a}*127 content={c}*511\n");
  const std::string mail_text = unfolded(kIdText + "from={f}*63 to={t}*63 title={s}*511\n");
  const std::string ct_text =
      "mac=a0:01:02:03:04:05 tm=18446744073709551615 shibie_id=0001ABCD in_ip=10.0.0.2 in_port=49153 "
      "f_ip=fd00::12 f_port=443\nmac=00:00:00:00:00:00 tm=0 shibie_id=00000000 in_ip=0.0.0.0 in_port=0 "
      "f_ip=0.0.0.0 f_port=0\n";
  const std::string other_text = unfolded(kIdText + "account={a}*127 password={p}*127\n");
  const std::string answer = records_of(77, stream);
  const std::string length = answer.substr(6, answer.find(' ', 6) - 6);
  shows("sj info_get", {69, 4, 0xfa010}, "", answer,
        "sj info tol num=77 datalen=" + length + "\n=======url==========sj type=1 num=3==============\n" +
            url_text + "===========qq===========sj type=2 num=2=============\n" + qq_text +
            "============bbs========== sj type=3 num=1===========\n" + bbs_text +
            "=========mail==========sj type=4 num=1==============\n" + mail_text +
            "=========ct====== sj type=5 num=2===========\n" + ct_text +
            "=========other==========sj type=6 num=1==============\n" + other_text +
            "=========quill_ct====== sj type=7 num=1===========\n"
            "=========quill_qq====== sj type=8 num=3===========\n"
            "=========dns====== sj type=9 num=1===========\n" +
            unfolded("mac=a0:01:02:03:04:05 dns_name={d}*64 dns_ip=1.2.3.4 nat_ip=10.0.0.9\n") +
            "type error\ntype error\n\n\n");
  // The test takes what it does not know for empty sections: 256 and 208 bytes in eights, and five headers.
  const std::string test_text = "================sj info tol num=77 datalen=" + length +
                                "================\n==========url===sj type=1 num=3============\n" + url_text +
                                "===========qq=========sj type=2 num=2===========\n" + qq_text +
                                "=========bbs====== sj type=3 num=1===========\n" + bbs_text +
                                "==============mail======= sj type=4 num=1=============\n" + mail_text +
                                "=========ct====== sj type=5 num=2===========\n" + ct_text +
                                "=========other==========sj type=6 num=1==============\n" + other_text +
                                unfolded("{type error\n}*63") + "\n\n";
  shows("sj test", {69, 4, 0xfa000}, "", answer, test_text);
  expect_end(vek("sj test", {.returned = -1}), 3, "", " sj : get_opt false \n");
  expect_end(vek("sj test", {.result = 3}), 3, "", "err:no such entry \n");
}

TEST(Audit, StreamsThatLie) {
  const std::string dns = "0:hex {00}*208";
  const std::string dns_text = "mac=00:00:00:00:00:00 dns_name= dns_ip=0.0.0.0 nat_ip=0.0.0.0\n";
  const auto shown = [](const std::string& answer) {
    const std::string out = vek("sj info_get", {.answer = answer, .header = "4:u32 -1"}).out;
    EXPECT_TRUE(out.ends_with("\n\n"));
    return out.substr(out.find('\n') + 1, out.size() - out.find('\n') - 3);
  };
  const std::string two = "=========dns====== sj type=9 num=2===========\n";
  const std::string mail = "=========mail==========sj type=4 num=1==============\n";
  for (const auto& [answer, out] : std::vector<std::pair<std::string, std::string>>{
           {records_of(1, {section(9, 2), dns}), two + dns_text + dns_text},
           {records_of(1, {section(9, 2), dns, dns, section(8, 1)}, -8), two + dns_text + dns_text},
           {records_of(1, {section(4, 1), "0:hex {00}*96 88:u16 -1 -1 -1"}),
            mail + "mac=00:00:00:00:00:00 ip=0.0.0.0 tm=0 shibie_id=00000000 from= to= title=\n"},
           {records_of(1, {section(7, 2), "0:hex {00}*511"}),
            "=========quill_ct====== sj type=7 num=2===========\n"},
           {"0:u32 9 8:u16 8 1", "=========quill_qq====== sj type=8 num=1===========\n"},
           {"0:u32 8 8:u16 8 1", ""},
           {"0:u32 -1 8:u16 8 1", ""}}) {
    EXPECT_EQ(shown(answer), out) << answer;
  }
  // The last record that the answer's record has room for.
  const std::string last =
      "0:u32 0x7fffffff +1023784 " + section(9, 1) + " +1023792 " + dns + " 144:text last";
  const std::string end = shown(last);
  EXPECT_EQ(std::ranges::count(end, '\n'), (1023784 - 8) / 8 + 2);
  EXPECT_TRUE(end.ends_with(
      " num=1===========\nmac=00:00:00:00:00:00 dns_name=last dns_ip=0.0.0.0 nat_ip=0.0.0.0\n"));
  EXPECT_TRUE(shown("0:u32 0x7fffffff +1023792 " + section(9, 1)).ends_with("sj type=9 num=1===========\n"));
}

TEST(Audit, Lists) {
  const auto post = [](const std::string& data) {
    return "0:u32 -1 4:hex 0001abcd 8:u32 4 12:ip 10.0.0.2 16:hex {ee}*12 28:u32 101 102 103 40:hex {ee}*34"
           " a00102030405 c00101bb 84:u32 " +
           data;
  };
  const std::string text = kPlace + "tm=4294967295 shibie_id=0001ABCD ";
  // Another count than there is: the length decides whether there are more, but for a count of none.
  const std::string answer = records_of(1, {post("102400 88:text {d}*102400"), post("2 88:hex 6100")});
  const auto lists = [&](const std::string& words, uint32_t command, const std::string& name,
                         const std::string& first, const std::string& second) {
    const Route route = {69, command, 0xfa010};
    shows(words, route, "", answer,
          unfolded(name + " tol num=1 datalen=102586\n" + text + first + "\n" + text + second + "\n"));
    shows(words, route, "", "0:u32 102586", name + " tol num=0 datalen=102586\n");
  };
  lists("sj post_info_get", 9, "sj post", "post_data={d}*102399", "post_data=a");
  const std::string ports = "in_port=49153 f_port=443 ";
  lists("sj2 httpget_info", 10, "sj2 httpget", ports + "all_len=101 head_len=102 res_len=103",
        ports + "all_len=101 head_len=102 res_len=103");
  lists("sj2 post_info_get", 9, "sj2 post", ports + "all_len=101 datalen=102400",
        ports + "all_len=101 datalen=2");
  lists("sj2 zhanghao_get", 12, "sj2 zhanghao", "datalen=102400 account={d}*102400", "datalen=2 account=a");
  lists("sj2 ctinfo_get", 11, "sj2 ctinfo", ports + "datalen=102400 account={d}*102400",
        ports + "datalen=2 account=a");

  const std::string mail =
      "0:u64 -1 8:hex 0001abcd 12:u32 4 16:ip 10.0.0.2 20:hex {ee}*12 a00102030405c00101bb 42:u16 70 2 600 "
      "48:text {f}*70 to {t}*600";
  const Route route = {69, 13, 0xfa010};
  shows(
      "sj2 mail_get", route, "", records_of(1, {mail, mail}, -720),
      unfolded("sj2 ctinfo tol num=1 datalen=728\n" + kIdText + ports + "from={f}*70 to=to title={t}*600\n"));
  for (const std::string words : {"sj post_info_get", "sj2 ctinfo_get"}) {
    const Outcome outcome = vek(words, {.answer = "0:u32 0x7fffffff 1 +1023888 84:u32 -1"});
    EXPECT_EQ(std::ranges::count(outcome.out, '\n'), 1 + (1023888 - 8) / 88)
        << words;  // the last one lies about its length
  }
}

// The port of the listener, in a network of its own where the machine allows that.
int listen_for_notices() {
  if (unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0) {
    const int any = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq loopback = {.ifr_ifrn = {"lo"}};
    loopback.ifr_flags = IFF_UP;
    EXPECT_EQ(ioctl(any, SIOCSIFFLAGS, &loopback), 0);
    close(any);
  }
  const int port = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  sockaddr_in address = {
      .sin_family = AF_INET, .sin_port = htons(5927), .sin_addr = {htonl(INADDR_LOOPBACK)}};
  if (bind(port, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return port;
  close(port);
  return -1;
}

TEST(Audit, TestNotices) {
  const int port = listen_for_notices();
  if (port < 0) GTEST_SKIP() << "the listener's port is in use";
  const auto next = [port] {
    char bytes[200];
    const ssize_t length = recv(port, bytes, sizeof bytes, 0);
    return std::string(bytes, static_cast<size_t>(std::max<ssize_t>(length, 0)));
  };
  const std::string request = "4:hex a0b0fffffffe 12:ip 10.0.0.254 ";
  const Outcome outcome = vek("sj debug 3 a0:b0:ff:ff:ff:fe 10.0.0.254");
  expect_order(outcome, {69, 15}, request + "0:u32 3");
  expect_end(outcome, 0, "ok\n");
  EXPECT_EQ(outcome.calls, std::vector<std::string>{"setnonblocking"});
  for (const std::string own : {"0:hex a0b0fffffffe 12:ip 10.0.0.254", "0:hex a0b0ffffffff 12:ip 11.0.0.254",
                                "0:hex a0b000000000 12:ip 12.0.0.254"}) {
    std::string notice = next();
    ASSERT_EQ(notice.size(), 128u);
    for (size_t i = 31; i < 39; ++i) EXPECT_TRUE(isdigit(notice[i])) << notice[i];
    notice.replace(31, 8, "########");
    EXPECT_EQ(notice, bytes_of(own + " 28:text 136######## 92:u8 1 4 127:u8 0"));
  }
  EXPECT_EQ(next(), "");

  // Without a notice to send the other words are no matter.
  const Outcome none = vek("sj debug 0 x y");
  expect_order(none, {69, 15}, "");
  expect_end(none, 0, "ok\n");
  rejects("num mac ip",
          {"sj debug 2 a0:b0:ff:ff:ff:fe", "sj debug 2 mac 10.0.0.1", "sj debug 2 a0:b0:ff:ff:ff:fe ip"});
  EXPECT_EQ(next(), "");
  close(port);
}

}  // namespace
