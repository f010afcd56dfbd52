#include "widgets.hpp"

namespace tandrel::sketcher {

namespace {

Ref call_plain(const Ref& captured, const Ref&) {
  return captured[0].call(captured[1]);
}

Ref call_with_event(const Ref& captured, const Ref& arguments) {
  return captured[0].call(captured[1], arguments[0]);
}

Ref call_in_sequence(const Ref& captured, const Ref&) {
  py::for_each(captured[1], [&](const Ref& operation) { captured[0].call(operation); });
  return Ref::none();
}

Ref zoom(const Ref& captured, const Ref& arguments) {
  const Ref event = arguments[0];
  Ref factor = captured[1];
  if (factor.is_none()) {
    const bool up = event.attr("delta"_n).number() > 0;
    factor = py::to_python(up ? kZoomStep : 1 / kZoomStep);
  }
  const Ref x = event.attr("x"_n);
  return captured[0].call("_zoom"_n, factor, x, event.attr("y"_n));
}

}  // namespace

Ref make_variable(const Ref& kind, const Ref& owner, const Ref& value) {
  const Ref make = global("tk"_n).attr(kind);
  if (!owner.find_attr("tk"_n)) return make(py::kw("value"_n, value));
  return make(py::kw("master"_n, owner, "value"_n, value));
}

Ref command(const Editor& editor, const Ref& operation) {
  return py::closure<&call_plain>(py::tuple(editor.object(), operation));
}

Ref event_handler(const Editor& editor, const Ref& operation) {
  return py::closure<&call_with_event>(py::tuple(editor.object(), operation));
}

Ref command_sequence(const Editor& editor, const Ref& operations) {
  return py::closure<&call_in_sequence>(py::tuple(editor.object(), operations));
}

Ref zoom_handler(const Editor& editor, std::optional<double> factor) {
  return py::closure<&zoom>(
      py::tuple(editor.object(), factor ? py::to_python(*factor) : Ref::none()));
}

}  // namespace tandrel::sketcher
