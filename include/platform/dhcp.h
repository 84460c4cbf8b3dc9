// The DHCP server process, which serves what the DHCP commands have set.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

// Start and stop the process. Starting one that runs and stopping one that does not are no errors. Return 0
// on success, -1 on failure, which they report on standard error; what ran before still runs then.
int start_dhcp_server(void);
int stop_dhcp_server(void);

#ifdef __cplusplus
}
#endif
