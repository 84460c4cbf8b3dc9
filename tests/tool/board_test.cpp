// The switch chip and the board: the records and calls that go to the platform library, and what is said of
// them.
#include "tool/driver.h"

namespace {

// Each row: words, the function's record and what it answers over it, and the lines when that is well and
// when it is not. `also` is an argument behind the record.
void expect_rows(const std::string& function, size_t size, const std::string& table,
                 const std::string& also = "", bool is_done_on_errors = false) {
  for (const auto& row : rows(table)) {
    SCOPED_TRACE(row[0]);
    std::string record = bytes_of(row[1]);
    record.resize(size);
    const auto line = [&row](size_t cell) { return row[cell].empty() ? "" : row[cell] + "\n"; };
    const Outcome done = vek("rtl " + row[0], {.script = answer(function, 0, row[1] + " " + row[2])});
    EXPECT_EQ(done.calls, std::vector{function + " " + to_hex(record) + also});
    expect_unsent(done, 0, is_done_on_errors ? "" : line(3), is_done_on_errors ? line(3) : "");
    expect_unsent(vek("rtl " + row[0], {.script = answer(function, -5)}), 0, "", line(4));
  }
}

TEST(Rtl, Registers) {
  expect_rows("rtl8367_reg_opt", 12,
              "reg r 1b03 | 0:u8 2 4:u32 0x1b03 | 8:u32 0xfedcba98 |"
              "read reg addr 0x1b03 value 0xfedcba98 ok | read reg addr 0x1b03 err",
              " 2");
  expect_rows("rtl8367_reg_opt", 12,
              "reg w 0x1b03 10 x | 0:u8 1 4:u32 0x1b03 0x10 | |"
              "write reg addr 0x1b03 value 0x10 ok | write reg addr 0x1b03 value 0x10 err",
              " 1");
  expect_rows("rtl8367_phy_opt", 4, R"(
    phy r 11f | 0:u8 2 0x1f | 2:u16 0xabcd | read phy addr 0x1f value 0xabcd ok | read phy addr 0x1f err
    phy w 1f 1abcd | 0:u8 1 0x1f 2:u16 0xabcd | | write phy addr 0x1f value 0xabcd ok | write phy addr 0x1f value 0xabcd err)");
}

TEST(Rtl, Tables) {
  expect_rows("rtl8367_vlan_opt", 20, R"(
    vlan set 10 1f 0f 3 | 0:u8 1 4:u32 10 31 15 3 | | set vlan 10 membermask=0x1f, untagmask=0xf, fid=3 ok | set vlan 10 membermask=0x1f, untagmask=0xf, fid=3 err
    vlan get 10 | 0:u8 2 4:u32 10 | 8:u32 31 15 3 | get vlan 10 info: membermask=0x1f, untagmask=0xf, fid=3 | get vlan 10 info err
    vlan clear | 0:u8 3 | | |)");
  expect_rows("rtl8367_pvid_opt", 16, R"(
    pvid set 2 10 7 | 0:u8 1 4:u32 2 10 7 | | set port 2 pvid 10, priority 7 ok | set port 2 pvid 10, priority 7 err
    pvid get 2 | 0:u8 2 4:u32 2 | 8:u32 10 7 | get port 2 pvid 10, priority 7 | get port 2 pvid err)");
  expect_rows("rtl8367_efid_opt", 12, R"(
    efid set 2 5 | 0:u8 1 4:u32 2 5 | | set port 2 efid 5 ok | set port 2 efid 5 err
    efid get 2 | 0:u8 2 4:u32 2 | 8:u32 5 | get port 2 pvid 5 | get port 2 efid err
    efid get | 0:u8 2 | | get port 0 pvid 0 | get port 0 efid err)");
  expect_rows("rtl8367_mirror_opt", 16, R"(
    mirror set 1 ff 0f en | 0:u8 1 1 4:u32 1 15 255 | | set mirror port 1 rxmsk 0xff txmsk 0xf mirror port isolation enable ok | set mirror port 1 rxmsk 0xff txmsk 0xf mirror port isolation enable ret -5 err
    mirror set 1 ff 0f dis | 0:u8 1 0 4:u32 1 15 255 | | set mirror port 1 rxmsk 0xff txmsk 0xf mirror port isolation disable ok | set mirror port 1 rxmsk 0xff txmsk 0xf mirror port isolation disable ret -5 err
    mirror get | 0:u8 2 | 1:u8 2 4:u32 1 15 255 | get mirror port 1 rxmsk 0xff txmsk 0xf mirror port isolation enable ok | get mirror err)");
  expect_rows("rtl8367_mib_opt", 8, R"(
    mib get port 3 | 0:u8 1 1 4:u32 3 | | |
    mib reset global 3 | 0:u8 2 2 | | |)");
  expect_rows("rtl8367_rate_ctl_opt", 12, R"(
    rate set ex 3 100 | 0:u8 1 2 3 1 8:u32 102400 | | set port 3 ex rate 100Mbps | set port 3 ex err
    rate s i 3 | 0:u8 1 1 3 1 8:u32 0xffff8 | | set port 3 i rate 1024Mbps | set port 3 i err
    rate set ingress 3 1024 | 0:u8 1 1 3 1 8:u32 0xffff8 | | set port 3 ingress rate 1024Mbps | set port 3 ingress err
    rate set ingress 3 1025 | 0:u8 1 1 3 1 8:u32 0xffff8 | | set port 3 ingress rate 1024Mbps | set port 3 ingress err
    rate set e 3 1023 | 0:u8 1 2 3 1 8:u32 1047552 | | set port 3 e rate 1023Mbps | set port 3 e err
    rate get egress 3 | 0:u8 2 2 3 0 | 8:u32 102400 | get port 3 egress rate 102400kbps | get port 3 egress err)");
  expect_rows("rtl8367_delay_opt", 16, R"(
    delay set 6 -1 4 | 0:u8 1 4:u32 6 -1 4 | | set port 6 delay tx:-1 rx:4 ok | set port 6 delay tx:-1 rx:4 err
    delay get 6 | 0:u8 2 4:u32 6 | 8:u32 -2147483648 4 | get port 6 delay tx:-2147483648 rx:4 | get port 6 delay err)");
  expect_rows("rtl8367_switch_id_opt", 8, R"(
    switch set 9 | 0:u8 1 4:u32 9 | | | set switch id:9 err
    switch get | 0:u8 2 | 4:u32 9 | get switch id:9 | get switch id err)");
  sends("rtl dump", {32, 14}, "");
  sends("rtl clear table", {32, 15}, "");
  expect_end(vek("rtl dump table", {.result = 1}), 3, "", "err:first error \n");
}

TEST(Rtl, AccessEntriesAnswerOnStandardError) {
  expect_rows("rtl8367_acl_opt", 28, R"(
    acl add 00:11:22:33:44:55 ffffffffff00 smac 3 255 1 | 0:u32 3 255 8:hex 001122334455ffffffffff00 20:u8 1 0 24:u32 1 | | add  ok | add  err
    acl add 1-2 0 dmac 3 255 1 | 0:u32 3 255 8:hex 0102 20:u8 1 1 24:u32 1 | | add  ok | add  err
    acl del 00:11:22:33:44:55 ff | 8:hex 001122334455 | | del  ok | del  err
    acl del | | | del  ok | del  err)",
              "", true);
  expect_rows("rtl8367_acl_port_opt", 12, R"(
    acl_port add sport 90 80 | 0:u8 1 1 4:u32 90 80 | | opt  ok | opt  err
    acl_port del x 90 80 | 0:u8 0 2 4:u32 90 80 | | opt  ok | opt  err)",
              "", true);
  expect_rows("rtl8367_acl_etype_opt", 4, R"(
    acl_etype add 88cc 1ff | 0:u8 1 0xff 2:u16 0x88cc | | opt  ok | opt  err
    acl_etype del 88cc 3 | 0:u8 0 3 2:u16 0x88cc | | opt  ok | opt  err)",
              "", true);
  const Outcome other = vek("rtl acl show");
  EXPECT_TRUE(other.calls.empty());
  expect_unsent(other, 0, "");
}

