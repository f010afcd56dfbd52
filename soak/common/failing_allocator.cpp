// Makes the n-th allocation of the module fail. To be preloaded, and then armed from Python through
// ctypes.
//
// Counted are allocations of the interpreter's three allocators and of operator new for which the
// module asked itself: walking the stack outwards there is nothing but the interpreter's own C code
// between the allocation and the module. What Python code, numpy or tkinter allocate when the
// module calls them isn't the module's.

#include <Python.h>
#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <unwind.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <new>

namespace {

constexpr int kMostFrames = 60;

long count = 0;
long failing = 0;  // 0: none
bool lasting = false;
bool armed = false;
std::uintptr_t eval_start = 0;
std::uintptr_t eval_end = 0;

enum class Owner { kModule, kSupport, kOther };

/// To which of the three the code at this address belongs.
Owner owner(void* address) {
  struct dl_find_object found;
  if (_dl_find_object(address, &found) != 0) return Owner::kOther;
  const char* path = found.dlfo_link_map->l_name;
  if (*path == '\0') {  // the interpreter's own file
    const auto place = reinterpret_cast<std::uintptr_t>(address);
    return eval_start <= place && place < eval_end ? Owner::kOther : Owner::kSupport;
  }
  if (std::strstr(path, "sketcher.abi3.so") != nullptr) return Owner::kModule;
  for (const char* name : {"failing_allocator.so", "libc.so", "libstdc++.so", "libgcc_s.so"}) {
    if (std::strstr(path, name) != nullptr) return Owner::kSupport;
  }
  return Owner::kOther;
}

struct Walk {
  int frames = 0;
  bool by_module = false;
};

_Unwind_Reason_Code visit(_Unwind_Context* frame, void* argument) {
  auto& walk = *static_cast<Walk*>(argument);
  const Owner found = owner(reinterpret_cast<void*>(_Unwind_GetIP(frame) - 1));
  walk.by_module = found == Owner::kModule;
  const bool goes_on = found == Owner::kSupport && ++walk.frames < kMostFrames;
  return goes_on ? _URC_NO_REASON : _URC_END_OF_STACK;
}

bool fails() {
  if (!armed) return false;
  armed = false;  // the walk may allocate
  Walk walk;
  _Unwind_Backtrace(visit, &walk);
  armed = true;
  if (!walk.by_module) return false;
  ++count;
  return failing != 0 && (count == failing || (lasting && count > failing));
}

PyMemAllocatorEx real[3];

PyMemAllocatorEx& domain(void* context) {
  return *static_cast<PyMemAllocatorEx*>(context);
}

void* allocate(void* context, size_t size) {
  return fails() ? nullptr : domain(context).malloc(domain(context).ctx, size);
}

void* allocate_zeroed(void* context, size_t number, size_t size) {
  return fails() ? nullptr : domain(context).calloc(domain(context).ctx, number, size);
}

void* reallocate(void* context, void* block, size_t size) {
  return fails() ? nullptr : domain(context).realloc(domain(context).ctx, block, size);
}

void release(void* context, void* block) {
  domain(context).free(domain(context).ctx, block);
}

}  // namespace

void* operator new(std::size_t size) {
  void* block = fails() ? nullptr : std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void* operator new[](std::size_t size) {
  return operator new(size);
}

extern "C" {

/// Puts itself before the interpreter's allocators. False where the interpreter's evaluation
/// function isn't found, without which nobody knows who asks.
int install() {
  Dl_info info;
  ElfW(Sym)* symbol = nullptr;
  void* eval = dlsym(RTLD_DEFAULT, "_PyEval_EvalFrameDefault");
  if (eval == nullptr) return 0;
  if (dladdr1(eval, &info, reinterpret_cast<void**>(&symbol), RTLD_DL_SYMENT) == 0) return 0;
  if (symbol == nullptr) return 0;
  eval_start = reinterpret_cast<std::uintptr_t>(eval);
  eval_end = eval_start + symbol->st_size;
  for (int i = 0; i < 3; ++i) {
    const auto which = static_cast<PyMemAllocatorDomain>(i);
    PyMem_GetAllocator(which, &real[i]);
    PyMemAllocatorEx failing_allocator = {&real[i], allocate, allocate_zeroed, reallocate, release};
    PyMem_SetAllocator(which, &failing_allocator);
  }
  return 1;
}

/// From now on the n-th allocation fails, and all after it where failing lasts; none with n = 0.
void arm(long n, int lasts) {
  count = 0;
  failing = n;
  lasting = lasts != 0;
  armed = true;
}

/// How many allocations there were since.
long disarm() {
  armed = false;
  return count;
}

}  // extern "C"
