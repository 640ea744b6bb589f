// Part of every test that ThreadSanitizer watches. Qt 6 starts a process by clone() within its own
// memory, as vfork() does. The clone() of ThreadSanitizer (g++ 12) takes that memory for a copy:
// what it switches off for the child alone stays off for the thread that started the process. None
// of that thread's locks is seen any more, and what they guard is reported as a race. The C
// library's own function does not touch ThreadSanitizer's state.

#include <sched.h>
#include <sys/types.h>

#include <cstdarg>

extern "C" int __clone(int (*function)(void*), void* stack, int flags, void* argument,
                       ...) noexcept;

extern "C" __attribute__((visibility("default"))) int clone(int (*function)(void*), void* stack,
                                                            int flags, void* argument, ...) noexcept
{
    va_list more;
    va_start(more, argument);
    pid_t* const parent = va_arg(more, pid_t*);
    void* const storage = va_arg(more, void*);
    pid_t* const child = va_arg(more, pid_t*);
    va_end(more);
    return __clone(function, stack, flags, argument, parent, storage, child);
}
