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
  kInUse,
  kUnknownModule,
  kUnknownCommand,
  kBadRecord,
  kUnknownInterface,
  kUnknownLine,
  kUnknownHost,
  kUnknownUser,
  kUnknownGroup,
  kNoSuchRule,
  kNoSuchRoute,
  kNotALine,
  kNotRunning,
  kBadName,
  kBadText,
  kBadAddress,
  kBadMac,
  kBadMask,
  kBadRange,
  kBadList,
  kEmptyList,
  kBadDestination,
  kBadUrl,
  kBadSwitch,
  kBadType,
  kBadMode,
  kBadNumber,
  kBadTime,
  kBadVlan,
  kOverlap,
  kOutsideNetwork,
  kNoServer,
  kNoAnswer,
};

#ifdef __cplusplus
}
#endif
