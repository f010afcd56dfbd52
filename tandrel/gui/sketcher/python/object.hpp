// An owning handle on a Python object, with the operations that Python code would write.
//
// Every operation throws py::Error where Python would raise. All of it needs the interpreter's
// lock.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#define PY_SSIZE_T_CLEAN
#include <Python.h>

namespace tandrel::py {

class Keywords;

class Ref {
 public:
  Ref() noexcept = default;
  Ref(const Ref& other) noexcept : object_(other.object_) { Py_XINCREF(object_); }
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Ref() { Py_XDECREF(object_); }

  /// Takes over a new reference, as most of Python's C functions return it; null throws the error
  /// that the function left behind.
  static Ref steal(PyObject* object);
  /// Adds a reference of its own; null throws as in `steal`.
  static Ref borrow(PyObject* object);
  static Ref none() { return borrow(Py_None); }

  PyObject* get() const noexcept { return object_; }
  PyObject* release() noexcept { return std::exchange(object_, nullptr); }

  /// Whether the handle holds an object at all (which may be None, or false).
  explicit operator bool() const noexcept { return object_ != nullptr; }
  bool is(const Ref& other) const noexcept { return object_ == other.object_; }
  bool is_none() const noexcept { return object_ == Py_None; }

  Ref attr(const Ref& name) const;
  /// The attribute, or an empty handle where there is none.
  Ref find_attr(const Ref& name) const;
  template <class Value>
  void set_attr(const Ref& name, const Value& value) const;

  Ref operator[](const Ref& key) const;
  Ref operator[](Py_ssize_t index) const;
  template <class Value>
  void set_item(const Ref& key, const Value& value) const;
  void del_item(const Ref& key) const;

  Py_ssize_t size() const;
  bool truth() const;
  /// `self == other`, as `if` sees it; an object equals itself.
  bool equals(const Ref& other) const;
  /// `self < other`, `self > other`.
  bool less(const Ref& other) const;
  bool greater(const Ref& other) const;
  /// `item in self`.
  bool contains(const Ref& item) const;
  bool is_instance(const Ref& classes) const;

  /// The value as arithmetic takes it: numbers only, a text is a TypeError.
  double number() const;
  /// `float(self)`: reads texts too.
  double to_float() const;
  /// `int(self)`: reads texts too.
  Ref to_int() const;
  /// `self + other`, `self - other`, `self // other`, `self ** exponent`.
  Ref add(const Ref& other) const;
  Ref subtract(const Ref& other) const;
  Ref floor_divide(const Ref& other) const;
  Ref power(const Ref& exponent) const;
  /// `str(self)`, `list(self)`, `tuple(self)`.
  Ref to_str() const;
  Ref to_list() const;
  Ref to_tuple() const;
  /// The characters of a text.
  std::string text() const;
  /// The memory of a bytes object, for as long as it lives.
  std::string_view bytes() const;

  /// Whether this is a list or tuple of exactly two plain ints or floats.
  bool is_pair_of_numbers() const;

  bool is_exact_str() const noexcept { return Py_TYPE(object_) == &PyUnicode_Type; }
  bool is_exact_int() const noexcept { return Py_TYPE(object_) == &PyLong_Type; }
  bool is_exact_list() const noexcept { return Py_TYPE(object_) == &PyList_Type; }
  bool is_exact_tuple() const noexcept { return Py_TYPE(object_) == &PyTuple_Type; }

  /// Whether this object's type is `other`, or derives from it; `other` need not be a type.
  bool has_type_within(const Ref& other) const noexcept;
  Ref type() const { return borrow(reinterpret_cast<PyObject*>(Py_TYPE(object_))); }

  /// `self(...)`: positional arguments of any type that `to_python` knows, then perhaps Keywords.
  template <class... Arguments>
  Ref operator()(const Arguments&... arguments) const;
  /// `self.name(...)`.
  template <class... Arguments>
  Ref call(const Ref& name, const Arguments&... arguments) const;
  /// `self(*arguments)` and `self(*arguments, **keywords)`; `arguments` is a tuple.
  Ref apply(const Ref& arguments) const;
  Ref apply(const Ref& arguments, const Ref& keywords) const;

