// What glibc 2.35 and libstdc++ 11 gave new versions to, in a form that older systems have too, so
// that a module made on a new one loads there.

#include <new>

// The same function by the version that every glibc has. The two differ in who sets `errno`, which
// nobody reads.
#if defined(__x86_64__)
__asm__(".symver tandrel_hypot, hypot@GLIBC_2.2.5");
#elif defined(__aarch64__)
__asm__(".symver tandrel_hypot, hypot@GLIBC_2.17");
#endif
extern "C" double tandrel_hypot(double x, double y);

// The linker puts it in the place of `hypot` everywhere in the module.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" double __wrap_hypot(double x, double y) {
  return tandrel_hypot(x, y);
}

// The standard library's headers call it where more elements are asked for than memory can have.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,cert-dcl58-cpp)
namespace std {
void __throw_bad_array_new_length();
void __throw_bad_array_new_length() {
  throw bad_array_new_length();
}
}  // namespace std
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp,cert-dcl58-cpp)
