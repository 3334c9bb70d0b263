# crypto_random_tests: the pool's mixing and output, the input event filters, and the process-wide
# pool with its poll thread.
dcf_test(crypto_random_tests
    SOURCES random/PoolStateTest.cpp random/InputFiltersTest.cpp
            random/ProcessPoolTest.cpp
    DEPENDS crypto)
