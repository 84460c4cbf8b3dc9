// The sections of a scenario: what each module takes from it. A module that is to have one gets a row in
// vek_lab.cpp.
#pragma once

#include "lab/scenario.h"
#include "state/store.h"

struct Section {
  const char* name;                                 // the scenario's member, and what show calls it
  void (*load)(Store& store, const Node& section);  // puts in place what it says
  void (*clear)(Store& store);                      // takes away what was put in place
  int64_t (*count)(Store& store);                   // how much there is of it
};

extern const Section kHostsSection;
extern const Section kThirdSection;
extern const Section kCountersSection;
extern const Section kLinesSection;
extern const Section kAccountsSection;
extern const Section kRulesSection;
extern const Section kProfilesSection;
extern const Section kTypesSection;
extern const Section kPppoeSection;
extern const Section kPppoeBridgeSection;
extern const Section kPppFastSection;
extern const Section kAuditSection;
extern const Section kLeasesSection;
extern const Section kDhcpSection;
extern const Section kDnsCacheSection;
extern const Section kSignalsSection;
extern const Section kDelaysSection;
extern const Section kSwitchPortsSection;
