// Linked into every program of a ThreadSanitizer build (see src/CMakeLists.txt);
// compiles to nothing otherwise.
//
// ThreadSanitizer (as shipped with GCC 12) takes every clone() for a fork and
// resets its own bookkeeping in the child. QProcess starts its children with
// clone(CLONE_VM | CLONE_VFORK), whose child shares that bookkeeping with the
// parent: the parent is then taken for a child of a multi-threaded fork, stops
// checking the calling thread and dies at the next thread it starts. Such a
// clone is made a plain fork here, as ThreadSanitizer itself does with vfork():
// the child gets its own copy of memory and the parent is not held up until
// the exec, which QProcess does not need.
#if defined(__SANITIZE_THREAD__)

#include <dlfcn.h>
#include <sched.h>
#include <sys/types.h>

#include <cstdarg>

extern "C" int clone(int (*fn)(void*), void* stack, int flags, void* arg, ...) {
    va_list rest;
    va_start(rest, arg);
    pid_t* parentTid = va_arg(rest, pid_t*);
    void* tls = va_arg(rest, void*);
    pid_t* childTid = va_arg(rest, pid_t*);
    va_end(rest);
    using Clone = int (*)(int (*)(void*), void*, int, void*, ...);
    // ThreadSanitizer's own clone(), which handles a fork properly.
    static const auto next = reinterpret_cast<Clone>(dlsym(RTLD_NEXT, "clone"));
    if ((flags & CLONE_VM) && (flags & CLONE_VFORK))
        flags &= ~(CLONE_VM | CLONE_VFORK);
    return next(fn, stack, flags, arg, parentTid, tls, childTid);
}

#endif
