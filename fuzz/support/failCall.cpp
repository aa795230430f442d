// A library to be loaded before all others (LD_PRELOAD) that lets one call of the system fail:
// FAULT_KIND says of which kind (memory, open, read, write, sync, close, rename, thread),
// FAULT_CALL the how manieth since main began; with a FAULT_LASTS of 1 all from there on fail. A
// file FAULT_MARK appears when that call came, and FAULT_COUNT tells at the end how many there
// were. Calls for standard error and what libraries do while they are being loaded are left alone:
// what starts before main has nobody to tell.

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

enum Kind { Memory, Open, Read, Write, Sync, Close, Rename, Thread, None };

constexpr char const* kindNames[] = {"memory", "open",   "read",   "write", "sync",
                                     "close",  "rename", "thread", "none"};

Kind wantedKind = None;
long wantedCall = 0;
bool lasts = false;
char const* mark = nullptr;
std::atomic<bool> isInMain = false;
std::atomic<long> nbCalls = 0;
thread_local int nbLoading __attribute__((tls_model("initial-exec"))) = 0;

/// Whether this call is to fail; then errno is `error`.
bool fails(Kind kind, int error)
{
    if (kind != wantedKind || !isInMain || nbLoading > 0) {
        return false;
    }
    long const call = ++nbCalls;
    if (call != wantedCall && !(lasts && call > wantedCall)) {
        return false;
    }
    if (call == wantedCall && mark != nullptr) {
        long const descriptor = ::syscall(SYS_openat, AT_FDCWD, mark, O_CREAT | O_WRONLY, 0600);
        ::syscall(SYS_close, descriptor);
    }
    errno = error;
    return true;
}

/// The function that this library hides.
template <typename Function>
Function* find(Function* /*own*/, char const* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

constexpr int errorFlag = 0x20; // of the C library's streams: what ferror asks for

} // namespace

// The hidden function of the same name.
#define NEXT(name) static auto* const next = find(&name, #name)

