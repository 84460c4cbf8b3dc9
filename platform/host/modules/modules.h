// The kernel modules that the host library stands in for.
#pragma once

#include <span>

#include "modules/module.h"

extern const Module kGeneralModule;
extern const Module kDevmgModule;
extern const Module kArpModule;
extern const Module kDnsModule;
extern const Module kDhcpModule;
extern const Module kFlushModule;
extern const Module kMrModule;
extern const Module kRuleModule;
extern const Module kHostModule;
extern const Module kQosModule;
extern const Module kUserModule;
extern const Module kBbsFilterModule;
extern const Module kPostfixFilterModule;
extern const Module kPostForbidModule;
extern const Module kMacUserModule;
extern const Module kUrlFilterModule;

std::span<const Module* const> all_modules();

// Begins a transaction on the state that the modules share.
Store open_state(Access access);

// Null when there is no module of this number.
const Module* find_module(uint32_t number);
