// Who is logged in, for the portal and for those who put sessions in place.
#pragma once

#include <cstdint>
#include <string_view>

#include "modules/host.h"
#include "records/field.h"
#include "state/store.h"

// A session: a host that is logged in.
struct Session {
  uint32_t userid;   // 0: without an account
  uint32_t service;  // the account's flag for it
  Ip4 ip;            // zero when the host is not known by it, and so the MAC address
  Mac mac;
  uint32_t seconds;  // how long it lasts; 0: until it is ended
  uint64_t up;       // present rates
  uint64_t down;
  uint64_t send;  // bytes since the login
  uint64_t recv;
  uint8_t lab;  // 1: a lab has put it in place

  static constexpr void each_field(auto& r, auto&& field) {
    field("userid", r.userid), field("service", r.service), field("ip", r.ip), field("mac", r.mac),
        field("seconds", r.seconds), field("up", r.up), field("down", r.down), field("send", r.send),
        field("recv", r.recv), field("lab", r.lab);
  }
};

// Begins a session, in place of whatever the host is logged in as.
void begin_session(Store& store, const Session& session);

// Deletes the sessions whose time is over, and those that their accounts do not allow any more. Whoever looks
// at sessions does this first.
void end_sessions(Store& store);

// The account's number when it allows the host this service, else 0.
uint32_t account_for(Store& store, std::string_view name, uint32_t service, const HostAddress& host);
