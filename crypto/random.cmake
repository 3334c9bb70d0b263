# The random pool: mixing, output, input filters, and the process-wide pool with its poll thread.
list(APPEND CRYPTO_SOURCES
    RandomPool.h
    random/PoolMixing.h random/PoolMixing.cpp
    random/PoolState.h random/PoolState.cpp
    random/InputFilters.h random/InputFilters.cpp
    random/ProcessPool.h random/RandomPool.cpp)
