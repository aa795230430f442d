#include "session/FreedMemory.h"

#include <cstdlib>
#ifdef __GLIBC__
#include <malloc.h>
#endif

void keepFreedMemory()
{
#ifdef __GLIBC__
    constexpr int mebibyte = 1 << 20;
    mallopt(M_MMAP_THRESHOLD, 16 * mebibyte); // larger pieces are the system's again when freed
    mallopt(M_TRIM_THRESHOLD, 64 * mebibyte); // kept at the end of a thread's pool
#endif
}
