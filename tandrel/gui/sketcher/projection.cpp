#include "projection.hpp"

namespace tandrel::sketcher {

bool Projection::has_own_to_screen() {
  if (!has_own_to_screen_) has_own_to_screen_ = editor_.has_own("to_screen"_n);
  return *has_own_to_screen_;
}

const View& Projection::view() {
  if (!view_) view_ = editor_.view();
  return *view_;
}

Point Projection::to_screen(const Ref& point) {
  return has_own_to_screen() ? view().to_screen(read_point(point)) : editor_.to_screen(point);
}

Point Projection::to_screen(Point point) {
  if (has_own_to_screen()) return view().to_screen(point);
  return editor_.to_screen(py::tuple(point.x, point.y));
}

std::optional<std::vector<Point>> Projection::to_screen_at_once(const Ref& points) {
  if (!has_own_to_screen()) return std::nullopt;
  auto result = reader_.read_at_once(points);
  if (result) {
    for (Point& point : *result) point = view().to_screen(point);
  }
  return result;
}

std::vector<Point> Projection::to_screen_all(const Ref& points) {
  if (auto result = to_screen_at_once(points)) return *std::move(result);
  std::vector<Point> result;
  py::for_each(points, [&](const Ref& point) { result.push_back(to_screen(point)); });
  return result;
}

Point Projection::to_world(const Ref& x, const Ref& y) {
  if (editor_.has_own("to_world"_n)) return view().to_world({x.number(), y.number()});
  return read_point(editor_.call("to_world"_n, x, y));
}

}  // namespace tandrel::sketcher
