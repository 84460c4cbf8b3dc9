// The settings of the DNS proxy, for the server that they are for.
#pragma once

#include <string>
#include <vector>

#include "records/dns.h"
#include "state/store.h"

// All zero when they were never set.
DnsSettings dns_settings(Store& store);

// The servers to ask, as text.
std::vector<std::string> dns_servers(const DnsSettings& settings);
