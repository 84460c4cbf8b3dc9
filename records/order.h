// The record that travels through the order gateway: its header, and the numbers of the kernel modules.
#pragma once

#include <cstdint>

constexpr uint32_t kModuleGeneral = 1;
constexpr uint32_t kModuleDevmg = 2;
constexpr uint32_t kModuleArp = 3;
constexpr uint32_t kModuleDns = 4;
constexpr uint32_t kModuleDhcp = 5;
constexpr uint32_t kModuleFlush = 7;
constexpr uint32_t kModulePppoe = 9;
constexpr uint32_t kModuleMr = 10;
constexpr uint32_t kModuleRule = 11;
constexpr uint32_t kModuleDdosFy = 12;
constexpr uint32_t kModuleHost = 13;
constexpr uint32_t kModuleQos = 14;
constexpr uint32_t kModuleUser = 16;
constexpr uint32_t kModuleSwitchChip = 32;
constexpr uint32_t kModuleBbsFilter = 35;
constexpr uint32_t kModulePostfixFilter = 36;
constexpr uint32_t kModulePostForbid = 37;
constexpr uint32_t kModulePppoeBridge = 41;
constexpr uint32_t kModulePppFast = 45;
constexpr uint32_t kModuleDdos = 56;
constexpr uint32_t kModuleMacUser = 62;
constexpr uint32_t kModuleAudit = 69;
constexpr uint32_t kModuleNetlink = 74;
constexpr uint32_t kModuleUrlFilter = 82;

// All header fields are in the machine's byte order.
struct OrderRecord {
  uint32_t module;
  uint32_t length;  // of the whole record, header included
  uint32_t result;  // 0 in the request; in the answer 0 for success, else an index into tvlret_err_str
  uint32_t command;
  // the payload follows: the request's arguments, then in the same place the answer
};
static_assert(sizeof(OrderRecord) == 16);

constexpr uint32_t kMaxRecordSize = 0x400000;

// Where most lists stand in their answer's payload: an i32 count, and the entries back to back.
constexpr uint32_t kListCountOffset = 4;
constexpr uint32_t kListEntriesOffset = 8;