 private:
  explicit Ref(PyObject* object) noexcept : object_(object) {}
  bool compares(const Ref& other, int operation) const;

  PyObject* object_ = nullptr;
};

inline const Ref& to_python(const Ref& value) {
  return value;
}
Ref to_python(double value);
Ref to_python(std::string_view value);
inline Ref to_python(const char* value) {
  return to_python(std::string_view(value));
}
template <std::integral Integer>
Ref to_python(Integer value) {
  if constexpr (std::is_same_v<Integer, bool>) {
    return Ref::borrow(value ? Py_True : Py_False);
  } else {
    return Ref::steal(PyLong_FromLongLong(static_cast<long long>(value)));
  }
}

template <class... Items>
Ref tuple(const Items&... items) {
  return Ref::steal(
      PyTuple_Pack(static_cast<Py_ssize_t>(sizeof...(Items)), to_python(items).get()...));
}

Ref tuple_of(std::span<const double> numbers);
/// A bytes object with a copy of this memory.
Ref bytes_of(std::span<const std::byte> memory);

Ref list();
void append(const Ref& list, const Ref& item);
template <class... Items>
Ref list(const Items&... items) {
  Ref result = list();
  (append(result, to_python(items)), ...);
  return result;
}

/// Fills a dictionary with name, value, name, value ...
inline void fill(const Ref&) {}
template <class Value, class... Rest>
void fill(const Ref& dictionary, const Ref& name, const Value& value, const Rest&... rest) {
  dictionary.set_item(name, value);
  fill(dictionary, rest...);
}

Ref dict();
/// The value of `key` in a dictionary, or an empty handle.
Ref find_item(const Ref& dictionary, const Ref& key);
template <class... Pairs>
Ref dict(const Ref& name, const Pairs&... pairs) {
  Ref result = dict();
  fill(result, name, pairs...);
  return result;
}

/// An interned text that lives as long as the process: `"redraw"_n`.
template <std::size_t N>
struct Literal {
  consteval Literal(const char (&source)[N]) {  // NOLINT(google-explicit-constructor)
    for (std::size_t i = 0; i < N; ++i) text[i] = source[i];
  }
  char text[N] = {};
};
Ref interned(const char* text);

inline namespace literals {
template <Literal Text>
const Ref& operator""_n() {
  // Never destroyed: at process exit the interpreter may be gone before C++ statics are.
  static const Ref& name = *new Ref(interned(Text.text));
  return name;
}
}  // namespace literals

/// A name with its value: a keyword argument of a call, or an entry of a dictionary.
///
///   widget.call("pack"_n, py::kw({"side"_a = "left", "padx"_a = py::tuple(4, 0)}));
struct Argument {
  Ref name;
  Ref value;
};
struct ArgumentName {
  const Ref& name;
  template <class Value>
  Argument operator=(const Value& value) const {  // NOLINT(misc-unconventional-assign-operator)
    return {name, to_python(value)};
  }
};
inline namespace literals {
template <Literal Text>
ArgumentName operator""_a() {
  return {operator""_n<Text>()};
}
}  // namespace literals

/// The dictionary of these entries, in their order.
Ref dict(std::initializer_list<Argument> entries);

/// Keyword arguments of a call, its last argument.
class Keywords {
 public:
  explicit Keywords(Ref dictionary) : dictionary_(std::move(dictionary)) {}
  const Ref& dictionary() const { return dictionary_; }

