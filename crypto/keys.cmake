# Key objects, key files, RSA and key generation.
list(APPEND CRYPTO_SOURCES
    SecurityKey.h SecurityKey.cpp)
