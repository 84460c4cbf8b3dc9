// The sub-commands of qos that are about speed rules and what traffic is recognised by.
#pragma once

#include <span>

#include "order/order.h"

extern const std::span<const SubCommand> kSpeedRuleCommands;
