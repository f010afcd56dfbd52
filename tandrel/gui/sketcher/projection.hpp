// Many points to the screen within one operation.
#pragma once

#include <optional>
#include <vector>

#include "editor_state.hpp"
#include "points.hpp"

namespace tandrel::sketcher {

/// `to_screen` and `to_world` for one operation: reads canvas size, scale and centre once, when the
/// first point needs them, and converts in C++. An overridden operation is called for each point
/// instead.
class Projection {
 public:
  explicit Projection(const Editor& editor) : editor_(editor) {}

  /// The canvas pixel of a plane point.
  Point to_screen(const Ref& point);
  Point to_screen(Point point);
  /// The canvas pixels of plane points, in their order.
  std::vector<Point> to_screen_all(const Ref& points);
  /// The same where reading the points runs no code but ours and numpy's, else nothing.
  std::optional<std::vector<Point>> to_screen_at_once(const Ref& points);
  /// The plane point under a canvas pixel.
  Point to_world(const Ref& x, const Ref& y);

  /// Whether `to_screen` is the class's own.
  bool has_own_to_screen();

 private:
  const View& view();

  const Editor& editor_;
  std::optional<bool> has_own_to_screen_;
  std::optional<View> view_;
  PointReader reader_;
};

}  // namespace tandrel::sketcher
