#include "python/extension.hpp"

#include <atomic>
#include <charconv>
#include <cstring>
#include <string_view>
#include <unordered_map>

namespace tandrel::py {

namespace {

constexpr std::int64_t kNobody = -1;

struct OwnMethod {
  Ref name;  // keeps the key alive
  const Signature* signature;
};

/// What the process keeps of the loaded module.
struct Loaded {
  /// Interpreters with locks of their own may race for the module; the others are the winner's. It
  /// stays when a load fails, for names that were made then stay too.
  std::atomic<std::int64_t> interpreter = kNobody;
  Ref module;
  Ref names;  // its namespace
  Ref own_class;
  /// The class's methods by interned name, of which there is one object for each text.
  std::unordered_map<const PyObject*, OwnMethod> methods;

  void forget() noexcept {
    module = names = own_class = Ref();
    methods.clear();
  }
};

/// Never destroyed: at process exit the interpreter may be gone before C++ statics are.
Loaded& loaded() {
  static Loaded& the_one = *new Loaded;
  return the_one;
}

void claim(const Extension& definition, const Ref& module) {
  const std::int64_t interpreter = PyInterpreterState_GetID(PyInterpreterState_Get());
  std::int64_t owner = kNobody;
  if (!loaded().interpreter.compare_exchange_strong(owner, interpreter) && owner != interpreter) {
    Error::raise(
        ImportError,
        "Interpreter change detected - this module can only be loaded into one interpreter "
        "per process.");
  }
  if (loaded().module) {
    Error::raise(RuntimeError, std::string("Module '") + definition.name +
                                   "' has already been imported. Re-initialisation is not "
                                   "supported.");
  }
  loaded().module = module;
}

Ref fill_namespace(const Ref& attributes, const Ref& class_namespace) {
  for_each(attributes, [&](const Ref& name) { class_namespace.set_item(name, attributes[name]); });
  return Ref::none();
}

void add_methods(const Ref& attributes, const Methods& unit) {
  for (const Signature* method : unit) {
    const Ref name = interned(method->name());
    loaded().methods.insert_or_assign(name.get(), OwnMethod{name, method});
    attributes.set_item(name, method->binding() == Signature::Binding::kStatic
                                  ? builtin("staticmethod"_n)(method->function(loaded().module))
                                  : method->descriptor());
  }
}

}  // namespace

namespace detail {

int execute(const Extension& definition, PyObject* module) noexcept try {
  claim(definition, Ref::borrow(module));
  try {
    loaded().names = loaded().module.attr("__dict__"_n);
    definition.load(loaded().module);
  } catch (...) {
    loaded().forget();
    throw;
  }
  return 0;
} catch (...) {
  restore_as_python_error();
  return -1;
}

bool knows_isolated_interpreters() noexcept {
  const char* const version = Py_GetVersion();
  const char* const end = version + std::strlen(version);
  int major = 0;
  int minor = 0;
  const char* const dot = std::from_chars(version, end, major).ptr;
  std::from_chars(dot + 1, end, minor);
  return std::pair(major, minor) >= std::pair(3, 12);
}

}  // namespace detail

const Ref& loaded_names() {
  return loaded().names;
}

Ref make_class(const char* name, const Ref& base, const char* doc,
               std::initializer_list<const Methods*> units) {
  const Ref attributes = dict({"__module__"_a = loaded().module.attr("__name__"_n),
                               "__qualname__"_a = name, "__doc__"_a = doc});
  for (const Methods* unit : units) add_methods(attributes, *unit);
  const Ref body = closure<&fill_namespace>(attributes);
  const Ref types = import_module("types"_n);
  loaded().own_class = types.call("new_class"_n, name, tuple(base), Ref::none(), body);
  return loaded().own_class;
}

Ref super(const Ref& object) {
  return builtin("super"_n)(loaded().own_class, object);
}

bool has_own(const Ref& object, const Ref& name) {
  const Signature& own = *loaded().methods.at(name.get()).signature;
  const Ref found = object.attr(name);
  if (Py_TYPE(found.get()) != &PyCFunction_Type) return false;
  if (PyCFunction_GetFunction(found.get()) != own.entry()) return false;
  return own.binding() == Signature::Binding::kStatic ||
         PyCFunction_GetSelf(found.get()) == object.get();
}

}  // namespace tandrel::py
