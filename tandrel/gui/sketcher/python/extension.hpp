// An extension module that loads once in a process, in one interpreter, and has one class.
#pragma once

#include "python/method.hpp"

namespace tandrel::py {

struct Extension {
  const char* name;  // without its packages
  const char* doc;
  void (*load)(const Ref& module);
};

/// What `PyInit_<name>` returns, for multi-phase initialisation. Loading a second module object
/// raises RuntimeError, loading in a second interpreter ImportError, both before `load` is called;
/// executing the loaded module object again does nothing. After a load that failed the same
/// interpreter may try again.
template <const Extension& Definition>
PyObject* initialise() noexcept;

/// The namespace of the loaded module; an empty handle after a load that failed.
const Ref& loaded_names();

/// Makes the loaded module's class as the statement `class name(base)` makes it: the metaclass of
/// the base decides what comes of it, which need not be a type. Each method binds to any object, so
/// that it serves objects of other classes too.
Ref make_class(const char* name, const Ref& base, const char* doc,
               std::initializer_list<const Methods*> units);
/// `super(C, object)` for that class C.
Ref super(const Ref& object);
/// Whether looking `name`, one of that class's methods, up on `object` finds the class's own, not
/// one that a subclass or the object itself puts in its place.
bool has_own(const Ref& object, const Ref& name);

namespace detail {
int execute(const Extension& definition, PyObject* module) noexcept;
/// Whether the running interpreter knows the slot that opens a module to isolated interpreters.
bool knows_isolated_interpreters() noexcept;
}  // namespace detail

template <const Extension& Definition>
PyObject* initialise() noexcept {
  static constexpr auto execute = [](PyObject* module) noexcept {
    return detail::execute(Definition, module);
  };
  // Since 3.12 an isolated interpreter refuses, in its own words, a module that doesn't declare
  // itself fit for one; declared so, the module is asked and gives its own refusal. The numbers are
  // those of Py_mod_multiple_interpreters and Py_MOD_PER_INTERPRETER_GIL_SUPPORTED, which 3.9
  // doesn't define and interpreters before 3.12 reject.
  static PyModuleDef_Slot slots[] = {
      {Py_mod_exec, reinterpret_cast<void*>(static_cast<int (*)(PyObject*)>(execute))},
      {detail::knows_isolated_interpreters() ? 3 : 0, reinterpret_cast<void*>(2)},
      {0, nullptr}};
  static PyModuleDef definition{PyModuleDef_HEAD_INIT,
                                Definition.name,
                                Definition.doc,
                                0,
                                nullptr,
                                slots,
                                nullptr,
                                nullptr,
                                nullptr};
  return PyModuleDef_Init(&definition);
}

}  // namespace tandrel::py
