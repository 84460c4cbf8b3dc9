# What every target of ours is compiled with.
add_library(vek_warnings INTERFACE)
target_compile_options(vek_warnings INTERFACE
  -Wall -Wextra -Wconversion -Wshadow $<$<BOOL:${VEK_WERROR}>:-Werror>)

# For what runs on the router: no C++ run time, and only the functions that are used.
add_library(vek_freestanding INTERFACE)
target_link_libraries(vek_freestanding INTERFACE vek_warnings)
target_compile_options(vek_freestanding INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions;-fno-rtti;-fno-asynchronous-unwind-tables;-fno-unwind-tables;-fno-threadsafe-statics>
  -ffunction-sections -fdata-sections)