extern "C" {

void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void* __libc_memalign(std::size_t, std::size_t);

void* malloc(std::size_t size)
{
    return fails(Memory, ENOMEM) ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size)
{
    return fails(Memory, ENOMEM) ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size)
{
    return fails(Memory, ENOMEM) ? nullptr : __libc_realloc(block, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return fails(Memory, ENOMEM) ? nullptr : __libc_memalign(alignment, size);
}

void* memalign(std::size_t alignment, std::size_t size)
{
    return aligned_alloc(alignment, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size)
{
    *block = aligned_alloc(alignment, size);
    return *block == nullptr ? ENOMEM : 0;
}

int open(char const* file, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    mode_t const mode = va_arg(rest, mode_t);
    va_end(rest);
    NEXT(open);
    return fails(Open, EMFILE) ? -1 : next(file, flags, mode);
}

int openat(int folder, char const* file, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    mode_t const mode = va_arg(rest, mode_t);
    va_end(rest);
    NEXT(openat);
    return fails(Open, EMFILE) ? -1 : next(folder, file, flags, mode);
}

int open64(char const* file, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    mode_t const mode = va_arg(rest, mode_t);
    va_end(rest);
    return open(file, flags, mode);
}

int openat64(int folder, char const* file, int flags, ...)
{
    va_list rest;
    va_start(rest, flags);
    mode_t const mode = va_arg(rest, mode_t);
    va_end(rest);
    return openat(folder, file, flags, mode);
}

FILE* fopen(char const* file, char const* mode)
{
    NEXT(fopen);
    return fails(Open, EMFILE) ? nullptr : next(file, mode);
}

FILE* fopen64(char const* file, char const* mode)
{
    return fopen(file, mode);
}

ssize_t read(int descriptor, void* bytes, std::size_t size)
{
    NEXT(read);
    return fails(Read, EIO) ? -1 : next(descriptor, bytes, size);
}

ssize_t pread(int descriptor, void* bytes, std::size_t size, off_t place)
{
    NEXT(pread);
    return fails(Read, EIO) ? -1 : next(descriptor, bytes, size, place);
}

ssize_t pread64(int descriptor, void* bytes, std::size_t size, off_t place)
{
    return pread(descriptor, bytes, size, place);
}

std::size_t fread(void* bytes, std::size_t size, std::size_t count, FILE* stream)
{
    NEXT(fread);
    if (fails(Read, EIO)) {
        stream->_flags |= errorFlag;
        return 0;
    }
    return next(bytes, size, count, stream);
}

ssize_t write(int descriptor, void const* bytes, std::size_t size)
{
    NEXT(write);
    bool const isMessage = descriptor == STDERR_FILENO;
    return !isMessage && fails(Write, ENOSPC) ? -1 : next(descriptor, bytes, size);
}

ssize_t writev(int descriptor, iovec const* parts, int count)
{
    NEXT(writev);
    bool const isMessage = descriptor == STDERR_FILENO;
    return !isMessage && fails(Write, ENOSPC) ? -1 : next(descriptor, parts, count);
}

ssize_t pwrite(int descriptor, void const* bytes, std::size_t size, off_t place)
{
    NEXT(pwrite);
    return fails(Write, ENOSPC) ? -1 : next(descriptor, bytes, size, place);
}

ssize_t pwrite64(int descriptor, void const* bytes, std::size_t size, off_t place)
{
    return pwrite(descriptor, bytes, size, place);
}

std::size_t fwrite(void const* bytes, std::size_t size, std::size_t count, FILE* stream)
{
    NEXT(fwrite);
    if (stream != stderr && fails(Write, ENOSPC)) {
        stream->_flags |= errorFlag;
        return 0;
    }
    return next(bytes, size, count, stream);
}

int fsync(int descriptor)
{
    NEXT(fsync);
    return fails(Sync, EIO) ? -1 : next(descriptor);
}

int fdatasync(int descriptor)
{
    NEXT(fdatasync);
    return fails(Sync, EIO) ? -1 : next(descriptor);
}

// A close that fails has closed all the same.

int close(int descriptor)
{
    NEXT(close);
    int const result = next(descriptor);
    return fails(Close, EIO) ? -1 : result;
}

int fclose(FILE* stream)
{
    NEXT(fclose);
    int const result = next(stream);
    return fails(Close, EIO) ? EOF : result;
}

int rename(char const* from, char const* to)
{
    NEXT(rename);
    return fails(Rename, EACCES) ? -1 : next(from, to);
}

int pthread_create(pthread_t* thread, pthread_attr_t const* attributes, void* (*body)(void*),
                   void* argument)
{
    NEXT(pthread_create);
    return fails(Thread, EAGAIN) ? EAGAIN : next(thread, attributes, body, argument);
}

void* dlopen(char const* file, int flags)
{
    NEXT(dlopen);
    ++nbLoading;
    void* const library = next(file, flags);
    --nbLoading;
    return library;
}

using Main = int(int, char**, char**);
static Main* programMain = nullptr;

static int watchedMain(int nbArguments, char** arguments, char** environment)
{
    if (char const* const kind = std::getenv("FAULT_KIND")) {
        for (int name = Memory; name < None; ++name) {
            wantedKind =
                std::strcmp(kindNames[name], kind) == 0 ? static_cast<Kind>(name) : wantedKind;
        }
    }
    char const* const call = std::getenv("FAULT_CALL");
    wantedCall = call == nullptr ? 0 : std::atol(call);
    lasts = std::getenv("FAULT_LASTS") != nullptr;
    mark = std::getenv("FAULT_MARK");
    isInMain = true;
    int const status = programMain(nbArguments, arguments, environment);
    isInMain = false;
    if (char const* const file = std::getenv("FAULT_COUNT")) {
        int const descriptor = open(file, O_CREAT | O_TRUNC | O_WRONLY, 0600);
        ::dprintf(descriptor, "%ld", nbCalls.load());
        close(descriptor);
    }
    return status;
}

int __libc_start_main(Main* main, int nbArguments, char** arguments, void (*start)(), void (*end)(),
                      void (*linker)(), void* stack)
{
    NEXT(__libc_start_main);
    programMain = main;
    return next(&watchedMain, nbArguments, arguments, start, end, linker, stack);
}
}
