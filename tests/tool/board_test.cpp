// The switch chip and the board: the records and calls that go to the platform library, and what is said of
// them.
#include "tool/driver.h"

namespace {

// A call with a record of that size, and the two lines that it can end with.
struct ChipCase {
  std::string words;
  std::string function;
  size_t size;
  std::string record;
  std::string answer;  // over the record
  std::string done;
  std::string failed;
  std::string also = {};  // a second argument
};

std::string call_of(const ChipCase& chip) {
  std::string record = bytes_of(chip.record);
  record.resize(chip.size);
  return chip.function + " " + to_hex(record) + chip.also;
}

void expect_lines_of(const std::vector<ChipCase>& cases, bool is_done_on_errors) {
  for (const ChipCase& chip : cases) {
    SCOPED_TRACE(chip.words);
    const Outcome done = vek("rtl " + chip.words, {.script = answer(chip.function, 0, chip.record + " " + chip.answer)});
    EXPECT_EQ(done.calls, std::vector{call_of(chip)});
    expect_unsent(done, 0, is_done_on_errors ? "" : chip.done, is_done_on_errors ? chip.done : "");
    const Outcome failed = vek("rtl " + chip.words, {.script = answer(chip.function, -5)});
    expect_unsent(failed, 0, "", chip.failed);
  }
}

const std::string kMirror = "mirror port 1 rxmsk 0xff txmsk 0xf mirror port isolation ";

TEST(Rtl, Records) {
  expect_lines_of(
      {
          {"reg r 1b03", "rtl8367_reg_opt", 12, "0:u8 2 4:u32 0x1b03", "8:u32 0xfedcba98",
           "read reg addr 0x1b03 value 0xfedcba98 ok\n", "read reg addr 0x1b03 err\n", " 2"},
          {"reg w 0x1b03 10 x", "rtl8367_reg_opt", 12, "0:u8 1 4:u32 0x1b03 0x10", "",
           "write reg addr 0x1b03 value 0x10 ok\n", "write reg addr 0x1b03 value 0x10 err\n", " 1"},
          {"vlan set 10 1f 0f 3", "rtl8367_vlan_opt", 20, "0:u8 1 4:u32 10 0x1f 0xf 3", "",
           "set vlan 10 membermask=0x1f, untagmask=0xf, fid=3 ok\n",
           "set vlan 10 membermask=0x1f, untagmask=0xf, fid=3 err\n"},
          {"vlan get 10", "rtl8367_vlan_opt", 20, "0:u8 2 4:u32 10", "8:u32 0x1f 0xf 3",
           "get vlan 10 info: membermask=0x1f, untagmask=0xf, fid=3\n", "get vlan 10 info err\n"},
          {"vlan clear", "rtl8367_vlan_opt", 20, "0:u8 3", "", "", ""},
          {"pvid set 2 10 7", "rtl8367_pvid_opt", 16, "0:u8 1 4:u32 2 10 7", "",
           "set port 2 pvid 10, priority 7 ok\n", "set port 2 pvid 10, priority 7 err\n"},
          {"pvid get 2", "rtl8367_pvid_opt", 16, "0:u8 2 4:u32 2", "8:u32 10 7",
           "get port 2 pvid 10, priority 7\n", "get port 2 pvid err\n"},
          {"efid set 2 5", "rtl8367_efid_opt", 12, "0:u8 1 4:u32 2 5", "", "set port 2 efid 5 ok\n",
           "set port 2 efid 5 err\n"},
          {"efid get 2", "rtl8367_efid_opt", 12, "0:u8 2 4:u32 2", "8:u32 5", "get port 2 pvid 5\n",
           "get port 2 efid err\n"},
          {"efid get", "rtl8367_efid_opt", 12, "0:u8 2", "", "get port 0 pvid 0\n", "get port 0 efid err\n"},
          {"mirror set 1 ff 0f en", "rtl8367_mirror_opt", 16, "0:u8 1 1 4:u32 1 0xf 0xff", "",
           "set " + kMirror + "enable ok\n", "set " + kMirror + "enable ret -5 err\n"},
          {"mirror set 1 ff 0f dis", "rtl8367_mirror_opt", 16, "0:u8 1 0 4:u32 1 0xf 0xff", "",
           "set " + kMirror + "disable ok\n", "set " + kMirror + "disable ret -5 err\n"},
          {"mirror get", "rtl8367_mirror_opt", 16, "0:u8 2", "1:u8 2 4:u32 1 0xf 0xff",
           "get " + kMirror + "enable ok\n", "get mirror err\n"},
          {"mib get port 3", "rtl8367_mib_opt", 8, "0:u8 1 1 4:u32 3", "", "", ""},
          {"mib reset global 3", "rtl8367_mib_opt", 8, "0:u8 2 2", "", "", ""},
          {"phy r 11f", "rtl8367_phy_opt", 4, "0:u8 2 0x1f", "2:u16 0xabcd",
           "read phy addr 0x1f value 0xabcd ok\n", "read phy addr 0x1f err\n"},
          {"phy w 1f 1abcd", "rtl8367_phy_opt", 4, "0:u8 1 0x1f 2:u16 0xabcd", "",
           "write phy addr 0x1f value 0xabcd ok\n", "write phy addr 0x1f value 0xabcd err\n"},
          {"rate set ex 3 100", "rtl8367_rate_ctl_opt", 12, "0:u8 1 2 3 1 8:u32 102400", "",
           "set port 3 ex rate 100Mbps\n", "set port 3 ex err\n"},
          {"rate s i 3", "rtl8367_rate_ctl_opt", 12, "0:u8 1 1 3 1 8:u32 0xffff8", "",
           "set port 3 i rate 1024Mbps\n", "set port 3 i err\n"},
          {"rate set ingress 3 1025", "rtl8367_rate_ctl_opt", 12, "0:u8 1 1 3 1 8:u32 0xffff8", "",
           "set port 3 ingress rate 1024Mbps\n", "set port 3 ingress err\n"},
          {"rate set e 3 1023", "rtl8367_rate_ctl_opt", 12, "0:u8 1 2 3 1 8:u32 1047552", "",
           "set port 3 e rate 1023Mbps\n", "set port 3 e err\n"},
          {"rate get egress 3", "rtl8367_rate_ctl_opt", 12, "0:u8 2 2 3 0", "8:u32 102400",
           "get port 3 egress rate 102400kbps\n", "get port 3 egress err\n"},
          {"delay set 6 -1 4", "rtl8367_delay_opt", 16, "0:u8 1 4:u32 6 -1 4", "",
           "set port 6 delay tx:-1 rx:4 ok\n", "set port 6 delay tx:-1 rx:4 err\n"},
          {"delay get 6", "rtl8367_delay_opt", 16, "0:u8 2 4:u32 6", "8:u32 -2147483648 4",
           "get port 6 delay tx:-2147483648 rx:4\n", "get port 6 delay err\n"},
          {"switch set 9", "rtl8367_switch_id_opt", 8, "0:u8 1 4:u32 9", "", "", "set switch id:9 err\n"},
          {"switch get", "rtl8367_switch_id_opt", 8, "0:u8 2", "4:u32 9", "get switch id:9\n",
           "get switch id err\n"},
      },
      false);
}

TEST(Rtl, AccessEntriesAnswerOnStandardError) {
  const std::string function = "rtl8367_acl_opt";
  expect_lines_of(
      {
          {"acl add 00:11:22:33:44:55 ffffffffff00 smac 3 255 1", function, 28,
           "0:u32 3 255 8:hex 001122334455ffffffffff00 20:u8 1 0 24:u32 1", "", "add  ok\n", "add  err\n"},
          {"acl add 1-2 0 dmac 3 255 1", function, 28, "0:u32 3 255 8:hex 0102 20:u8 1 1 24:u32 1", "",
           "add  ok\n", "add  err\n"},
          {"acl del 00:11:22:33:44:55 ff", function, 28, "8:hex 001122334455", "", "del  ok\n", "del  err\n"},
          {"acl del", function, 28, "", "", "del  ok\n", "del  err\n"},
          {"acl_port add sport 90 80", "rtl8367_acl_port_opt", 12, "0:u8 1 1 4:u32 90 80", "", "opt  ok\n",
           "opt  err\n"},
          {"acl_port del x 90 80", "rtl8367_acl_port_opt", 12, "0:u8 0 2 4:u32 90 80", "", "opt  ok\n",
           "opt  err\n"},
          {"acl_etype add 88cc 1ff", "rtl8367_acl_etype_opt", 4, "0:u8 1 0xff 2:u16 0x88cc", "", "opt  ok\n",
           "opt  err\n"},
          {"acl_etype del 88cc 3", "rtl8367_acl_etype_opt", 4, "0:u8 0 3 2:u16 0x88cc", "", "opt  ok\n",
           "opt  err\n"},
      },
      true);
  const Outcome other = vek("rtl acl show");
  EXPECT_TRUE(other.calls.empty());
  expect_unsent(other, 0, "");
}

TEST(Rtl, Ports) {
  const std::string function = "rtl8367_port_opt";
  std::vector<ChipCase> cases;
  for (const auto& [words, record] : std::vector<std::pair<std::string, std::string>>{
           {"down force", "8:u8 0 0"},
           {"up", "8:u8 2 1"},
           {"up auto x", "8:u8 1 1"},
           {"up force 1000 F", "8:u8 0 1 2 1"},
           {"up force 100 H", "8:u8 0 1 1 0"},
           {"up force 10 F", "8:u8 0 1 0 1"},
       }) {
    cases.push_back({"port set 1 " + words, function, 12, "0:u8 1 4:u32 1 " + record, "",
                     "set port 1 status ok\n", "set port 1 status err\n", " 1"});
  }
  for (const auto& [status, text] : std::vector<std::pair<std::string, std::string>>{
           {"9:u8 0", "link down"},
           {"9:u8 2", "link down"},
           {"9:u8 1 0 0", "link up 10 H"},
           {"9:u8 1 1 1", "link up 100 F"},
           {"9:u8 1 2 1", "link up 1000 F"},
           {"9:u8 1 3 2", "link up 1000 F"},
           {"9:u8 1 4 1", "link up 2500 F"},
           {"9:u8 1 255 0", "link up 1000 H"},
       }) {
    cases.push_back({"port get 2", function, 12, "0:u8 2 4:u32 2", status, "get port 2 " + text + "\n",
                     "get port 2 status err\n", " 2"});
  }
  expect_lines_of(cases, false);
}

TEST(Rtl, UsageTails) {
  for (const auto& [usage, all_words] : std::vector<std::pair<std::string, std::vector<std::string>>>{
           {"reg r/w [addr] [val]", {"", "r", "w 1", "x 1 2"}},
           {"vlan set/get/clear [vid] [membermask] [untagmask] [fid]",
            {"", "set 1 2 3", "get", "SET 1 2 3 4"}},
           {"pvid get/set [port] [pvid] [priority]", {"", "set 1 2", "get"}},
           {"efid get/set [port] [efid]", {"", "set 1", "x 1"}},
           {"port get/set [port] [up/down] [auto/force] [10/100/1000] [F/H]",
            {"", "get", "set 1", "put 1 up", "set 1 left", "set 1 up x", "set 1 up force 100",
             "set 1 up force 2500 F", "set 1 up force 100 f"}},
           {"mirror get/set [dst_port] [src_rxmsk] [src_txmsk] [en/dis]",
            {"", "set 1 ff 0f", "set 1 ff 0f maybe", "x"}},
           {"mib get/reset [port|global] [port_num]", {"", "get", "get port", "reset ports 1", "set port 1"}},
           {"acl add/del mac_value mac_mask smac/dmac port_value port_mask action[1/0]",
            {"", "add 1 2 smac 1 2"}},
           {"acl_port add/del type[sport/dport] upper lower", {"", "add sport 1", "x sport 1 2"}},
           {"phy r/w [addr] [val]", {"", "r", "w 1"}},
           {"rate set/get ingress/egress [port] [rate]", {"", "set i", "get i", "x i 1", "set x 1 2"}},
           {"acl_etype add/del [etype] [portmask]", {"", "add 1", "x 1 2"}},
           {"delay get/set [port] [tx] [rx]", {"", "get", "set 1 2"}},
           {"switch get/set [id]", {"", "set", "x 1"}},
       }) {
    const std::string word = usage.substr(0, usage.find(' '));
    for (const std::string& words : all_words) {
      SCOPED_TRACE(word + " " + words);
      const Outcome outcome = vek("rtl " + word + " " + words);
      EXPECT_TRUE(outcome.calls.empty());
      expect_unsent(outcome, 1, "", " " + vek_path() + "\trtl " + usage + "\n");
    }
  }
}

TEST(Rtl, Tables) {
  sends("rtl dump", {32, 14}, "");
  sends("rtl clear table", {32, 15}, "");
  const Outcome refused = vek("rtl dump table", {.result = 1});
  expect_end(refused, 3, "", "err:first error \n");
}

// ---- The board ----

void expect_calls(const std::string& words, const std::vector<std::string>& calls, int status = 0,
                  const std::string& out = "", const std::string& err = "", const std::string& script = "") {
  SCOPED_TRACE(words);
  const Outcome outcome = vek(words, {.script = script});
  EXPECT_EQ(outcome.calls, calls);
  expect_unsent(outcome, status, out, err);
}

TEST(Board, Calls) {
  expect_calls("led on", {"nvram_set LedStatus 1", "ap_led_ctrl 0"});
  expect_calls("led off", {"nvram_set LedStatus 0", "ap_led_ctrl 1"});
  expect_calls("param erase", {"flash_erase_mtd Config 0 0"}, 0, "erase param ok!\n");
  expect_calls("param erase", {"flash_erase_mtd Config 0 0"}, 0, "erase param error!\n", "",
               answer("flash_erase_mtd", 1));
  expect_calls(
      "usblog anything",
      {"usblog_mount_state", "_eval [nvram][backup][/tmp/mnt/usblog/usb_log/parm.cfg] (null) 0 (null)"}, 0,
      "", "", answer("usblog_mount_state", 2) + answer("_eval", 9));
  expect_calls("usblog save", {"usblog_mount_state"}, 1, "", "usb err\n usblog\tsave\n");
  expect_calls("zentrik_plugin set /tmp/a", {"flash_zentrik_plugin_write /tmp/a"}, 0, "", "",
               answer("flash_zentrik_plugin_write", -1));
  expect_calls("zentrik_plugin get /tmp/a", {"flash_zentrik_plugin_read /tmp/a"});
  expect_calls("zentrik_plugin clean", {"flash_zentrik_plugin_clean (null)"});
  expect_calls("zentrik_plugin clean /tmp/a", {"flash_zentrik_plugin_clean /tmp/a"});
  expect_calls("syslog 3 a%sb%n c", {"sys_log_write 3 a%sb%n"});
  for (const auto& [words, arguments] : pairs("on '1 3' 'on mtk' '1 1' 'on rtl' '1 2' 'off gsw' '0 2' "
                                              "'off yt9215' '0 2' 'off an8855' '0 2' 'off x' '0 3'")) {
    expect_calls("turn_phy " + words, {"turn_on_phy " + arguments});
  }
  expect_calls("turn_phy ON", {});
}

TEST(Board, Watchdog) {
  for (const auto& [word, number] : pairs("start 1 stop 2 ping 3")) {
    sends("watchdog " + word, {1, 73}, "0:u32 " + number);
  }
  expect_end(vek("watchdog ping", {.returned = -1}), 1, "",
             " " + vek_path() + " watchdog ping  \n\t\terr:order_opt_fun false!\n");
}

TEST(Board, UsageLines) {
  for (const auto& [usage, all_words] : std::vector<std::pair<std::string, std::vector<std::string>>>{
           {"led\ton/off", {"led"}},
           {"watchdog\tstart stop ping", {"watchdog", "watchdog feed"}},
           {"param\terase", {"param", "param ERASE"}},
           {"usblog\tsave", {"usblog"}},
           {"zentrik_plugin\tset get clean filename", {"zentrik_plugin", "zentrik_plugin put /tmp/a"}},
           {"zentrik_plugin set path", {"zentrik_plugin set"}},
           {"zentrik_plugin put path", {"zentrik_plugin put"}},
           {"syslog\ttype_id data", {"syslog", "syslog 3"}},
           {"turn_phy\ton|off", {"turn_phy"}},
       }) {
    for (const std::string& words : all_words) expect_calls(words, {}, 1, "", " " + usage + "\n");
  }
  expect_calls("led blink", {}, 255, "", " led\ton/off\n");
}

}  // namespace
