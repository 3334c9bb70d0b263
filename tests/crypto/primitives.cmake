# crypto_primitives_tests: dcf_test(...)
