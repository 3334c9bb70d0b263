# Key objects, key files, RSA and key generation.
list(APPEND CRYPTO_SOURCES
    SecurityKey.h SecurityKey.cpp
    Rsa.h KeyFile.h KeyFile.cpp
    rsa/Limbs.h rsa/Limbs.cpp
    rsa/Reducer.h rsa/Reducer.cpp
    rsa/RowKernels.h rsa/RowKernels.cpp
    rsa/Montgomery.h rsa/Montgomery.cpp
    rsa/NumberTheory.h rsa/NumberTheory.cpp
    rsa/PrivatePower.h rsa/PrivatePower.cpp
    rsa/Primes.h rsa/Primes.cpp
    rsa/PublicModulus.cpp
    rsa/Rsa.cpp
    KeyGeneration.h KeyGeneration.cpp)
