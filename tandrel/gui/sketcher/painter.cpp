#include "painter.hpp"

#include "python/error.hpp"

namespace tandrel::sketcher {

namespace {

constexpr std::size_t kFewestPoints = 3;  // of a polygon
constexpr std::size_t kManyPoints = 8;    // from here on a second command is cheaper than texts

/// Points as the tuple x1, y1, x2, y2 ...
Ref coordinates(std::span<const Point> points) {
  std::vector<double> values;
  values.reserve(2 * points.size());
  for (const Point p : points) values.insert(values.end(), {p.x, p.y});
  return py::tuple_of(values);
}

/// Whether looking `name` up on a canvas finds the method that tkinter defines for canvases, bound
/// to this canvas: not one of a subclass, of the instance, or put into tkinter's class by somebody
/// else.
bool is_tkinters_own(const Ref& canvas, const Ref& name) {
  const Ref tkinter = py::imported("tkinter"_n);
  if (!tkinter) return false;
  const Ref method = canvas.attr(name);
  const Ref function = method.attr("__func__"_n);
  return method.attr("__self__"_n).is(canvas) && function.attr("__name__"_n).equals(name) &&
         function.is(tkinter.attr("Canvas"_n).attr(name)) &&
         function.attr("__globals__"_n).is(tkinter.attr("__dict__"_n));
}

bool is_tkinters_interpreter(const Ref& interpreter) {
  const Ref tkinter = py::imported("_tkinter"_n);
  return tkinter && interpreter.type().is(tkinter.attr("TkappType"_n));
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
  // Whatever a canvas of another kind raises when it is looked at closely, it can still be drawn
  // on.
  py::attempt(
      [&] {
        const Ref interpreter = canvas_.attr("tk"_n);
        if (!is_tkinters_interpreter(interpreter)) return;
        ask_width_ = py::tuple("winfo"_n, "width"_n, canvas_.attr("_w"_n));
        call_tcl_ = interpreter.attr("call"_n);
      },
      py::Exception);
}

void Painter::line(const Ref& coordinates, const ItemOptions& options) {
  create({0, "line"_n, "create_line"_n}, coordinates, options);
}

void Painter::polyline(const std::vector<Point>& points, const ItemOptions& options) {
  create_through(points, {0, "line"_n, "create_line"_n, true}, options);
}

void Painter::polygon(const std::vector<Point>& points, const ItemOptions& options) {
  create_through(points, {1, "polygon"_n, "create_polygon"_n, true}, options);
}

void Painter::text(const Ref& coordinates, const ItemOptions& options) {
  create({2, "text"_n, "create_text"_n, true}, coordinates, options);
}

void Painter::circle(Point centre, double radius, const ItemOptions& options) {
  const Ref box =
      py::tuple(centre.x - radius, centre.y - radius, centre.x + radius, centre.y + radius);
  create({3, "oval"_n, "create_oval"_n}, box, options);
}

const Ref& Painter::command_for(const ItemType& type) {
  Route& route = routes_.at(type.index);
  if (!route.is_known || type.shows_answers) require_canvas();
  if (!route.is_known) route = {true, direct_command(type)};
  return route.command;
}

void Painter::create(const ItemType& type, const Ref& coordinates, const ItemOptions& options) {
  const Ref& command = command_for(type);
  if (command && options.words() && coordinates.size() != 0) {
    call_tcl_.apply(command.add(coordinates).add(options.words()));
  } else {
    canvas_.attr(type.method).apply(coordinates, options.keywords());
  }
}

/// Tk makes a text of each coordinate that it gets with `create`, to look for options among them,
/// and reads the number anew: most of the time that a long outline takes. It does neither with
/// `coords`.
void Painter::create_through(const std::vector<Point>& points, const ItemType& type,
                             const ItemOptions& options) {
  const Ref& command = command_for(type);
  if (!command || !options.words() || points.size() < kManyPoints) {
    create(type, coordinates(points), options);
    return;
  }
  const std::span first(points.data(), kFewestPoints);
  const Ref item = call_tcl_.apply(command.add(coordinates(first)).add(options.words()));
  call_tcl_.apply(py::tuple(command[0], "coords"_n, item, coordinates(points)));
}

/// Raises TclError where the canvas is gone, closed by application code that was asked for what is
/// to be drawn. Tk 8.6 crashes when a window that was never shown is destroyed while it is being
/// laid out and a command of one of its widgets is used afterwards; a question about the widget is
/// harmless.
void Painter::require_canvas() const {
  if (call_tcl_) call_tcl_.apply(ask_width_);
}

Ref Painter::direct_command(const ItemType& type) const {
  Ref command;
  if (!call_tcl_) return command;
  py::attempt(
      [&] {
        for (const Ref& method : {type.method, "_create"_n, "_options"_n}) {
          if (!is_tkinters_own(canvas_, method)) return;
        }
        command = py::tuple(canvas_.attr("_w"_n), "create"_n, type.name);
      },
      py::Exception);
  return command;
}

}  // namespace tandrel::sketcher
