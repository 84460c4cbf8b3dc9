// The listener of the audit, as far as a test needs one.
#pragma once

// Prints the notices that arrive, a line each, until it is told to end (SIGINT, SIGTERM).
void audit_listen(const char*);
