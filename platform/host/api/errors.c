// The texts of the result codes. In C, where a table can name the index of each entry.
#include "api/errors.h"

#include "platform/order.h"

__attribute__((visibility("default"))) const char* const tvlret_err_str[52] = {
    [kNoSuchEntry] = "no such entry",
    [kAlreadyThere] = "already there",
    [kTableFull] = "table full",
    [kInUse] = "in use",
    [kUnknownModule] = "unknown module",
    [kUnknownCommand] = "unknown command",
    [kBadRecord] = "record does not hold what it says",
    [kUnknownInterface] = "unknown interface",
    [kUnknownLine] = "unknown line",
    [kUnknownHost] = "unknown host",
    [kUnknownUser] = "unknown user",
    [kUnknownGroup] = "unknown group",
    [kNoSuchRule] = "no such rule",
    [kNoSuchRoute] = "no such route",
    [kNotALine] = "interface is not a line",
    [kNotRunning] = "not running",
    [kBadName] = "bad name",
    [kBadText] = "control character in a text",
    [kBadAddress] = "bad address",
    [kBadMac] = "bad MAC address",
    [kBadMask] = "bad mask",
    [kBadRange] = "range ends before it starts",
    [kBadList] = "bad list",
    [kEmptyList] = "empty list",
    [kBadDestination] = "bad destination",
    [kBadSwitch] = "switch is neither 0 nor 1",
    [kBadType] = "unknown type",
    [kBadMode] = "unknown mode",
    [kBadNumber] = "number out of range",
    [kBadTime] = "bad time",
    [kBadVlan] = "bad VLAN id",
    [kOverlap] = "overlaps another",
};
