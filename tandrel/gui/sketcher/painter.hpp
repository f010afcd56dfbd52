// Canvas items of one repaint: the one place that decides how they reach Tk.
//
// An item is made by the canvas's own `create_...` method. Most of such a call goes into sorting
// its arguments and into making a Python number, a text and a Tcl number of each coordinate. So
// where nobody could see the difference, on a real Tk canvas whose methods are still tkinter's own,
// all items of one look are given to the interpreter at once, outlines as the memory of their
// numbers.
#pragma once

#include <span>
#include <vector>

#include "editor_state.hpp"

namespace tandrel::sketcher {

/// Points in pixels.
using Outline = std::vector<Point>;

/// The selection, and everything that is being drawn.
inline Ref highlight_colour() {
  return "#E8833A"_n;
}

/// An item's options, made once for many items: as keyword arguments and as words of a Tcl command.
class ItemOptions {
 public:
  ItemOptions() = default;
  template <class... Pairs>
  explicit ItemOptions(const Ref& name, const Pairs&... pairs)
      : keywords_(py::dict(name, pairs...)), words_(command_words(keywords_)) {}

  explicit operator bool() const { return static_cast<bool>(keywords_); }
  const Ref& keywords() const { return keywords_; }
  /// The tuple -name, value, -name, value ...; empty where only tkinter knows how to write a value.
  const Ref& words() const { return words_; }

 private:
  static Ref command_words(const Ref& keywords);

  Ref keywords_;
  Ref words_;
};

/// Decides when it is made how items reach the canvas, and then looks at the canvas's methods no
/// more.
class Painter {
 public:
  explicit Painter(Ref canvas);
  Painter(const Painter&) = delete;
  Painter& operator=(const Painter&) = delete;
  ~Painter() { drop_colours(); }

  /// Raises TclError where a canvas of Tk's is gone, closed by application code. Everything that
  /// makes items does so itself; to be called before any other command of the canvas.
  void require_canvas() const;

  /// Deletes all items. Where it may keep their colours for the next picture, hidden items are
  /// there until `drop_colours`, or until the painter goes.
  void clear(bool keeps_colours);
  void drop_colours() noexcept;

  /// The item of a type of Tk's at a place, the tuple x1, y1, x2, y2 ...; or one item at each of a
  /// list of places.
  void item(const Ref& type, const Ref& place, const ItemOptions& options) const {
    items(type, py::list(place), options);
  }
  void items(const Ref& type, const Ref& places, const ItemOptions& options) const;
  /// The line, or the filled outlines, through pixels.
  void polyline(const Outline& points, const ItemOptions& options) const;
  void polygons(std::span<const Outline> outlines, const ItemOptions& options) const;
  /// The circle of `radius` pixels around a point.
  void circle(Point centre, double radius, const ItemOptions& options) const;

 private:
  void call_methods(const Ref& name, const Ref& places, const ItemOptions& options) const;

  Ref canvas_;
  Ref call_tcl_;  // gives the words of a command to Tcl; empty where the canvas is no real one
  Ref path_;      // of the real canvas in Tcl
  bool keeps_colours_ = false;
  bool is_direct_ = false;  // whether items go to Tcl without the canvas's methods
};

}  // namespace tandrel::sketcher
