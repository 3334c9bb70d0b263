# crypto_primitives_tests: published vectors for every cipher and hash, the suites, regions and
# the chunk chain. Natively also randomized comparisons with OpenSSL and Crypto++, which the
# Windows build does not have.
set(CRYPTO_PRIMITIVES_TEST_SOURCES
    primitives/HashVectorsTest.cpp
    primitives/CipherVectorsTest.cpp
    primitives/CipherSuiteTest.cpp
    primitives/ChunkChainTest.cpp)
if(NOT WIN32)
    list(APPEND CRYPTO_PRIMITIVES_TEST_SOURCES primitives/LibraryOracleTest.cpp)
endif()
dcf_test(crypto_primitives_tests SOURCES ${CRYPTO_PRIMITIVES_TEST_SOURCES} DEPENDS crypto)
if(NOT WIN32)
    find_package(OpenSSL REQUIRED COMPONENTS Crypto)
    find_library(DCF_CRYPTOPP_LIBRARY NAMES cryptopp crypto++ REQUIRED)
    target_link_libraries(crypto_primitives_tests PRIVATE OpenSSL::Crypto ${DCF_CRYPTOPP_LIBRARY})
endif()
