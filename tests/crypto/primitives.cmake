# crypto_primitives_tests: published vectors for every cipher and hash, the suites, regions and
# the chunk chain; natively also randomized comparisons with OpenSSL and Crypto++.
set(CRYPTO_PRIMITIVES_TEST_SOURCES
    primitives/HashVectorsTest.cpp
    primitives/CipherVectorsTest.cpp)
dcf_test(crypto_primitives_tests SOURCES ${CRYPTO_PRIMITIVES_TEST_SOURCES} DEPENDS crypto)
