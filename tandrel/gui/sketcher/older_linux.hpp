// Included before everything else in every source: what newer versions of glibc and libstdc++ would
// have the module ask of them is asked in a form that older ones have too, so that a module made on
// a new Linux loads on an old one.
#pragma once

#include <cstddef>

#if defined(__GLIBCXX__)
// Asking for more elements than memory can have is std::bad_alloc, not its subclass.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
#define __throw_bad_array_new_length __throw_bad_alloc
#endif

// The same functions by the version that every glibc has. The two differ in who sets `errno`, which
// nobody reads.
#if defined(__GLIBC__) && defined(__x86_64__) && defined(__LP64__)
__asm__(".symver hypot, hypot@GLIBC_2.2.5");
__asm__(".symver fmod, fmod@GLIBC_2.2.5");
#elif defined(__GLIBC__) && defined(__aarch64__) && defined(__LP64__)
__asm__(".symver hypot, hypot@GLIBC_2.17");
__asm__(".symver fmod, fmod@GLIBC_2.17");
#endif
