# crypto_keys_tests: dcf_test(...)
