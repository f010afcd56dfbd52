#include "neighbours.hpp"

#include "python/extension.hpp"

namespace tandrel::sketcher {

Ref global(const Ref& name) {
  const Ref& names = py::loaded_names();  // empty after a load that failed
  if (Ref found = names ? py::find_item(names, name) : Ref()) return found;
  py::Error::raise(py::NameError, "name '" + name.text() + "' is not defined");
}

Ref tkinters(const Ref& name) {
  const Ref tkinter = py::imported("tkinter"_n);
  const Ref own_names = tkinter ? py::names_of_module(tkinter) : Ref();
  return own_names ? py::find_item(own_names, name) : Ref();
}

bool is_tkinters(const Ref& object, const Ref& class_name) {
  const Ref own_class = tkinters(class_name);
  return own_class && object.has_type_within(own_class);
}

bool has_own_numpy() {
  return global("np"_n).is(py::imported("numpy"_n));
}

Ref array(Point point) {
  return global("np"_n).call("array"_n, py::list(point.x, point.y));
}

Ref float_array(const Ref& vector) {
  return global("np"_n).call("array"_n, vector, py::float_type());
}

double norm(Point vector) {
  return global("np"_n).attr("linalg"_n).call("norm"_n, array(vector)).to_float();
}

}  // namespace tandrel::sketcher
