// The content filters of the host library.
#include "host.h"

namespace {

class Filters : public HostTest {};

TEST_F(Filters, RulesAreReplacedByName) {
  ok({"urlfilter add a 10.0.0.1 Zm9v 1 5 1", "urlfilter add b 5 YmFy 0 2 0", "urlfilter add a 7 Zm9v 0 1 0",
      "hpostfixfilter add a 1 5 exe", "hpostforbid add a 1 5", "hpostforbid del a", "urlfilter global 1 0"});
  shows("urlfilter list",
        "num:2\nname:a ,log:0, act:0, prio:1, ruleips:0, ,url:foo  user_group:7,\n"
        "name:b ,log:0, act:0, prio:2, ruleips:0, ,url:bar  user_group:5,\n");
  shows("hpostfixfilter list", "count:1\nname:a  log:1  postfix: exe, user_group:5,\n");
  ok({"urlfilter delall"});
  shows("urlfilter list", "num:0\n");
  refused("no such rule", {"urlfilter del a", "hpostforbid del a"});
  refused("bad URL", {"urlfilter add c 5 ! 0 0 0"});
  refused("empty list",
          {"urlfilter add c '' Zm9v 0 0 0", "hpostfixfilter add c 0 5 ,", "hpostforbid add c 0 ''"});
  refused("unknown mode", {"urlfilter global 3 0"});
}

TEST_F(Filters, WordsAreKept) {
  ok({"bbsfilter add one 1", "bbsfilter add two 2", "bbsfilter add one 3"});
  shows("bbsfilter list",
        "item_cnt=2 need_size=30\ntype=3 data_offset=24 data_length=3  one\n"
        "type=2 data_offset=27 data_length=3  two\n\n");
  refused("no such entry", {"bbsfilter del one 1"});
  ok({"bbsfilter del one 3", "bbsfilter delall"});
  insert(1, 201, "bbs_word (word, type) SELECT printf('%0500d', i), 1");
  refused("table full", {"bbsfilter add {w}*500 1"});
}

}  // namespace
