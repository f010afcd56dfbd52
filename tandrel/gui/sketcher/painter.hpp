// Canvas items of one repaint.
#pragma once

#include <initializer_list>
#include <vector>

#include "editor_state.hpp"

namespace tandrel::sketcher {

/// The selection, and everything that is being drawn.
inline Ref highlight_colour() {
  return "#E8833A"_n;
}

/// Creates items on a canvas through its own `create_...` methods. Options are keyword
/// dictionaries, made once for many items.
class Painter {
 public:
  explicit Painter(Ref canvas) : canvas_(std::move(canvas)) {}

  /// `coordinates` is the tuple x1, y1, x2, y2 ...
  void line(const Ref& coordinates, const Ref& options) const;
  void polygon(const Ref& coordinates, const Ref& options) const;
  void text(const Ref& coordinates, const Ref& options) const;
  /// The circle of `radius` pixels around a point.
  void circle(Point centre, double radius, const Ref& options) const;

 private:
  Ref canvas_;
};

/// Points as the tuple x1, y1, x2, y2 ...
Ref coordinates(const std::vector<Point>& points);

}  // namespace tandrel::sketcher
