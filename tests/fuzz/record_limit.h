// Comes before every source of the tool that is fuzzed. A list that ends after 4 MiB costs so much time that
// little else would be tried; most inputs meet records of no more than 32 KiB, whose ends are soon reached.
// No payload of fixed layout is as long.
#pragma once

#include "records/order.h"

extern uint32_t record_limit;
#define kMaxRecordSize record_limit
