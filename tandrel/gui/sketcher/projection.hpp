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

  Point to_screen(const Ref& point);
  Point to_screen(Point point);
  /// The points one after the other.
  std::vector<Point> to_screen_all(const Ref& points);
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
