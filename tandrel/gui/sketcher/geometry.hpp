// Points and the view transform in plain numbers, without Python.
//
// Plane points are lengths in SI units with v growing upwards, canvas points are pixels with y
// growing downwards. The formulas are evaluated in the order in which they are written.
#pragma once

#include <cmath>
#include <optional>
#include <span>

namespace tandrel::sketcher {

struct Point {
  double x = 0.0;
  double y = 0.0;
};

inline Point operator+(Point a, Point b) {
  return {a.x + b.x, a.y + b.y};
}
inline Point operator-(Point a, Point b) {
  return {a.x - b.x, a.y - b.y};
}

inline bool is_finite(Point p) {
  return std::isfinite(p.x) && std::isfinite(p.y);
}

/// z component of the cross product of two plane vectors.
inline double cross(Point a, Point b) {
  return a.x * b.y - a.y * b.x;
}

struct Box {
  Point lo;
  Point hi;
};

/// The smaller and the larger of two numbers; where one isn't a number, neither is the result. So
/// numpy's `minimum` and `maximum` have it. Python's own `min` and `max`, which keep the first of
/// two that can't be compared, are `std::min` and `std::max`.
inline double lesser(double a, double b) {
  return std::isnan(a) || a < b ? a : b;
}
inline double greater(double a, double b) {
  return std::isnan(a) || a > b ? a : b;
}

/// The smallest box around two others.
inline Box join(const Box& a, const Box& b) {
  return {{lesser(a.lo.x, b.lo.x), lesser(a.lo.y, b.lo.y)},
          {greater(a.hi.x, b.hi.x), greater(a.hi.y, b.hi.y)}};
}

/// The bounding box of points; none for no points. A coordinate that isn't a number makes its
/// bounds not a number either.
inline std::optional<Box> bounding_box(std::span<const Point> points) {
  if (points.empty()) return std::nullopt;
  Box box{points.front(), points.front()};
  for (const Point p : points.subspan(1)) box = join(box, {p, p});
  return box;
}

/// What the canvas shows: `centre` in the middle of width x height pixels, at `scale` pixels per SI
/// length unit.
struct View {
  double width = 0.0;
  double height = 0.0;
  double scale = 1.0;
  Point centre;

  Point to_screen(Point p) const {
    return {width / 2 + (p.x - centre.x) * scale, height / 2 - (p.y - centre.y) * scale};
  }
  Point to_world(Point pixel) const {
    return {centre.x + (pixel.x - width / 2) / scale, centre.y - (pixel.y - height / 2) / scale};
  }
};

/// Calls `visit(coordinate)` for the multiples of `step` from the last one at or below `from` up to
/// `to`, both finite and both included. A repaint must not run for ever: nothing is visited where
/// the step isn't finite and positive or there would be more than `most` lines (foreign code may
/// change the view between the reading of the bounds and of the step), and the end is also where
/// the coordinate has grown too large for the step to change it.
template <class Visit>
void for_each_grid_coordinate(double from, double to, double step, double most, Visit visit) {
  if (!std::isfinite(step) || step <= 0) return;
  if ((to - from) / step > most) return;
  double coordinate = std::floor(from / step) * step;
  while (coordinate <= to) {
    visit(coordinate);
    const double next = coordinate + step;
    if (next == coordinate) return;
    coordinate = next;
  }
}

/// The grid step to draw: `step`, made five times larger until its lines are `least` pixels apart
/// or multiplying changes nothing any more.
inline double drawn_grid_step(double step, double scale, double least) {
  while (step * scale < least) {
    const double wider = step * 5;
    if (wider == step) break;
    step = wider;
  }
  return step;
}

}  // namespace tandrel::sketcher
