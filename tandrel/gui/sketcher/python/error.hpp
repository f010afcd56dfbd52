// A Python exception on its way through C++.
#pragma once

#include <optional>
#include <string_view>

#include "python/object.hpp"

namespace tandrel::py {

/// One of the interpreter's built-in exception classes, found when it is needed: the interpreter
/// fills the pointers in at its start.
struct Kind {
  PyObject** type;
};
inline const Kind Exception{&PyExc_Exception};
inline const Kind ImportError{&PyExc_ImportError};
inline const Kind KeyError{&PyExc_KeyError};
inline const Kind NameError{&PyExc_NameError};
inline const Kind RecursionError{&PyExc_RecursionError};
inline const Kind RuntimeError{&PyExc_RuntimeError};
inline const Kind TypeError{&PyExc_TypeError};
inline const Kind ValueError{&PyExc_ValueError};

class Error {
 public:
  /// Takes the interpreter's pending exception over.
  static Error pending() noexcept;
  [[noreturn]] static void raise(const Kind& kind, std::string_view message);
  [[noreturn]] static void raise(const Kind& kind, const Ref& message);

  template <class... Kinds>
  bool matches(const Kinds&... kinds) const {
    return (is_a(kinds) || ...);
  }
  /// The exception object.
  const Ref& value() const { return value_; }
  /// Makes it the interpreter's pending exception again.
  void restore() const noexcept;

 private:
  bool is_a(const Kind& kind) const;

  Ref type_;
  Ref value_;
  Ref traceback_;
};

/// Runs `step`. Gives the error where it raised one of `kinds`; any other passes on.
template <class Step, class... Kinds>
std::optional<Error> attempt(Step step, const Kinds&... kinds) {
  try {
    step();
  } catch (const Error& error) {
    if (!error.matches(kinds...)) throw;
    return error;
  }
  return std::nullopt;
}

/// Turns the C++ exception being handled into a pending Python exception: nothing but a null
/// pointer and a Python exception crosses the border to the interpreter. Call it in a catch block.
void restore_as_python_error() noexcept;

}  // namespace tandrel::py
