// Asking DNS servers for the addresses of a name.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/field.h"

constexpr int kMaxResolved = 16;  // addresses of each kind: what a name has beyond is left out

struct Resolved {
  uint32_t ttl;  // the shortest of all its addresses
  uint16_t v4_count;
  uint16_t v6_count;
  Ip4 v4[kMaxResolved];
  Ip6 v6[kMaxResolved];
};

enum ResolveResult : int { kResolved, kNoSuchName, kNobodyAnswers };

// Asks the servers (addresses as text), all of them in every try; a try takes two seconds at the most.
ResolveResult resolve_name(const std::vector<std::string>& servers, const std::string& name, uint32_t tries,
                           Resolved& resolved);

// The part of it that needs the c-ares library, in a library of its own. Its name there is
// "vek_resolve_name"; the servers are separated by commas.
using ResolveName = int(const char* servers, const char* name, uint32_t tries, Resolved* resolved);