TEST(Rtl, Ports) {
  for (const auto& [words, record] :
       pairs("down '0 0' 'down force' '0 0' up '2 1' 'up auto x' '1 1' 'up force 1000 F' "
             "'0 1 2 1' 'up force 100 H' '0 1 1 0' 'up force 10 F' '0 1 0 1'")) {
    expect_rows("rtl8367_port_opt", 12,
                "port set 1 " + words + " | 0:u8 1 4:u32 1 8:u8 " + record +
                    "| | set port 1 status ok | set port 1 status err",
                " 1");
  }
  for (const auto& [status, text] :
       pairs("'0 2 1' down '2 2 1' down '1 0 0' 'up 10 H' '1 1 1' 'up 100 F' '1 2 1' "
             "'up 1000 F' '1 3 2' 'up 1000 F' '1 4 1' 'up 2500 F' '1 255 0' 'up 1000 H'")) {
    expect_rows("rtl8367_port_opt", 12,
                "port get 2 | 0:u8 2 4:u32 2 | 9:u8 " + status + " | get port 2 link " + text +
                    "| get port 2 status err",
                " 2");
  }
}

TEST(Rtl, UsageTails) {
  // A usage, and the words behind the sub-command that get it.
  for (const auto& row : rows(R"(
      reg r/w [addr] [val] | | r | w 1 | x 1 2
      vlan set/get/clear [vid] [membermask] [untagmask] [fid] | | set 1 2 3 | get | SET 1 2 3 4
      pvid get/set [port] [pvid] [priority] | | set 1 2 | get
      efid get/set [port] [efid] | | set 1 | x 1
      port get/set [port] [up/down] [auto/force] [10/100/1000] [F/H] | | get | set 1 | put 1 up | set 1 left | set 1 up x | set 1 up force 100 | set 1 up force 2500 F | set 1 up force 100 f
      mirror get/set [dst_port] [src_rxmsk] [src_txmsk] [en/dis] | | set 1 ff 0f | set 1 ff 0f maybe | x
      acl add/del mac_value mac_mask smac/dmac port_value port_mask action[1/0] | | add 1 2 smac 1 2
      acl_port add/del type[sport/dport] upper lower | | add sport 1 | x sport 1 2
      phy r/w [addr] [val] | | r | w 1
      rate set/get ingress/egress [port] [rate] | | set i | get i | x i 1 | set x 1 2
      acl_etype add/del [etype] [portmask] | | add 1 | x 1 2
      delay get/set [port] [tx] [rx] | | get | set 1 2
      switch get/set [id] | | set | x 1)")) {
    for (size_t i = 1; i < row.size(); ++i) {
      const std::string words = "rtl " + row[0].substr(0, row[0].find(' ')) + " " + row[i];
      SCOPED_TRACE(words);
      const Outcome outcome = vek(words);
      EXPECT_TRUE(outcome.calls.empty());
      expect_unsent(outcome, 1, "", " " + vek_path() + "\trtl " + row[0] + "\n");
    }
  }
  // With a '|' of its own.
  for (const std::string words : {"", "get", "get port", "reset ports 1", "set port 1"}) {
    expect_unsent(vek("rtl mib " + words), 1, "",
                  " " + vek_path() + "\trtl mib get/reset [port|global] [port_num]\n");
  }
  for (const std::string words : {"rtl", "rtl id"}) {
    const Outcome outcome = vek(words);
    EXPECT_TRUE(outcome.err.starts_with(" rtl\trtl reg r [addr]\n") &&
                outcome.err.ends_with("\nrtl switch id\n\n"));
    expect_unsent(outcome, 1, "", outcome.err);
  }
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
  for (const auto& [usage, words] :
       pairs("on/off led 'start stop ping' watchdog 'start stop ping' 'watchdog feed' erase param "
             "erase 'param ERASE' save usblog 'set get clean filename' zentrik_plugin "
             "'set get clean filename' 'zentrik_plugin put /tmp/a' 'type_id data' syslog "
             "'type_id data' 'syslog 3' on|off turn_phy")) {
    expect_calls(words, {}, 1, "", " " + words.substr(0, words.find(' ')) + "\t" + usage + "\n");
  }
  expect_calls("zentrik_plugin set", {}, 1, "", " zentrik_plugin set path\n");
  expect_calls("zentrik_plugin put", {}, 1, "", " zentrik_plugin put path\n");
  expect_calls("led blink", {}, 255, "", " led\ton/off\n");
}

}  // namespace