 private:
  Ref dictionary_;
};
inline Keywords kw(std::initializer_list<Argument> arguments) {
  return Keywords(dict(arguments));
}

/// `format(value, "")`.
Ref formatted(const Ref& value);
/// The pieces put together as an f-string does it, each by `format(piece, "")`.
template <class... Pieces>
Ref text_of(const Pieces&... pieces) {
  const Ref texts = list();
  (append(texts, formatted(to_python(pieces))), ...);
  return ""_n.call("join"_n, texts);
}

/// The class `float`.
inline Ref float_type() {
  return Ref::borrow(reinterpret_cast<PyObject*>(&PyFloat_Type));
}

/// `import name`; the module itself, also for a dotted name.
Ref import_module(const Ref& name);
/// The module where it has been imported already, else an empty handle.
Ref imported(const Ref& name);
/// `from module import name`: an attribute of the module, or else a module within it. Where the
/// module can't be imported, the one within it serves if it has been imported already.
Ref import_from(const Ref& module, const Ref& name);
/// The namespace of a module; an empty handle for an object of any other kind.
Ref names_of_module(const Ref& object);
/// One of the interpreter's built-in names.
Ref builtin(const Ref& name);

/// Calls `visit(item)` for each item of `iterable`, as a Python `for` would.
template <class Visit>
void for_each(const Ref& iterable, Visit visit);

namespace detail {
[[noreturn]] void raise_pending();
void unpack(const Ref& iterable, std::span<Ref> items);
Ref next(const Ref& iterator);  // empty at the end
Ref iterator(const Ref& iterable);

inline void store(const Ref& tuple, Py_ssize_t& index, const Ref& item) {
  PyTuple_SetItem(tuple.get(), index++, Ref(item).release());
}
inline void store(const Ref&, Py_ssize_t&, const Keywords&) {}
template <class Value>
void store(const Ref& tuple, Py_ssize_t& index, const Value& value) {
  store(tuple, index, to_python(value));
}
template <class... Arguments>
inline constexpr bool has_keywords = std::disjunction_v<std::is_same<Arguments, Keywords>...>;

template <class... Arguments>
Ref call_with_keywords(const Ref& callable, const Arguments&... arguments) {
  const Ref positional = Ref::steal(PyTuple_New(static_cast<Py_ssize_t>(sizeof...(Arguments)) - 1));
  Py_ssize_t index = 0;
  (store(positional, index, arguments), ...);
  const Keywords& keywords = std::get<sizeof...(Arguments) - 1>(std::tie(arguments...));
  return callable.apply(positional, keywords.dictionary());
}
}  // namespace detail

/// Whether `test(item)` is true of all items; asks no further than the first that fails.
template <class Test>
bool all_of(const Ref& iterable, Test test);

/// The items of an unpacking assignment, `a, b = iterable` for N = 2; any other number of them is a
/// ValueError.
template <std::size_t N>
std::array<Ref, N> unpack(const Ref& iterable) {
  std::array<Ref, N> items;
  detail::unpack(iterable, items);
  return items;
}

template <class Value>
void Ref::set_attr(const Ref& name, const Value& value) const {
  const Ref& object = to_python(value);
  if (PyObject_SetAttr(object_, name.get(), object.get()) < 0) detail::raise_pending();
}

template <class Value>
void Ref::set_item(const Ref& key, const Value& value) const {
  const Ref& object = to_python(value);
  if (PyObject_SetItem(object_, key.get(), object.get()) < 0) detail::raise_pending();
}

template <class... Arguments>
Ref Ref::operator()(const Arguments&... arguments) const {
  if constexpr (detail::has_keywords<Arguments...>) {
    return detail::call_with_keywords(*this, arguments...);
  } else {
    return steal(PyObject_CallFunctionObjArgs(object_, to_python(arguments).get()...,
                                              static_cast<PyObject*>(nullptr)));
  }
}

template <class... Arguments>
Ref Ref::call(const Ref& name, const Arguments&... arguments) const {
  if constexpr (detail::has_keywords<Arguments...>) {
    return detail::call_with_keywords(attr(name), arguments...);
  } else {
    return steal(PyObject_CallMethodObjArgs(object_, name.get(), to_python(arguments).get()...,
                                            static_cast<PyObject*>(nullptr)));
  }
}

template <class Test>
bool all_of(const Ref& iterable, Test test) {
  const Ref iterator = detail::iterator(iterable);
  while (const Ref item = detail::next(iterator)) {
    if (!test(item)) return false;
  }
  return true;
}

template <class Visit>
void for_each(const Ref& iterable, Visit visit) {
  const Ref iterator = detail::iterator(iterable);
  while (const Ref item = detail::next(iterator)) visit(item);
}

}  // namespace tandrel::py
