// The editor as C++ sees it: typed reading and writing of its attributes, and its operations called
// by name through the object, so that a subclass, an override on the instance or any object with
// the same attributes serves as well.
#pragma once

#include "geometry.hpp"
#include "neighbours.hpp"
#include "python/extension.hpp"

namespace tandrel::sketcher {

class Editor {
 public:
  explicit Editor(Ref object) : object_(std::move(object)) {}
  const Ref& object() const { return object_; }

  Ref get(const Ref& attribute) const { return object_.attr(attribute); }
  template <class Value>
  void set(const Ref& attribute, const Value& value) const {
    object_.set_attr(attribute, value);
  }
  /// The value of a Tk variable among the attributes.
  Ref variable(const Ref& attribute) const { return get(attribute).call("get"_n); }

  Ref sketch() const { return get("sk"_n); }
  Ref entities() const { return sketch()["entities"_n]; }
  Ref selection() const { return get("sel"_n); }
  /// Whether the selection is an index below the number of entities.
  bool has_selection() const;
  Ref selected_entity() const { return entities()[selection()]; }

  Ref canvas() const { return get("canvas"_n); }
  /// The view as it is now; asks the canvas for its size.
  View view() const;
  /// Pixels per SI length.
  double scale() const { return get("scale"_n).number(); }
  /// The plane point in the middle of the canvas.
  Point centre() const;
  void set_centre(Point centre) const { set("centre"_n, array(centre)); }

  /// Whether the sketch is placed in space, on a plane with an offset.
  bool is_in_space() const { return get("dim"_n).equals(py::to_python(3)); }
  /// The names of the plane's two axes where the sketch lies in space, else "x" and "y".
  std::array<Ref, 2> axis_names() const;

  bool tool_is(const Ref& name) const { return variable("tool"_n).equals(name); }
  void set_status(const Ref& text) const {
    get("status"_n).call("configure"_n, py::kw({"text"_a = text}));
  }

  /// Calls an operation through the object.
  template <class... Arguments>
  Ref call(const Ref& operation, const Arguments&... arguments) const {
    return object_.call(operation, arguments...);
  }
  void redraw() const { call("redraw"_n); }
  /// The plane point that a pointer event stands for.
  Ref snapped(const Ref& event) const {
    const Ref x = event.attr("x"_n);
    return call("snapped"_n, x, event.attr("y"_n));
  }
  /// The canvas pixel of a plane point, through the object's own `to_screen`.
  Point to_screen(const Ref& point) const;
  bool is_valid(const Ref& entity) const { return call("_ok"_n, entity).truth(); }

  /// Whether an operation is the class's own, not overridden by a subclass or on the instance. Only
  /// then may another operation take a shorter way to the same result.
  bool has_own(const Ref& operation) const { return py::has_own(object_, operation); }
  /// The outline of an entity that passes `_ok`, an empty handle for one that doesn't. The host is
  /// asked once, unless `_ok` is overridden.
  Ref valid_outline(const Ref& entity) const;

 private:
  Ref object_;
};

/// The entity's outline where the sketch module can build it. Its refusals, ValueError, KeyError
/// and TypeError, give an empty handle; any other error passes on.
Ref outline_unless_refused(const Ref& entity);

}  // namespace tandrel::sketcher
