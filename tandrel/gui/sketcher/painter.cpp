#include "painter.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "python/error.hpp"

namespace tandrel::sketcher {

namespace {

/// Points as the tuple x1, y1, x2, y2 ...
Ref coordinates(std::span<const Point> points) {
  std::vector<double> values;
  for (const Point p : points) values.insert(values.end(), {p.x, p.y});
  return py::tuple_of(values);
}

/// Whether looking each method that items take up on a canvas finds the one that tkinter defines
/// for canvases, bound to this canvas: not one of a subclass, of the instance, or put into
/// tkinter's class by somebody else.
bool has_tkinters_methods(const Ref& canvas) {
  const Ref tkinter = py::imported("tkinter"_n);
  const Ref own_class = tkinters("Canvas"_n);
  if (!tkinter || !own_class) return false;
  const Ref own_names = tkinter.attr("__dict__"_n);
  const std::array names{"create_line"_n, "create_polygon"_n, "create_text"_n, "create_oval"_n,
                         "_create"_n,     "_options"_n,       "delete"_n};
  return std::all_of(names.begin(), names.end(), [&](const Ref& name) {
    const Ref method = canvas.attr(name);
    const Ref function = method.attr("__func__"_n);
    return method.attr("__self__"_n).is(canvas) && function.attr("__name__"_n).equals(name) &&
           function.is(own_class.attr(name)) && function.attr("__globals__"_n).is(own_names);
  });
}

bool is_tkinters_interpreter(const Ref& interpreter) {
  const Ref tkinter = py::imported("_tkinter"_n);
  return tkinter && interpreter.type().is(tkinter.attr("TkappType"_n));
}

/// What the direct way needs in the canvas's interpreter. Items are made only where the canvas is
/// still there, which application code may have closed when it was last asked for anything: Tk 8.6
/// crashes when a window that was never shown is destroyed while it is being laid out and a command
/// of one of its widgets is used afterwards; a question about the widget is harmless.
///
/// Tk looks for options among the coordinates that `create` gets, and makes a text of each for
/// that: most of the time that a long outline takes. The list of a line's coordinates it leaves
/// alone, a polygon's not, so a polygon is made without any and `coords` completes it. Of all ways
/// to give Tcl many numbers `binary scan` needs the fewest objects. One outline's are dropped
/// before the next one's are made, in the same memory.
///
/// Tk gives a colour back to the X server with the last item that has it, and waits for the server
/// to have it again: on an idle machine as long as it takes to make ten shapes. So hidden items of
/// a type that no picture has keep the colours of the one that is cleared.
constexpr const char* kProcedures = R"(
  variable colours {}
  proc clear {canvas} {
    variable colours
    foreach options [dict keys $colours] {
      catch {$canvas create rectangle 0 0 0 0 {*}$options -state hidden -tags ::tandrel::kept}
    }
    set colours {}
    $canvas delete !::tandrel::kept
  }
  proc remember {options} {
    variable colours
    dict set colours [dict filter $options key -fill -outline] {}
  }
  proc items {canvas type options places} {
    winfo width $canvas
    remember $options
    foreach place $places {
      $canvas create $type $place {*}$options
    }
  }
  proc polygons {canvas options outlines} {
    winfo width $canvas
    remember $options
    foreach doubles $outlines {
      set coordinates {}
      binary scan $doubles d* coordinates
      $canvas coords [$canvas create polygon {*}$options] $coordinates
    }
  }
)";

void provide_procedures(const Ref& call_tcl) {
  if (call_tcl("info"_n, "commands"_n, "::tandrel::polygons"_n).truth()) return;
  call_tcl("namespace"_n, "eval"_n, "::tandrel"_n, kProcedures);
}

/// The word that tkinter writes for an option's value, or an empty handle. Texts and numbers go as
/// they are, a dash pattern as a list of its numbers.
Ref command_word(const Ref& value) {
  if (value.is_exact_str() || value.is_exact_int()) return value;
  if (!value.is_exact_tuple()) return {};
  const Ref numbers = py::list();
  const bool all_numbers = py::all_of(value, [&](const Ref& item) {
    if (item.is_exact_int()) py::append(numbers, item.to_str());
    return item.is_exact_int();
  });
  return all_numbers ? " "_n.call("join"_n, numbers) : Ref();
}

}  // namespace

