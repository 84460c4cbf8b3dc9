// The dnsmasq that serves what the DHCP server and the DNS proxy have been set to.
#pragma once

#include <string_view>
#include <vector>

#include "records/dhcp.h"
#include "state/store.h"

// Start it with the present settings, and end it; nothing happens where it runs already, or does not. What
// goes wrong is thrown as a text for the user, and then nothing has changed. Those who write to the store
// wait meanwhile.
void start_dnsmasq(Store& store);
void stop_dnsmasq(Store& store);

// Once settings have changed: one that runs gets the new ones at once.
void follow_settings(Store& store);

// Makes one that runs forget the names that it has asked for.
void clear_dnsmasq_cache(Store& store);

// The leases that it has handed out and that last, whether it runs or not, in the order of their addresses.
// What it does not say of them is zero; their start is their end.
std::vector<DhcpLease> dnsmasq_leases(Store& store);
