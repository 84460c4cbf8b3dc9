// The loadable kernel modules of a plain Linux host: names in a list, in which the filter module and the
// audit module, which needs it, stand from the first. Everything throws when it cannot be done; the text says
// why.
#pragma once

#include <string>

// Loads the module in a file, by the file's name; anything but a relocatable ELF object is refused, and so is
// one that is loaded.
void load_kernel_module(const std::string& path);

// By its name, or that of its file. One that another needs stays.
void unload_kernel_module(const std::string& name);

// No difference when it was so already. It can only be attached while the filter module is loaded.
void attach_audit_module();
void detach_audit_module();

// As /proc/modules has them, the newest first.
std::string kernel_module_list();