Ref ItemOptions::command_words(const Ref& keywords) {
  const Ref words = py::list();
  // Not by `items()`: the interpreter crashes where memory runs out while it makes that iterator.
  const bool all_plain = py::all_of(keywords, [&](const Ref& name) {
    const Ref word = command_word(keywords[name]);
    if (!word) return false;
    py::append(words, "-"_n.add(name));
    py::append(words, word);
    return true;
  });
  return all_plain ? words.to_tuple() : Ref();
}

Painter::Painter(Ref canvas) : canvas_(std::move(canvas)) {
  // Whatever a canvas of another kind raises when it is looked at closely, it can be drawn on.
  py::attempt(
      [&] {
        if (!is_tkinters(canvas_, "Canvas"_n)) return;
        const Ref interpreter = canvas_.attr("tk"_n);
        if (!is_tkinters_interpreter(interpreter)) return;
        path_ = canvas_.attr("_w"_n);
        call_tcl_ = interpreter.attr("call"_n);
        if (!has_tkinters_methods(canvas_)) return;
        provide_procedures(call_tcl_);
        is_direct_ = true;
      },
      py::Exception);
}

void Painter::clear(bool keeps_colours) {
  require_canvas();
  keeps_colours_ = keeps_colours && is_direct_;
  if (keeps_colours_) {
    call_tcl_("::tandrel::clear"_n, path_);
  } else {
    canvas_.call("delete"_n, "all"_n);
  }
}

void Painter::drop_colours() noexcept {
  if (!std::exchange(keeps_colours_, false)) return;
  try {
    require_canvas();
    call_tcl_(path_, "delete"_n, "::tandrel::kept"_n);
  } catch (...) {  // whoever needs the canvas is told; the next picture drops them too
  }
}

void Painter::polyline(const Outline& points, const ItemOptions& options) const {
  item("line"_n, coordinates(points), options);
}

void Painter::circle(Point centre, double radius, const ItemOptions& options) const {
  const Point corner{radius, radius};
  item("oval"_n, coordinates(std::array{centre - corner, centre + corner}), options);
}

void Painter::polygons(std::span<const Outline> outlines, const ItemOptions& options) const {
  // What is wrong with an outline of no points, tkinter tells in its own words.
  const auto has_points = [](const Outline& points) { return !points.empty(); };
  const bool is_direct =
      is_direct_ && options.words() && std::all_of(outlines.begin(), outlines.end(), has_points);
  const Ref places = py::list();
  for (const Outline& points : outlines) {
    py::append(places,
               is_direct ? py::bytes_of(std::as_bytes(std::span(points))) : coordinates(points));
  }
  if (is_direct) {
    call_tcl_("::tandrel::polygons"_n, path_, options.words(), places);
  } else {
    call_methods("create_polygon"_n, places, options);
  }
}

void Painter::items(const Ref& type, const Ref& places, const ItemOptions& options) const {
  if (is_direct_ && options.words()) {
    call_tcl_("::tandrel::items"_n, path_, type, options.words(), places);
  } else {
    call_methods("create_"_n.add(type), places, options);
  }
}

void Painter::call_methods(const Ref& name, const Ref& places, const ItemOptions& options) const {
  py::for_each(places, [&](const Ref& coordinates) {
    require_canvas();
    canvas_.attr(name).apply(coordinates, options.keywords());
  });
}

void Painter::require_canvas() const {
  if (call_tcl_) call_tcl_("winfo"_n, "width"_n, path_);
}

}  // namespace tandrel::sketcher
