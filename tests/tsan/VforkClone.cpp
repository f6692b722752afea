// ThreadSanitizer and child processes started the vfork way.
//
// Qt starts a QProcess with clone(CLONE_VM | CLONE_VFORK): until it calls
// exec, the child runs in the parent's memory, on the parent's thread-local
// state. The sanitizer's clone interceptor (libtsan of GCC 12) takes every
// clone for a fork and does its after-fork bookkeeping for the child inside
// the child, that is, on the parent's own records: the thread that started
// the process ignores every lock it takes from then on, so data it hands over
// under a mutex is reported as a race (first the log's delivery queue), and
// the next new thread ends the process ("starting new threads after
// multi-threaded fork is not supported"). A child that shares the parent's
// memory is no fork: those clones go straight to the C library. Every other
// clone still goes through the sanitizer.
//
// Compiled into the test executables of a ThreadSanitizer build only.
#include <dlfcn.h>
#include <sched.h>
#include <sys/types.h>

#include <cstdarg>

namespace {

using CloneFunction = int (*)(int (*)(void*), void*, int, void*, ...);

CloneFunction cloneIn(void* library) {
    return library ? reinterpret_cast<CloneFunction>(dlsym(library, "clone")) : nullptr;
}

}  // namespace

extern "C" int clone(int (*fn)(void*), void* stack, int flags, void* arg, ...) noexcept {
    // The optional arguments, as the system call takes them.
    va_list rest;
    va_start(rest, arg);
    auto* parentTid = va_arg(rest, pid_t*);
    void* tls = va_arg(rest, void*);
    auto* childTid = va_arg(rest, pid_t*);
    va_end(rest);

    static const CloneFunction libc = cloneIn(dlopen("libc.so.6", RTLD_NOW | RTLD_NOLOAD));
    static const CloneFunction sanitizer = cloneIn(RTLD_NEXT);
    const CloneFunction next = (flags & CLONE_VM) || !sanitizer ? libc : sanitizer;
    return next(fn, stack, flags, arg, parentTid, tls, childTid);
}
