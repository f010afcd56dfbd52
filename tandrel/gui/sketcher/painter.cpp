#include "painter.hpp"

namespace tandrel::sketcher {

void Painter::line(const Ref& coordinates, const Ref& options) const {
  canvas_.attr("create_line"_n).apply(coordinates, options);
}

void Painter::polygon(const Ref& coordinates, const Ref& options) const {
  canvas_.attr("create_polygon"_n).apply(coordinates, options);
}

void Painter::text(const Ref& coordinates, const Ref& options) const {
  canvas_.attr("create_text"_n).apply(coordinates, options);
}

void Painter::circle(Point centre, double radius, const Ref& options) const {
  const Ref box =
      py::tuple(centre.x - radius, centre.y - radius, centre.x + radius, centre.y + radius);
  canvas_.attr("create_oval"_n).apply(box, options);
}

Ref coordinates(const std::vector<Point>& points) {
  std::vector<double> values;
  values.reserve(2 * points.size());
  for (const Point p : points) values.insert(values.end(), {p.x, p.y});
  return py::tuple_of(values);
}

}  // namespace tandrel::sketcher
