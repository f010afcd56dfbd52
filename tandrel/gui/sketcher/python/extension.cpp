#include "python/extension.hpp"

#include <atomic>
#include <cstdlib>

namespace tandrel::py {

namespace {

constexpr std::int64_t kNobody = -1;

// Interpreters with locks of their own may race for the module.
std::atomic<std::int64_t> owning_interpreter = kNobody;
// Read and written by the owning interpreter only; holds a reference for ever.
PyObject* loaded_module = nullptr;

void claim(const Extension& definition, PyObject* module) {
  const std::int64_t interpreter = PyInterpreterState_GetID(PyInterpreterState_Get());
  std::int64_t owner = kNobody;
  if (!owning_interpreter.compare_exchange_strong(owner, interpreter) && owner != interpreter) {
    Error::raise(
        ImportError,
        "Interpreter change detected - this module can only be loaded into one interpreter "
        "per process.");
  }
  if (loaded_module != nullptr) {
    Error::raise(RuntimeError, std::string("Module '") + definition.name +
                                   "' has already been imported. Re-initialisation is not "
                                   "supported.");
  }
  loaded_module = Ref::borrow(module).release();
}

/// Lets the same interpreter try again; another one can't, for names that were made here stay.
void release_claim() noexcept {
  Py_DECREF(std::exchange(loaded_module, nullptr));
}

Ref fill_namespace(const Ref& attributes, const Ref& class_namespace) {
  for_each(attributes, [&](const Ref& name) { class_namespace.set_item(name, attributes[name]); });
  return Ref::none();
}

}  // namespace

namespace detail {

int execute(const Extension& definition, PyObject* module) noexcept try {
  claim(definition, module);
  try {
    definition.load(Ref::borrow(module));
  } catch (...) {
    definition.forget();
    release_claim();
    throw;
  }
  return 0;
} catch (...) {
  restore_as_python_error();
  return -1;
}

bool knows_isolated_interpreters() noexcept {
  char* rest = nullptr;
  const long major = std::strtol(Py_GetVersion(), &rest, 10);
  const long minor = std::strtol(rest + 1, nullptr, 10);  // after the dot
  return std::pair(major, minor) >= std::pair(3L, 12L);
}

}  // namespace detail

Ref make_class(const Ref& name, const Ref& bases, const Ref& attributes) {
  const Ref body = closure<&fill_namespace>(attributes);
  return import_module("types"_n).call("new_class"_n, name, bases, Ref::none(), body);
}

Ref make_static(const Ref& function) {
  return builtin("staticmethod"_n)(function);
}

}  // namespace tandrel::py
