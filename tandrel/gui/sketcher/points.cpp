#include "points.hpp"

#include <cstring>

namespace tandrel::sketcher {

Point read_point(const Ref& point) {
  return {point[0].number(), point[1].number()};
}

Point read_fields(const Ref& entity, const Ref& x_key, const Ref& y_key) {
  return {entity[x_key].to_float(), entity[y_key].to_float()};
}

std::optional<std::vector<Point>> PointReader::read_at_once(const Ref& points) {
  if (!is_array_of_doubles(points)) return std::nullopt;
  // Row after row, whatever the strides. A copy, for interpreters before 3.11 have no buffers in
  // their stable interface.
  const Ref copy = points.call("tobytes"_n);
  const std::string_view bytes = copy.bytes();
  std::vector<Point> result(bytes.size() / sizeof(Point));
  if (!result.empty()) std::memcpy(result.data(), bytes.data(), result.size() * sizeof(Point));
  return result;
}

std::vector<Point> PointReader::read(const Ref& points) {
  if (auto result = read_at_once(points)) return *std::move(result);
  std::vector<Point> result;
  py::for_each(points, [&](const Ref& point) { result.push_back(read_point(point)); });
  return result;
}

bool PointReader::is_array_of_doubles(const Ref& points) {
  static_assert(sizeof(Point) == 2 * sizeof(double));
  if (!array_type_) {
    const Ref array_type = global("np"_n).find_attr("ndarray"_n);
    array_type_ = array_type ? array_type : Ref::none();
  }
  if (!points.type().is(array_type_)) return false;
  const Ref shape = points.attr("shape"_n);
  if (shape.size() != 2 || shape[1].number() != 2) return false;
  const Ref type = points.attr("dtype"_n);
  if (type.is(double_type_)) return true;
  if (!type.equals("float64"_n)) return false;
  double_type_ = type;
  return true;
}

}  // namespace tandrel::sketcher
