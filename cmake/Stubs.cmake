# The stubs that dcf puts in front of self-extracting archives: Linux, and Windows for i686 (the
# default, which runs on 32- and 64-bit Windows) and x86_64. Each is built in a tree of its own
# under stubs/, size-optimised and stripped whatever this tree's build type, and lands in
# tools/dcf/stubs/<platform>/ beside dcf, where dcf looks in a build tree. SHA256SUMS there lists
# their digests, which the package ships so that dcf info can recognise them.
#
# DCF_STUB_PLATFORMS and DCF_STUB_FILES name what was built, for the install rules and the tests.
set(DCF_STUB_DIR "${CMAKE_BINARY_DIR}/tools/dcf/stubs")
set(DCF_STUB_PLATFORMS)
set(DCF_STUB_FILES)
if(NOT DCF_STUBS)
    return()
endif()

include(ExternalProject)

# dcf_stub_tree(PLATFORM FILE [cmake arguments...]): the tree stubs/PLATFORM making FILE.
function(dcf_stub_tree platform file)
    set(stub "${DCF_STUB_DIR}/${platform}/${file}")
    ExternalProject_Add(stub_${platform}
        SOURCE_DIR "${CMAKE_SOURCE_DIR}"
        PREFIX "${CMAKE_BINARY_DIR}/stubs/steps"
        BINARY_DIR "${CMAKE_BINARY_DIR}/stubs/${platform}"
        CMAKE_ARGS -DCMAKE_BUILD_TYPE=MinSizeRel -DDCF_BUILD_TESTS=OFF -DDCF_STUBS=OFF
                   "-DDCF_STUB_OUTPUT_DIR=${DCF_STUB_DIR}/${platform}" ${ARGN}
        BUILD_COMMAND "${CMAKE_COMMAND}" --build <BINARY_DIR> --target Vomdrel
        BUILD_ALWAYS TRUE
        BUILD_BYPRODUCTS "${stub}"
        INSTALL_COMMAND ""
        USES_TERMINAL_CONFIGURE TRUE
        USES_TERMINAL_BUILD TRUE)
    set(DCF_STUB_PLATFORMS ${DCF_STUB_PLATFORMS} ${platform} PARENT_SCOPE)
    set(DCF_STUB_FILES ${DCF_STUB_FILES} "${stub}" PARENT_SCOPE)
endfunction()

dcf_stub_tree(linux Vomdrel "-DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}")

if(DCF_WINDOWS_STUBS)
    foreach(compiler i686-w64-mingw32-g++-posix x86_64-w64-mingw32-g++-posix)
        find_program(found_${compiler} ${compiler})
        if(NOT found_${compiler})
            message(FATAL_ERROR
                "The Windows stubs need MinGW-w64 (${compiler} is missing): install "
                "g++-mingw-w64-i686-posix, g++-mingw-w64-x86-64-posix and libz-mingw-w64-dev "
                "(scripts/setup.sh does), or configure with -DDCF_WINDOWS_STUBS=OFF to build "
                "dcf with the Linux stub only.")
        endif()
    endforeach()
    dcf_stub_tree(windows Vomdrel.exe
                  "-DCMAKE_TOOLCHAIN_FILE=${CMAKE_SOURCE_DIR}/cmake/mingw-i686.cmake")
    dcf_stub_tree(windows-x64 Vomdrel.exe
                  "-DCMAKE_TOOLCHAIN_FILE=${CMAKE_SOURCE_DIR}/cmake/mingw-x86_64.cmake")
endif()

add_custom_command(OUTPUT "${DCF_STUB_DIR}/SHA256SUMS"
    COMMAND "${CMAKE_COMMAND}" "-DFOLDER=${DCF_STUB_DIR}" "-DPLATFORMS=${DCF_STUB_PLATFORMS}"
            -P "${CMAKE_SOURCE_DIR}/cmake/StubDigests.cmake"
    DEPENDS ${DCF_STUB_FILES} "${CMAKE_SOURCE_DIR}/cmake/StubDigests.cmake"
    COMMENT "Digests of the stubs"
    VERBATIM)
add_custom_target(stubs ALL DEPENDS "${DCF_STUB_DIR}/SHA256SUMS")
foreach(platform IN LISTS DCF_STUB_PLATFORMS)
    add_dependencies(stubs stub_${platform})
endforeach()

# Each stub, stripped, at most 1 MiB (ctest -R stub_size_budget; the test needs no test build).
enable_testing()
add_test(NAME stub_size_budget
         COMMAND "${CMAKE_COMMAND}" -DBUDGET=1048576 -P "${CMAKE_SOURCE_DIR}/cmake/CheckStubSizes.cmake"
                 ${DCF_STUB_FILES})
