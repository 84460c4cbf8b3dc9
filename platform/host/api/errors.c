// The texts of the result codes. In C, where a table can name the index of each entry.
#include "api/errors.h"

#include "platform/order.h"

__attribute__((visibility("default"))) const char* const tvlret_err_str[52] = {
    [kNoSuchEntry] = "no such entry",
    [kAlreadyThere] = "already there",
    [kTableFull] = "table full",
    [kBadValue] = "bad value",
    [kUnknownModule] = "unknown module",
    [kUnknownCommand] = "unknown command",
    [kNotSupported] = "not supported here",
    [kUnknownInterface] = "unknown interface",
    [kUnknownLine] = "unknown line",
    [kUnknownDevice] = "unknown device",
    [kUnknownHost] = "unknown host",
    [kUnknownUser] = "unknown user",
    [kUnknownGroup] = "unknown group",
    [kNoSuchRule] = "no such rule",
    [kInUse] = "in use",
    [kNotRunning] = "not running",
    [kSwitchedOff] = "switched off",
    [kBadAddress] = "bad address",
    [kBadName] = "bad name",
    [kNotALine] = "interface is not a line",
    [kNoSuchRoute] = "no such route",
};
