// Canvas items of one repaint: the one place that decides how they reach Tk.
//
// An item is made by the canvas's own `create_...` method. Half of such a call is spent in tkinter
// on sorting its arguments, so where nobody could see the difference the same Tcl command is given
// to the interpreter directly: on a real Tk canvas whose methods are still tkinter's own.
#pragma once

#include <array>
#include <vector>

#include "editor_state.hpp"

namespace tandrel::sketcher {

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

class Painter {
 public:
  explicit Painter(Ref canvas);

  /// Raises TclError where the canvas is gone. To be called before anything is asked of the canvas
  /// itself, and before a line that shows an answer of the application; the other items see to it.
  void require_canvas() const;

  /// `coordinates` is the tuple x1, y1, x2, y2 ...
  void line(const Ref& coordinates, const ItemOptions& options);
  void text(const Ref& coordinates, const ItemOptions& options);
  /// The line, or the filled outline, through pixels.
  void polyline(const std::vector<Point>& points, const ItemOptions& options);
  void polygon(const std::vector<Point>& points, const ItemOptions& options);
  /// The circle of `radius` pixels around a point.
  void circle(Point centre, double radius, const ItemOptions& options);

 private:
  struct ItemType {
    std::size_t index;
    Ref name;                    // as Tcl knows it
    Ref method;                  // the canvas method that makes one
    bool shows_answers = false;  // of the application, asked for each item
  };
  /// How items of one type reach Tk, found out at the first of them.
  struct Route {
    bool is_known = false;
    Ref command;  // the first words of the Tcl command; empty: the canvas method makes the item
  };

  void create(const ItemType& type, const Ref& coordinates, const ItemOptions& options);
  void create_through(const std::vector<Point>& points, const ItemType& type,
                      const ItemOptions& options);
  const Ref& command_for(const ItemType& type);
  Ref direct_command(const ItemType& type) const;

  Ref canvas_;
  Ref call_tcl_;   // gives the words of a command to Tcl; empty where the canvas is no real one
  Ref ask_width_;  // such words, asking for the canvas's width
  std::array<Route, 4> routes_;
};

}  // namespace tandrel::sketcher
