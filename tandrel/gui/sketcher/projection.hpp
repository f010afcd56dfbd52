// Many points to the screen within one operation.
#pragma once

#include <optional>
#include <vector>

#include "editor_state.hpp"
#include "points.hpp"

namespace tandrel::sketcher {

/// `to_screen` and `to_world` for one operation: reads canvas size, scale and centre once and
/// converts in C++. An overridden operation is called for each point instead.
class Projection {
 public:
  explicit Projection(const Editor& editor);

  Point to_screen(const Ref& point) const;
  Point to_screen(Point point) const;
  /// The points one after the other.
  std::vector<Point> to_screen_all(const Ref& points);
  Point to_world(const Ref& x, const Ref& y) const;

 private:
  const Editor& editor_;
  bool own_to_screen_;
  bool own_to_world_;
  View view_;
  PointReader reader_;
};

}  // namespace tandrel::sketcher
