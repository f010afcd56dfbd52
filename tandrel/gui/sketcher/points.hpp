// Plane points of the interpreter's world as numbers.
#pragma once

#include <optional>
#include <vector>

#include "geometry.hpp"
#include "neighbours.hpp"

namespace tandrel::sketcher {

/// The first two items of a sequence of numbers.
Point read_point(const Ref& point);
/// Two values of an entity, each as `float` reads it.
Point read_fields(const Ref& entity, const Ref& x_key, const Ref& y_key);

/// Reads whole outlines: an array of doubles with two columns in one go, anything else point by
/// point. Made for one operation, for it remembers which types it may read at once.
class PointReader {
 public:
  std::vector<Point> read(const Ref& points);
  /// The same where this runs no code but ours and numpy's, else nothing.
  std::optional<std::vector<Point>> read_at_once(const Ref& points);
  /// Calls `visit` with each of `vectors`, read as `float_array` reads it.
  template <class Visit>
  void for_each_vector(const Ref& vectors, Visit visit);

 private:
  bool is_array_of_doubles(const Ref& points);

  Ref array_type_;
  Ref double_type_;
};

template <class Visit>
void PointReader::for_each_vector(const Ref& vectors, Visit visit) {
  if (const auto points = read_at_once(vectors)) {
    for (const Point point : *points) visit(point);
    return;
  }
  py::for_each(vectors, [&](const Ref& vector) {
    const bool is_plain = vector.is_pair_of_numbers();
    visit(read_point(is_plain ? vector : float_array(vector)));
  });
}

}  // namespace tandrel::sketcher
