// C++ functions as Python functions and methods: rows of name, parameters and doc.
//
//   const Methods& view_methods() {
//     static const Methods& table = *new Methods{
//         method<&fit>("fit", {}, "Show everything, with a margin."),
//         method<&snapped>("snapped", {"x", "y"}, "The plane point that a pixel stands for."),
//     };
//     return table;
//   }
//
// A method's C++ function takes its object first, as any type that is constructed from a Ref, then
// a Ref for each parameter. A parameter written with a default ("keep=False") may be left out of a
// call: the function then gets an empty Ref.
#pragma once

#include <array>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "python/error.hpp"
#include "python/object.hpp"

namespace tandrel::py {

/// Everything Python keeps pointers to while a function lives, so it is never moved and never
/// freed.
class Signature {
 public:
  enum class Binding { kMethod, kStatic };

  Signature(const char* name, std::initializer_list<const char*> parameters, const char* doc,
            Binding kind, PyCFunction code);
  Signature(const Signature&) = delete;
  Signature& operator=(const Signature&) = delete;

  /// Spreads a call's arguments over the parameters: borrowed objects, null where left out.
  template <std::size_t N>
  std::array<PyObject*, N> parse(PyObject* arguments, PyObject* keywords) const {
    std::array<PyObject*, N> values{};
    if (!parse_into(values, arguments, keywords, std::make_index_sequence<N>())) {
      throw Error::pending();
    }
    return values;
  }

  const char* name() const { return definition_.ml_name; }
  Binding binding() const { return binding_; }
  PyCFunction entry() const { return definition_.ml_meth; }
  /// A descriptor that binds to any object, so that a method serves objects of other classes too.
  Ref descriptor() const;
  /// A function that belongs to `module`.
  Ref function(const Ref& module) const;

 private:
  template <std::size_t N, std::size_t... I>
  bool parse_into(std::array<PyObject*, N>& values, PyObject* arguments, PyObject* keywords,
                  std::index_sequence<I...>) const {
    return PyArg_ParseTupleAndKeywords(arguments, keywords, format_.c_str(),
                                       const_cast<char**>(names_.data()), &values[I]...) != 0;
  }

  std::vector<std::string> parameter_names_;
  std::vector<const char*> names_;
  std::string format_;
  std::string doc_;
  Binding binding_;
  mutable PyMethodDef definition_;  // Python's functions take it unqualified but leave it alone
};

using Methods = std::vector<const Signature*>;

namespace detail {

template <class Function>
struct Traits;
template <class R, class... Parameters>
struct Traits<R (*)(Parameters...)> {
  static constexpr std::size_t count = sizeof...(Parameters);
};
template <class Function>
struct MethodTraits;
template <class R, class Self, class... Parameters>
struct MethodTraits<R (*)(Self, Parameters...)> {
  using Object = std::remove_cvref_t<Self>;
  static constexpr std::size_t count = sizeof...(Parameters);
};

template <auto Operation>
inline const Signature* signature = nullptr;

inline Ref argument(PyObject* value) {
  return value == nullptr ? Ref() : Ref::borrow(value);
}

/// Calls and turns the result into an object: void is None.
template <class Call>
PyObject* returned(Call call) {
  if constexpr (std::is_void_v<decltype(call())>) {
    call();
    return Ref::none().release();
  } else {
    return Ref(to_python(call())).release();
  }
}

/// Calls `Operation(first..., parameters...)` with the parameters parsed from a Python call.
template <auto Operation, std::size_t N, std::size_t... I, class... First>
PyObject* spread(const std::array<PyObject*, N>& values, std::index_sequence<I...>,
                 const First&... first) {
  return returned([&] { return Operation(first..., argument(values[I])...); });
}

/// One operation on the way, within others of the same thread. RecursionError for too many: the
/// interpreter's own limit is no guard for this stack (3.13 lets C functions nest ten thousand
/// times).
class Nesting {
 public:
  Nesting() {
    if (depth_ >= kDeepest) Error::raise(RecursionError, "maximum recursion depth exceeded");
    ++depth_;
  }
  ~Nesting() { --depth_; }
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;

 private:
  static constexpr int kDeepest = 1000;
  static inline thread_local int depth_ = 0;
};

template <auto Operation, std::size_t N, class... First>
PyObject* enter(PyObject* arguments, PyObject* keywords, const First&... first) noexcept try {
  const Nesting nesting;
  const auto values = signature<Operation>->template parse<N>(arguments, keywords);
  return spread<Operation>(values, std::make_index_sequence<N>(), first...);
} catch (...) {
  restore_as_python_error();
  return nullptr;
}

template <auto Operation>
PyObject* method_entry(PyObject* self, PyObject* arguments, PyObject* keywords) noexcept {
  using Traits = MethodTraits<decltype(Operation)>;
  const typename Traits::Object object(Ref::borrow(self));
  return enter<Operation, Traits::count>(arguments, keywords, object);
}

template <auto Operation>
PyObject* static_entry(PyObject*, PyObject* arguments, PyObject* keywords) noexcept {
  return enter<Operation, Traits<decltype(Operation)>::count>(arguments, keywords);
}

inline PyCFunction as_entry(PyCFunctionWithKeywords function) {
  // METH_KEYWORDS tells Python which of the two types it is.
  return reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(function));
}

}  // namespace detail

template <auto Operation>
const Signature* method(const char* name, std::initializer_list<const char*> parameters,
                        const char* doc) {
  return detail::signature<Operation> =
             new Signature(name, parameters, doc, Signature::Binding::kMethod,
                           detail::as_entry(&detail::method_entry<Operation>));
}

template <auto Operation>
const Signature* static_method(const char* name, std::initializer_list<const char*> parameters,
                               const char* doc) {
  return detail::signature<Operation> =
             new Signature(name, parameters, doc, Signature::Binding::kStatic,
                           detail::as_entry(&detail::static_entry<Operation>));
}

/// A callable of one argument for others to keep: calls `Function(captured, argument)`.
template <auto Function>
Ref closure(const Ref& captured) {
  static PyMethodDef definition{
      "handler",
      [](PyObject* self, PyObject* argument) noexcept -> PyObject* {
        try {
          return Ref(Function(Ref::borrow(self), Ref::borrow(argument))).release();
        } catch (...) {
          restore_as_python_error();
          return nullptr;
        }
      },
      METH_O, nullptr};
  return Ref::steal(PyCFunction_NewEx(&definition, captured.get(), nullptr));
}

}  // namespace tandrel::py
