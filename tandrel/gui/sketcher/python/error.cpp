#include "python/error.hpp"

#include <exception>
#include <new>
#include <stdexcept>

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
  } catch (const std::bad_alloc&) {
    PyErr_NoMemory();
  } catch (const std::length_error&) {  // more than any memory holds
    PyErr_NoMemory();
  } catch (const std::exception& error) {
    PyErr_SetString(PyExc_SystemError, error.what());
  } catch (...) {
    PyErr_SetString(PyExc_SystemError, "a C++ exception of an unknown kind");
  }
}

}  // namespace tandrel::py
