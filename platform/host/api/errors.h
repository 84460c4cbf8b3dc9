// What a kernel module refuses, and why: the result codes of the order gateway. errors.c has their texts.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

enum Result {
  kOk,
  kNoSuchEntry,
  kAlreadyThere,
  kTableFull,
  kBadValue,
  kUnknownModule,
  kUnknownCommand,
  kNotSupported,
  kUnknownInterface,
  kUnknownLine,
  kUnknownDevice,
  kUnknownHost,
  kUnknownUser,
  kUnknownGroup,
  kNoSuchRule,
  kInUse,
  kNotRunning,
  kSwitchedOff,
  kBadAddress,
  kBadName,
  kNotALine,
  kNoSuchRoute,
};

#ifdef __cplusplus
}
#endif
