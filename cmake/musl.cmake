# Builds static programs for musl with Debian's GCC. Only the header-only part of the compiler's C++ library is
# used, so no C++ library made for musl is needed.
set(VEK_MUSL_ARCH "${VEK_MUSL_ARCH}" CACHE STRING "x86_64 or aarch64")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VEK_MUSL_ARCH)
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR ${VEK_MUSL_ARCH})
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)

set(triple ${VEK_MUSL_ARCH}-linux-gnu)
set(CMAKE_C_COMPILER ${triple}-gcc)
set(CMAKE_CXX_COMPILER ${triple}-g++)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=include
                OUTPUT_VARIABLE compiler_include OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-libgcc-file-name
                OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND sh -c "${CMAKE_CXX_COMPILER} -xc++ -E -v /dev/null 2>&1 | sed -n 's/^ \\(.*c++.*\\)/-isystem \\1/p'"
                OUTPUT_VARIABLE cxx_include OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" " " cxx_include "${cxx_include}")

set(c_include "-isystem /usr/include/${VEK_MUSL_ARCH}-linux-musl -isystem ${compiler_include}")
set(CMAKE_C_FLAGS_INIT "-fno-pie -nostdinc ${c_include}")
# glibc's version test, which the C++ library's headers ask for and musl does not have.
set(CMAKE_CXX_FLAGS_INIT "-fno-pie -nostdinc -nostdinc++ -D'__GLIBC_PREREQ(a,b)=0' ${cxx_include} ${c_include}")

set(musl_lib /usr/lib/${VEK_MUSL_ARCH}-linux-musl)
set(CMAKE_C_LINK_EXECUTABLE
    "<CMAKE_C_COMPILER> -no-pie -nostdlib -static -Wl,-z,noseparate-code,-z,norelro,--build-id=none <LINK_FLAGS> ${musl_lib}/crt1.o ${musl_lib}/crti.o <OBJECTS> -o <TARGET> <LINK_LIBRARIES> ${musl_lib}/libc.a ${libgcc} ${musl_lib}/libc.a ${musl_lib}/crtn.o")
