#include "editor_state.hpp"

#include "points.hpp"

namespace tandrel::sketcher {

bool Editor::has_selection() const {
  const Ref selected = selection();
  if (selected.is_none()) return false;
  return selected.less(py::to_python(entities().size()));
}

View Editor::view() const {
  const Ref surface = canvas();
  const double width = surface.call("winfo_width"_n).number();
  const double height = surface.call("winfo_height"_n).number();
  return {width, height, scale(), centre()};
}

Point Editor::centre() const {
  return read_point(get("centre"_n));
}

std::array<Ref, 2> Editor::axis_names() const {
  const Ref in_plane = py::tuple("x", "y");
  if (!is_in_space()) return py::unpack<2>(in_plane);
  const Ref axes = S().attr("AXES"_n);
  return py::unpack<2>(axes.call("get"_n, variable("plane"_n), in_plane));
}

Point Editor::to_screen(const Ref& point) const {
  const auto [x, y] = py::unpack<2>(call("to_screen"_n, point));
  return {x.number(), y.number()};
}

Ref Editor::valid_outline(const Ref& entity) const {
  if (has_own("_ok"_n)) return outline_unless_refused(entity);
  return is_valid(entity) ? S().call("outline"_n, entity) : Ref();
}

Ref outline_unless_refused(const Ref& entity) {
  Ref outline;
  const auto refused = py::attempt([&] { outline = S().call("outline"_n, entity); }, py::ValueError,
                                   py::KeyError, py::TypeError);
  return refused ? Ref() : outline;
}

}  // namespace tandrel::sketcher
