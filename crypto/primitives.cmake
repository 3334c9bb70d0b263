# Ciphers, hashes, suites and the chunk chain: list(APPEND CRYPTO_SOURCES ...).
