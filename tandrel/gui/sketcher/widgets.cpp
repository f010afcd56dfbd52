#include "widgets.hpp"

namespace tandrel::sketcher {

namespace {

Ref call_operations(const Ref& captured, const Ref&) {
  Ref result;
  py::for_each(captured[1], [&](const Ref& operation) { result = captured[0].call(operation); });
  return result;
}

Ref delete_selected(const Ref& editor, const Ref& event) {
  const Ref widget = event.find_attr("widget"_n);
  const Ref corners_box = editor.find_attr("points_text"_n);
  if (widget && corners_box && widget.is(corners_box)) return Ref::none();
  return editor.call("delete"_n);
}

Ref zoom(const Ref& captured, const Ref& event) {
  Ref factor = captured[1];
  if (factor.is_none()) {
    const bool up = event.attr("delta"_n).greater(py::to_python(0));
    factor = py::to_python(up ? kZoomStep : 1 / kZoomStep);
  }
  const Ref x = event.attr("x"_n);
  return captured[0].call("_zoom"_n, factor, x, event.attr("y"_n));
}

/// Whether a variable that is made without a master would belong to another root than `owner`.
bool has_other_root(const Ref& owner) {
  if (!is_tkinters(owner, "Misc"_n)) return false;
  const Ref interpreter = owner.find_attr("tk"_n);
  const Ref root = tkinters("_default_root"_n);
  return interpreter && !(root && root.find_attr("tk"_n).is(interpreter));
}

}  // namespace

Ref make_variable(const Ref& kind, const Ref& owner, const Ref& value) {
  const Ref make = global("tk"_n).attr(kind);
  if (has_other_root(owner)) return make(py::kw({"master"_a = owner, "value"_a = value}));
  return make(py::kw({"value"_a = value}));
}

Ref handler(const Editor& editor, std::initializer_list<Ref> operations) {
  const Ref names = py::list();
  for (const Ref& operation : operations) py::append(names, operation);
  return py::closure<&call_operations>(py::tuple(editor.object(), names.to_tuple()));
}

Ref delete_handler(const Editor& editor) {
  return py::closure<&delete_selected>(editor.object());
}

Ref zoom_handler(const Editor& editor, std::optional<double> factor) {
  return py::closure<&zoom>(
      py::tuple(editor.object(), factor ? py::to_python(*factor) : Ref::none()));
}

}  // namespace tandrel::sketcher
