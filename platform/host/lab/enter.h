// vek-lab enter: a router of its own to work in.
#pragma once

#include <string>
#include <vector>

// Runs a command, or a shell where there is none, in namespaces of its own; "--routing" in front of it starts
// the routing daemons there. Returns its exit status; throws where something is missing.
int enter(std::vector<std::string> command);
