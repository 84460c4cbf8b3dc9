// The package that a filter module comes in: this header, then the module, compressed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "records/field.h"

struct UpgradePackageHeader {
  char is_pg2_ko[8];
  char md5[32];  // of what follows the header, in lower-case digits that fill the field
  char version[16];
  char platform[12];
  int32_t packing;  // UpgradePacking; anything else is a tar archive, packed by bzip2
  Unused<56> unused;

  static constexpr void each_field(auto& r, auto&& field) {
    field("is_pg2_ko", r.is_pg2_ko), field("md5", r.md5), field("version", r.version);
    field("platform", r.platform), field("packing", r.packing), field("", r.unused);
  }
};
static_assert(sizeof(UpgradePackageHeader) == 128 && offsetof(UpgradePackageHeader, version) == 40 &&
              offsetof(UpgradePackageHeader, packing) == 68);
static_assert(is_described<UpgradePackageHeader>());

enum UpgradePacking : int32_t { kPackedByLzma = 1 };

// The only platform that there are packages for.
constexpr char kUpgradePlatform[] = "rkchip";
