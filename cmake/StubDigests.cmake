# cmake -DFOLDER=... -DPLATFORMS=a;b -P StubDigests.cmake: writes FOLDER/SHA256SUMS, one line
# "<SHA-256>  <platform>/<file>" per stub, in the form of sha256sum.
set(lines "")
foreach(platform IN LISTS PLATFORMS)
    file(GLOB stub RELATIVE "${FOLDER}" "${FOLDER}/${platform}/Vomdrel*")
    if(NOT stub)
        message(FATAL_ERROR "no stub in ${FOLDER}/${platform}")
    endif()
    file(SHA256 "${FOLDER}/${stub}" digest)
    string(APPEND lines "${digest}  ${stub}\n")
endforeach()
file(WRITE "${FOLDER}/SHA256SUMS" "${lines}")
