// What the audit keeps of what was seen, for those who put some in place.
#pragma once

#include <cstdint>
#include <vector>

#include "records/audit.h"
#include "state/store.h"

// Adds a record to the answer of the command (of the stream, to the section of that type), unless the host is
// none that is audited. `tm` is when it was seen.
void add_audit_record(Store& store, uint32_t command, uint16_t type, const IpAddress& host, uint64_t tm,
                      const std::vector<uint8_t>& record);

// Deletes what is more than the quotas allow. To be called when records have been added.
void keep_audit_quotas(Store& store);
