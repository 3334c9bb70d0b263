# Install rules and the Debian package (cpack in the build tree makes dcf_<version>_<arch>.deb):
#   bin/dcf                                  the archive tool
#   lib/dcf/stubs/<platform>/Vomdrel[.exe]   the stubs, and SHA256SUMS with their digests
#   share/man/man1/dcf.1.gz, Vomdrel.1.gz    manual pages
#   share/bash-completion/completions/dcf    completion of commands and options
#   share/doc/dcf/                           README, copyright, changelog
#   share/lintian/overrides/dcf              what lintian reports that is meant so
# dcf finds the stubs from its own place, so the layout must stay as it is under any prefix.
set(DCF_PACKAGING_DIR "${CMAKE_CURRENT_LIST_DIR}")
set(dcf_doc_dir share/doc/dcf)

install(TARGETS dcf RUNTIME DESTINATION bin)
foreach(stub IN LISTS DCF_STUB_FILES)
    cmake_path(RELATIVE_PATH stub BASE_DIRECTORY "${DCF_STUB_DIR}" OUTPUT_VARIABLE relative)
    cmake_path(GET relative PARENT_PATH platform)
    install(PROGRAMS "${stub}" DESTINATION "lib/dcf/stubs/${platform}")
endforeach()
if(DCF_STUB_FILES)
    install(FILES "${DCF_STUB_DIR}/SHA256SUMS" DESTINATION lib/dcf/stubs)
endif()

# Manual pages (with this version) and the changelog, compressed as Debian wants them: gzip -9,
# without a name or a time.
set(dcf_compressed)
foreach(source dcf.1.in Vomdrel.1.in changelog)
    set(plain "${CMAKE_BINARY_DIR}/packaging/${source}")
    string(REGEX REPLACE "\\.in$" "" plain "${plain}")
    configure_file("${DCF_PACKAGING_DIR}/${source}" "${plain}" @ONLY)
    add_custom_command(OUTPUT "${plain}.gz"
        COMMAND gzip -9n -c "${plain}" > "${plain}.gz"
        DEPENDS "${plain}")
    list(APPEND dcf_compressed "${plain}.gz")
endforeach()
add_custom_target(packaging_files ALL DEPENDS ${dcf_compressed})
install(FILES "${CMAKE_BINARY_DIR}/packaging/dcf.1.gz" "${CMAKE_BINARY_DIR}/packaging/Vomdrel.1.gz"
        DESTINATION share/man/man1)
install(FILES "${DCF_PACKAGING_DIR}/dcf.bash-completion" DESTINATION share/bash-completion/completions
        RENAME dcf)
install(FILES "${DCF_PACKAGING_DIR}/lintian-overrides" DESTINATION share/lintian/overrides RENAME dcf)
install(FILES "${CMAKE_SOURCE_DIR}/README.md" "${DCF_PACKAGING_DIR}/copyright"
              "${CMAKE_BINARY_DIR}/packaging/changelog.gz"
        DESTINATION "${dcf_doc_dir}")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME dcf)
set(CPACK_PACKAGE_VENDOR "dcf developers")
set(DCF_PACKAGE_MAINTAINER "dcf developers <dcf@example.org>" CACHE STRING
    "Maintainer of the Debian package, with a mail address")
set(CPACK_PACKAGE_CONTACT "${DCF_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "encrypted self-extracting archives for Windows and Linux")
set(CPACK_PACKAGE_DESCRIPTION
    "dcf packs folders and files, each with optional data categories, into an\n"
    "archive sealed with a password and/or a recipient's RSA public key. With --sfx\n"
    "the archive is wrapped behind a small stub program, by default for Windows,\n"
    "that extracts it on the recipient's machine and keeps each file's categories\n"
    "in a tag stream. The stubs for 32- and 64-bit Windows and for Linux are\n"
    "included.")
string(REPLACE ";" "" CPACK_PACKAGE_DESCRIPTION "${CPACK_PACKAGE_DESCRIPTION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
include(CPack)
