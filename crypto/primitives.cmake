# Ciphers, hashes, suites and the chunk chain.
list(APPEND CRYPTO_SOURCES
    CpuFeatures.cpp
    hash/Sha256.cpp
    hash/Hmac.cpp
    hash/KeyDerivation.cpp
    hash/Sha1.cpp
    hash/Sha1Ni.cpp
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

# Only the AES-NI and SHA extension files are built with the instructions they use; the rest runs
# on any x86. The 32-bit Windows ABI guarantees 4-byte stack alignment only, so those files
# realign their stack.
set(DCF_AESNI_FLAGS -maes -mssse3)
set(DCF_SHANI_FLAGS -msha -mssse3 -msse4.1)
if(WIN32 AND CMAKE_SIZEOF_VOID_P EQUAL 4)
    list(APPEND DCF_AESNI_FLAGS -mstackrealign)
    list(APPEND DCF_SHANI_FLAGS -mstackrealign)
endif()
set_source_files_properties(aes/AesNi.cpp PROPERTIES COMPILE_OPTIONS "${DCF_AESNI_FLAGS}")
set_source_files_properties(hash/Sha1Ni.cpp PROPERTIES COMPILE_OPTIONS "${DCF_SHANI_FLAGS}")
