dcf_test(crypto_keys_tests
    SOURCES SecurityKeyTest.cpp KeyFileTest.cpp RsaTest.cpp
    DEPENDS crypto)
