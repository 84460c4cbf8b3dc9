// The kernel modules that the host library stands in for.
#pragma once

#include <span>

#include "modules/module.h"

extern const Module kGeneralModule;
extern const Module kSwitchModule;
extern const Module kBoardModule;
extern const Module kDevmgModule;
extern const Module kArpModule;
extern const Module kDnsModule;
extern const Module kDhcpModule;
extern const Module kFlushModule;
extern const Module kPppoeModule;
extern const Module kMrModule;
extern const Module kIgmpModule;
extern const Module kRuleModule;
extern const Module kAlgModule;
extern const Module kHostModule;
extern const Module kQosModule;
extern const Module kSpeedRuleModule;
extern const Module kLimitModule;
extern const Module kDdosFyModule;
extern const Module kDdosModule;
extern const Module kUserModule;
extern const Module kSwitchChipModule;
extern const Module kBbsFilterModule;
extern const Module kPostfixFilterModule;
extern const Module kPostForbidModule;
extern const Module kPppoeBridgeModule;
extern const Module kPppFastModule;
extern const Module kMacUserModule;
extern const Module kAuditModule;
extern const Module kNetlinkModule;
extern const Module kUrlFilterModule;

std::span<const Module* const> all_modules();

// Begins a transaction on the state that the modules share.
Store open_state(Access access);

bool has_module(uint32_t number);

// Null when the module has no command of this number.
const Command* find_command(uint32_t module, uint32_t command);
