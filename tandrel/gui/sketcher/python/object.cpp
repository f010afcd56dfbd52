#include "python/object.hpp"

#include "python/error.hpp"

namespace tandrel::py {

Ref Ref::steal(PyObject* object) {
  if (object == nullptr) throw Error::pending();
  return Ref(object);
}

Ref Ref::borrow(PyObject* object) {
  Py_XINCREF(object);
  return steal(object);
}

Ref Ref::attr(const Ref& name) const {
  return steal(PyObject_GetAttr(object_, name.get()));
}

Ref Ref::find_attr(const Ref& name) const {
  PyObject* found = PyObject_GetAttr(object_, name.get());
  if (found == nullptr && PyErr_ExceptionMatches(PyExc_AttributeError) != 0) {
    PyErr_Clear();
    return {};
  }
  return steal(found);
}

Ref Ref::operator[](const Ref& key) const {
  return steal(PyObject_GetItem(object_, key.get()));
}

Ref Ref::operator[](Py_ssize_t index) const {
  // Exact lists and tuples need no index object; a subclass may define its own __getitem__.
  if (Py_TYPE(object_) == &PyList_Type) return borrow(PyList_GetItem(object_, index));
  if (Py_TYPE(object_) == &PyTuple_Type) return borrow(PyTuple_GetItem(object_, index));
  return (*this)[to_python(index)];
}

void Ref::del_item(const Ref& key) const {
  if (PyObject_DelItem(object_, key.get()) < 0) throw Error::pending();
}

Py_ssize_t Ref::size() const {
  const Py_ssize_t size = PyObject_Size(object_);
  if (size < 0) throw Error::pending();
  return size;
}

bool Ref::truth() const {
  const int truth = PyObject_IsTrue(object_);
  if (truth < 0) throw Error::pending();
  return truth != 0;
}

bool Ref::compares(const Ref& other, int operation) const {
  const int result = PyObject_RichCompareBool(object_, other.object_, operation);
  if (result < 0) throw Error::pending();
  return result != 0;
}

bool Ref::equals(const Ref& other) const {
  return compares(other, Py_EQ);
}

bool Ref::less(const Ref& other) const {
  return compares(other, Py_LT);
}

bool Ref::greater(const Ref& other) const {
  return compares(other, Py_GT);
}

bool Ref::contains(const Ref& item) const {
  const int found = PySequence_Contains(object_, item.object_);
  if (found < 0) throw Error::pending();
  return found != 0;
}

bool Ref::is_instance(const Ref& classes) const {
  const int is = PyObject_IsInstance(object_, classes.object_);
  if (is < 0) throw Error::pending();
  return is != 0;
}

double Ref::number() const {
  const double value = PyFloat_AsDouble(object_);
  if (value == -1.0 && PyErr_Occurred() != nullptr) throw Error::pending();
  return value;
}

double Ref::to_float() const {
  return steal(PyNumber_Float(object_)).number();
}

Ref Ref::to_int() const {
  return steal(PyNumber_Long(object_));
}

Ref Ref::add(const Ref& other) const {
  return steal(PyNumber_Add(object_, other.object_));
}

Ref Ref::subtract(const Ref& other) const {
  return steal(PyNumber_Subtract(object_, other.object_));
}

Ref Ref::floor_divide(const Ref& other) const {
  return steal(PyNumber_FloorDivide(object_, other.object_));
}

Ref Ref::power(const Ref& exponent) const {
  return steal(PyNumber_Power(object_, exponent.object_, Py_None));
}

Ref Ref::to_str() const {
  return steal(PyObject_Str(object_));
}

Ref Ref::to_list() const {
  return steal(PySequence_List(object_));
}

Ref Ref::to_tuple() const {
  return steal(PySequence_Tuple(object_));
}

bool Ref::is_pair_of_numbers() const {
  const bool is_sequence = Py_TYPE(object_) == &PyList_Type || Py_TYPE(object_) == &PyTuple_Type;
  if (!is_sequence || size() != 2) return false;
  const auto is_plain_number = [&](Py_ssize_t index) {
    const PyTypeObject* type = Py_TYPE((*this)[index].object_);
    return type == &PyFloat_Type || type == &PyLong_Type;
  };
  return is_plain_number(0) && is_plain_number(1);
}

bool Ref::has_type_within(const Ref& other) const noexcept {
  return PyType_Check(other.object_) &&
         PyType_IsSubtype(Py_TYPE(object_), reinterpret_cast<PyTypeObject*>(other.object_)) != 0;
}

std::string Ref::text() const {
  return std::string(steal(PyUnicode_AsUTF8String(object_)).bytes());
}

std::string_view Ref::bytes() const {
  char* first = nullptr;
  Py_ssize_t size = 0;
  if (PyBytes_AsStringAndSize(object_, &first, &size) < 0) throw Error::pending();
  return {first, static_cast<std::size_t>(size)};
}

Ref Ref::apply(const Ref& arguments) const {
  return steal(PyObject_Call(object_, arguments.object_, nullptr));
}

Ref Ref::apply(const Ref& arguments, const Ref& keywords) const {
  return steal(PyObject_Call(object_, arguments.get(), keywords.get()));
}

Ref to_python(double value) {
  return Ref::steal(PyFloat_FromDouble(value));
}

Ref to_python(std::string_view value) {
  return Ref::steal(
      PyUnicode_FromStringAndSize(value.data(), static_cast<Py_ssize_t>(value.size())));
}

Ref tuple_of(std::span<const double> numbers) {
  Ref result = Ref::steal(PyTuple_New(static_cast<Py_ssize_t>(numbers.size())));
  Py_ssize_t index = 0;
  for (const double number : numbers) detail::store(result, index, number);
  return result;
}

Ref bytes_of(std::span<const std::byte> memory) {
  return Ref::steal(PyBytes_FromStringAndSize(reinterpret_cast<const char*>(memory.data()),
                                              static_cast<Py_ssize_t>(memory.size())));
}

Ref list() {
  return Ref::steal(PyList_New(0));
}

void append(const Ref& list, const Ref& item) {
  if (PyList_Append(list.get(), item.get()) < 0) throw Error::pending();
}

Ref dict() {
  return Ref::steal(PyDict_New());
}

Ref dict(std::initializer_list<Argument> entries) {
  Ref result = dict();
  for (const Argument& entry : entries) result.set_item(entry.name, entry.value);
  return result;
}

Ref formatted(const Ref& value) {
  return Ref::steal(PyObject_Format(value.get(), nullptr));
}

Ref find_item(const Ref& dictionary, const Ref& key) {
  PyObject* found = PyDict_GetItemWithError(dictionary.get(), key.get());
  if (found == nullptr && PyErr_Occurred() == nullptr) return {};
  return Ref::borrow(found);
}

Ref interned(const char* text) {
  return Ref::steal(PyUnicode_InternFromString(text));
}

Ref import_module(const Ref& name) {
  return Ref::steal(PyImport_Import(name.get()));
}

Ref imported(const Ref& name) {
  PyObject* module = PyImport_GetModule(name.get());
  if (module == nullptr && PyErr_Occurred() == nullptr) return {};
  const Ref found = Ref::steal(module);
  return found.is_none() ? Ref() : found;  // None forbids the import
}

Ref import_from(const Ref& module, const Ref& name) {
  Ref package;
  const auto missing = attempt([&] { package = import_module(module); }, ImportError);
  const auto find = [&] {
    const Ref found = package ? package.find_attr(name) : Ref();
    return found ? found : imported(text_of(module, ".", name));
  };
  if (Ref found = find()) return found;
  if (missing) throw Error(*missing);
  // Imports a module of that name within the package too, if there is one.
  builtin("__import__"_n)(module, dict(), Ref::none(), tuple(name), 0);
  if (Ref found = find()) return found;
  const Ref repr = builtin("repr"_n);
  Error::raise(ImportError, text_of("cannot import name ", repr(name), " from ", repr(module)));
}

Ref names_of_module(const Ref& object) {
  return PyModule_CheckExact(object.get()) ? Ref::borrow(PyModule_GetDict(object.get())) : Ref();
}

Ref builtin(const Ref& name) {
  return import_module("builtins"_n).attr(name);
}

namespace detail {

void unpack(const Ref& iterable, std::span<Ref> items) {
  const Ref source = iterator(iterable);
  const auto expected = static_cast<Py_ssize_t>(items.size());
  Py_ssize_t count = 0;
  for (Ref& item : items) {
    item = next(source);
    if (!item) {
      PyErr_Format(PyExc_ValueError, "not enough values to unpack (expected %zd, got %zd)",
                   expected, count);
      throw Error::pending();
    }
    ++count;
  }
  if (next(source)) {
    PyErr_Format(PyExc_ValueError, "too many values to unpack (expected %zd)", expected);
    throw Error::pending();
  }
}

void raise_pending() {
  throw Error::pending();
}

Ref iterator(const Ref& iterable) {
  return Ref::steal(PyObject_GetIter(iterable.get()));
}

Ref next(const Ref& iterator) {
  PyObject* item = PyIter_Next(iterator.get());
  if (item == nullptr && PyErr_Occurred() == nullptr) return {};
  return Ref::steal(item);
}

}  // namespace detail

}  // namespace tandrel::py
