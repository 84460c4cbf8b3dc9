// An order as a caller of the gateway gives it, byte by byte.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "platform/order.h"

// A record of 16 header bytes and a payload, with bytes behind it that nobody may touch.
struct Record {
  Record(uint32_t module, uint32_t command, uint32_t payload_size) : length(16 + payload_size), bytes{} {
    const uint32_t header[] = {module, length, 0, command};
    memcpy(bytes.data(), header, sizeof header);
    memset(&bytes[length], 0xee, bytes.size() - length);
  }
  // Sends it and returns the text of the result, of 0 the empty one.
  std::string send() {
    EXPECT_EQ(tesvel_order_opt_fun(bytes.data(), length), 0);
    for (size_t i = length; i < bytes.size(); ++i) EXPECT_EQ(bytes[i], 0xee) << i;
    return bytes[8] == 0 ? "" : tvlret_err_str[bytes[8]];
  }
  uint32_t length;
  alignas(8) std::array<uint8_t, 1024> bytes;
};
