#include "ByteSource.hpp"

#include <cstdio>
#include <cstdlib>

void FailPromise(const char* szWhat)
{
    std::fprintf(stderr, "broken promise: %s\n", szWhat);
    std::abort();
}
