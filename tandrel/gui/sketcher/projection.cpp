#include "projection.hpp"

namespace tandrel::sketcher {

Projection::Projection(const Editor& editor)
    : editor_(editor),
      own_to_screen_(editor.has_own("to_screen"_n)),
      own_to_world_(editor.has_own("to_world"_n)) {
  if (own_to_screen_ || own_to_world_) view_ = editor.view();
}

Point Projection::to_screen(const Ref& point) const {
  return own_to_screen_ ? view_.to_screen(read_point(point)) : editor_.to_screen(point);
}

Point Projection::to_screen(Point point) const {
  return own_to_screen_ ? view_.to_screen(point) : editor_.to_screen(py::tuple(point.x, point.y));
}

std::vector<Point> Projection::to_screen_all(const Ref& points) {
  std::vector<Point> result;
  if (own_to_screen_) {
    result = reader_.read(points);
    for (Point& point : result) point = view_.to_screen(point);
  } else {
    py::for_each(points, [&](const Ref& point) { result.push_back(editor_.to_screen(point)); });
  }
  return result;
}

Point Projection::to_world(const Ref& x, const Ref& y) const {
  if (own_to_world_) return view_.to_world({x.number(), y.number()});
  return read_point(editor_.call("to_world"_n, x, y));
}

}  // namespace tandrel::sketcher
