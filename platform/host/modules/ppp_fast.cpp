// The PPP fast path (module 45): which real device a PPP session is bound to. The headers of a session's
// packets are the lab's word, or zero.
#include "records/ppp_fast.h"

#include "modules/checks.h"
#include "modules/devmg.h"
#include "modules/modules.h"

namespace {

// Both are left out of use (RFC 2516, section 4).
bool is_session_id(uint16_t id) { return id != 0 && id != 0xffff; }

// A PPP device has one binding, and so has a real device: get names one of them.
void bind(Store& store, const PppFastBinding& binding) {
  require_interface(store, text(binding.real_dev));
  refuse_unless(text(binding.real_dev) != text(binding.ppp_dev), kBadName);
  refuse_unless(is_session_id(binding.session_id), kBadNumber);
  refuse_unless(
      store.number("SELECT count(*) FROM ppp_fast WHERE real_dev = :real_dev AND ppp_dev <> :ppp_dev",
                   binding) == 0,
      kInUse);
  store.execute("INSERT OR REPLACE INTO ppp_fast VALUES (:ppp_dev, :real_dev, :session_id)", binding);
}

// Whatever is said beside the PPP device must be as it was bound.
void unbind(Store& store, const PppFastBinding& binding) {
  store.execute(
      "DELETE FROM ppp_fast WHERE ppp_dev = :ppp_dev AND :real_dev IN ('', real_dev)"
      "  AND :session_id IN (0, session_id)",
      binding);
  refuse_unless(store.number("SELECT count(*) FROM ppp_fast WHERE ppp_dev = ?", binding.ppp_dev) == 0,
                kNoSuchEntry);
}

void set(Store& store, const PppFastBinding& binding) {
  check_switch(binding.en);
  require_interface(store, text(binding.ppp_dev));
  if (binding.en != 0) {
    bind(store, binding);
  } else {
    unbind(store, binding);
  }
}

// The device named is either of the two.
void get(Store& store, PppFastBinding& binding) {
  Statement row = store.query(
      "SELECT ppp_dev, real_dev, 1 AS en, session_id, dst, src, ether_type, ver_type, code, "
      "header_session_id,"
      "  length, protocol, int "
      "FROM ppp_fast LEFT JOIN ppp_fast_fact USING (ppp_dev) WHERE ?1 IN (real_dev, ppp_dev) "
      "ORDER BY real_dev = ?1 DESC",
      binding.real_dev);
  refuse_unless(row.next(), kNoSuchEntry);
  binding = {};
  row.read_fields(binding);
}

constexpr const char* kSchema[] = {R"(
CREATE TABLE ppp_fast (
  ppp_dev TEXT PRIMARY KEY REFERENCES interface (dev) ON DELETE CASCADE,
  real_dev TEXT NOT NULL UNIQUE REFERENCES interface (dev) ON DELETE CASCADE,
  session_id INTEGER NOT NULL
) WITHOUT ROWID;
CREATE TABLE ppp_fast_fact (              -- what a lab says of sessions
  ppp_dev TEXT PRIMARY KEY,
  dst BLOB NOT NULL,
  src BLOB NOT NULL,
  ether_type INTEGER NOT NULL,
  ver_type INTEGER NOT NULL,
  code INTEGER NOT NULL,
  header_session_id INTEGER NOT NULL,
  length INTEGER NOT NULL,
  protocol INTEGER NOT NULL,
  int INTEGER NOT NULL
) WITHOUT ROWID)"};

constexpr Command kCommands[] = {
    {kPppFastSet, kWrites, run_as<set>},
    {kPppFastGet, kReads, run_as<get>},
};

}  // namespace

const Module kPppFastModule = {kModulePppFast, kCommands, kSchema};
