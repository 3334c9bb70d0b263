# Warnings, static runtime for Windows, sanitizers: one interface target every library links.
add_library(dcf_options INTERFACE)
target_compile_options(dcf_options INTERFACE -Wall -Wextra)
target_include_directories(dcf_options INTERFACE "${CMAKE_SOURCE_DIR}")

if(WIN32)
    # UNICODE Win32 API, no min/max macros, Windows 7 as the floor.
    target_compile_definitions(dcf_options INTERFACE UNICODE _UNICODE NOMINMAX
                                                     WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601)
    target_link_options(dcf_options INTERFACE -static -static-libgcc -static-libstdc++)
endif()

# What a release ships: unused sections dropped, and neither a build path nor (on Windows) a link
# time stamp in the binaries, so that two builds of one commit give the same bytes.
set(dcf_release "$<CONFIG:Release,MinSizeRel>")
target_compile_options(dcf_options INTERFACE
    "$<${dcf_release}:-ffunction-sections;-fdata-sections>"
    "$<${dcf_release}:-ffile-prefix-map=${CMAKE_BINARY_DIR}/=;-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=>")
target_link_options(dcf_options INTERFACE "$<${dcf_release}:LINKER:--gc-sections>")
if(WIN32)
    target_link_options(dcf_options INTERFACE "$<${dcf_release}:LINKER:--no-insert-timestamp>")
else()
    # Debian's hardening: checked buffer functions, stack canaries, read-only relocations.
    target_compile_options(dcf_options INTERFACE
        "$<${dcf_release}:-D_FORTIFY_SOURCE=2;-fstack-protector-strong>")
    target_link_options(dcf_options INTERFACE "$<${dcf_release}:LINKER:-z,relro;LINKER:-z,now>")
endif()
# A stub tree's Vomdrel is shipped as it is linked, so its digest is the installed one's.
if(DCF_STUB_OUTPUT_DIR)
    target_link_options(dcf_options INTERFACE LINKER:--strip-all)
endif()

# The fuzz targets need libFuzzer, which only clang has. The libraries then carry the fuzzer's
# coverage instrumentation with the address and undefined-behaviour checks.
if(DCF_BUILD_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        message(FATAL_ERROR "DCF_BUILD_FUZZ needs clang (CC=clang CXX=clang++)")
    endif()
    if(NOT DCF_SANITIZE)
        set(DCF_SANITIZE fuzzer-no-link,address,undefined)
    endif()
    target_compile_options(dcf_options INTERFACE
        -fsanitize-coverage-ignorelist=${PROJECT_SOURCE_DIR}/tests/fuzz/coverage-ignorelist.txt)
endif()

if(DCF_SANITIZE)
    target_compile_options(dcf_options INTERFACE -fsanitize=${DCF_SANITIZE} -fno-omit-frame-pointer
                                                 -fno-sanitize-recover=all)
    target_link_options(dcf_options INTERFACE -fsanitize=${DCF_SANITIZE})
endif()

# dcf_library(NAME SOURCES... DEPENDS deps...): one static library per subsystem folder.
function(dcf_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC dcf_options ${ARG_DEPENDS})
endfunction()
