dcf_test(crypto_keys_tests
    SOURCES SecurityKeyTest.cpp
    DEPENDS crypto)
