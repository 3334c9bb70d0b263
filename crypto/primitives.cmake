# Ciphers, hashes, suites and the chunk chain.
list(APPEND CRYPTO_SOURCES
    CpuFeatures.cpp
    hash/Sha256.cpp
    hash/Hmac.cpp
    hash/KeyDerivation.cpp
    hash/Sha1.cpp
    hash/Crc32.cpp
    aes/Aes.cpp
    aes/AesNi.cpp
    serpent/Serpent.cpp
    twofish/Twofish.cpp
    mars/Mars.cpp
    blowfish/Blowfish.cpp
    cast/Cast5.cpp
    cast/Cast6.cpp
    rc/Rc5.cpp
    rc/Rc6.cpp
    suite/CipherTable.cpp
    suite/Region.cpp
    suite/ChunkChain.cpp)

# Only the AES-NI file is built with the instructions it uses; the rest runs on any x86. The
# 32-bit Windows ABI guarantees 4-byte stack alignment only, so that file realigns its stack.
set(DCF_AESNI_FLAGS -maes -mssse3)
if(WIN32 AND CMAKE_SIZEOF_VOID_P EQUAL 4)
    list(APPEND DCF_AESNI_FLAGS -mstackrealign)
endif()
set_source_files_properties(aes/AesNi.cpp PROPERTIES COMPILE_OPTIONS "${DCF_AESNI_FLAGS}")
