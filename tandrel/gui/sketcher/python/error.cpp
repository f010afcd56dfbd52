#include "python/error.hpp"

namespace tandrel::py {

namespace {

Ref adopt(PyObject* object) {
  return object == nullptr ? Ref() : Ref::steal(object);
}

}  // namespace

Error Error::pending() noexcept {
  PyObject* type = nullptr;
  PyObject* value = nullptr;
  PyObject* traceback = nullptr;
  if (PyErr_Occurred() == nullptr) {
    PyErr_SetString(PyExc_SystemError, "a call failed without an exception");
  }
  PyErr_Fetch(&type, &value, &traceback);
  PyErr_NormalizeException(&type, &value, &traceback);
  Error error;
  error.type_ = adopt(type);
  error.value_ = adopt(value);
  error.traceback_ = adopt(traceback);
  return error;
}

void Error::raise(const Kind& kind, std::string_view message) {
  raise(kind, to_python(message));
}

void Error::raise(const Kind& kind, const Ref& message) {
  PyErr_SetObject(*kind.type, message.get());
  throw pending();
}

bool Error::is_a(const Kind& kind) const {
  return PyErr_GivenExceptionMatches(type_.get(), *kind.type) != 0;
}

void Error::restore() const noexcept {
  PyErr_Restore(Ref(type_).release(), Ref(value_).release(), Ref(traceback_).release());
}

void restore_as_python_error() noexcept {
  try {
    throw;
  } catch (const Error& error) {
    error.restore();
  } catch (...) {  // bad_alloc, or length_error: more than any memory holds
    PyErr_NoMemory();
  }
}

}  // namespace tandrel::py
