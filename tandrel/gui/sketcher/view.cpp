#include "view.hpp"

#include <algorithm>
#include <cmath>

#include "projection.hpp"
#include "tables.hpp"

namespace tandrel::sketcher {

namespace {

constexpr double kEmptyExtent = 0.05;  // SI length; half the side of an empty sketch's box
constexpr double kLeastExtent = 1e-9;  // SI length; a point or a flat box must not divide by zero
constexpr double kLeastCanvas = 200;   // pixels; a canvas that isn't mapped yet reports 1 x 1
constexpr double kFilled = 0.8;        // part of the canvas that a fitted sketch fills
constexpr double kCellsAcross = 20;    // grid cells along the longer side of the extent, at least

// -- coordinates -------------------------------------------------------------------------------

Ref to_screen(const Editor& editor, const Ref& point) {
  const Point pixel = editor.view().to_screen(read_point(point));
  return py::tuple(pixel.x, pixel.y);
}

Ref to_world(const Editor& editor, const Ref& x, const Ref& y) {
  const View view = editor.view();
  return array(view.to_world({x.number(), y.number()}));
}

// -- extent, fit, zoom, pan --------------------------------------------------------------------

/// Everything that the view frames: the outlines of the valid entities, then the references.
Ref framed_outlines(const Editor& editor) {
  Ref outlines = py::list();
  py::for_each(editor.entities(), [&](const Ref& entity) {
    if (const Ref outline = editor.valid_outline(entity)) py::append(outlines, outline);
  });
  py::for_each(editor.get("refs"_n), [&](const Ref& reference) {
    const Ref points = reference[1];
    if (points.size() != 0) py::append(outlines, points);
  });
  return outlines;
}

/// The bounding box of outlines. An outline without points is left to numpy's stacking, which
/// refuses it in its own words.
Box bounding_box_of(const Ref& outlines) {
  PointReader reader;
  std::optional<Box> all;
  bool has_empty = false;
  py::for_each(outlines, [&](const Ref& outline) {
    const std::optional<Box> box = bounding_box(reader.read(outline));
    has_empty = has_empty || !box;
    if (box) all = all ? join(*all, *box) : *box;
  });
  if (all && !has_empty) return *all;
  const Ref stacked = global("np"_n).call("vstack"_n, outlines);
  const Ref lo = stacked.call("min"_n, py::kw({"axis"_a = 0}));
  return {read_point(lo), read_point(stacked.call("max"_n, py::kw({"axis"_a = 0})))};
}

Ref extent(const Editor& editor) {
  const Ref outlines = framed_outlines(editor);
  const Box box = outlines.size() == 0
                      ? Box{{-kEmptyExtent, -kEmptyExtent}, {kEmptyExtent, kEmptyExtent}}
                      : bounding_box_of(outlines);
  const Ref lo = array(box.lo);
  return py::tuple(lo, array(box.hi));
}

Box read_extent(const Editor& editor) {
  const auto [lo, hi] = py::unpack<2>(editor.call("_extent"_n));
  return {read_point(lo), read_point(hi)};
}

void fit(const Editor& editor) {
  const Box box = read_extent(editor);
  const Point size = box.hi - box.lo;
  const Ref canvas = editor.canvas();
  const double width = std::max(canvas.call("winfo_width"_n).number(), kLeastCanvas);
  const double height = std::max(canvas.call("winfo_height"_n).number(), kLeastCanvas);
  const double across = width / greater(size.x, kLeastExtent);
  const double along = height / greater(size.y, kLeastExtent);
  editor.set("scale"_n, kFilled * std::min(across, along));
  const Point sum = box.lo + box.hi;
  editor.set_centre({sum.x / 2, sum.y / 2});
  editor.redraw();
}

void zoom(const Editor& editor, const Ref& factor, const Ref& x, const Ref& y) {
  const Point before = read_point(editor.call("to_world"_n, x, y));
  editor.set("scale"_n, editor.scale() * factor.number());
  const Point after = read_point(editor.call("to_world"_n, x, y));
  editor.set_centre(editor.centre() + (before - after));
  editor.redraw();
}

void pan_start(const Editor& editor, const Ref& event) {
  const Ref x = event.attr("x"_n);
  const Ref y = event.attr("y"_n);
  editor.set("_pan"_n, py::tuple(x, y, editor.get("centre"_n).call("copy"_n)));
}

void pan_move(const Editor& editor, const Ref& event) {
  const auto [x0, y0, centre0] = py::unpack<3>(editor.get("_pan"_n));
  const Point start = read_point(centre0);
  const double dx = event.attr("x"_n).number() - x0.number();
  const double dy = event.attr("y"_n).number() - y0.number();
  const double scale = editor.scale();
  editor.set_centre(start - Point{dx / scale, -dy / scale});
  editor.redraw();
}

// -- grid step ---------------------------------------------------------------------------------

Ref grid_step(const Editor& editor) {
  Ref step;
  const auto unreadable = py::attempt(
      [&] {
        const Ref unit_system = units();
        const double typed = editor.variable("grid"_n).to_float();
        step = unit_system.call("to_si"_n, typed, "length"_n);
        if (!step.greater(py::to_python(0))) step = editor.call("_default_grid"_n);
      },
      py::ValueError);
  return unreadable ? editor.call("_default_grid"_n) : step;
}

/// The largest power of ten not above a twentieth of the extent's longer side.
Ref default_grid(const Editor& editor) {
  const Box box = read_extent(editor);
  const Point size = box.hi - box.lo;
  // A coordinate that isn't a number makes both corners so, and one of them tells. The extent may
  // be infinite all the same; the floor of its logarithm is an OverflowError.
  const double span = is_finite(box.lo) ? std::max(size.x, size.y) : 2 * kEmptyExtent;
  const Ref math = global("math"_n);
  const Ref logarithm = math.call("log10"_n, std::max(span, kLeastExtent) / kCellsAcross);
  return py::to_python(10).power(math.call("floor"_n, logarithm));
}

// -- key points and snapping -------------------------------------------------------------------

/// Calls `on_point` with each centre of an entity, then `on_corners` with what the host gives for
/// its corners.
template <class OnPoint, class OnCorners>
void visit_key_points_of(const Ref& entity, const Ref& type, OnPoint on_point,
                         OnCorners on_corners) {
  const EntityType* known = find_type(type);
  if (known == nullptr) return;
  for (const auto& [x, y] : known->centres) on_point(read_fields(entity, x, y));
  if (known->has_corners) on_corners(S().call("corners"_n, entity));
}

/// Visits the key points of all entities. An entity that can't be read to its end gives those that
/// it gave so far.
template <class OnPoint, class OnCorners>
void visit_entity_key_points(const Editor& editor, OnPoint on_point, OnCorners on_corners) {
  py::for_each(editor.entities(), [&](const Ref& entity) {
    const Ref type = entity["type"_n];
    py::attempt([&] { visit_key_points_of(entity, type, on_point, on_corners); }, py::ValueError,
                py::KeyError);
  });
}

Ref key_points(const Editor& editor) {
  Ref points = py::list();
  py::append(points, global("np"_n).call("zeros"_n, 2));
  visit_entity_key_points(
      editor, [&](Point centre) { py::append(points, array(centre)); },
      [&](const Ref& corners) {
        py::for_each(corners, [&](const Ref& corner) { py::append(points, float_array(corner)); });
      });
  py::for_each(editor.get("clicks"_n), [&](const Ref& click) { py::append(points, click); });
  return points;
}

/// Finds the key point nearest to a pixel, within the snapping radius.
class NearestPixel {
 public:
  explicit NearestPixel(Point pixel)
      : pixel_(pixel), hypot_(global("math"_n).attr("hypot"_n)), distance_(snap_radius()) {}

  /// Whether a screen point is closer than all before it; the first of equals stays.
  bool offer(Point screen) {
    const Point d = screen - pixel_;
    const double distance = hypot_(d.x, d.y).number();
    if (!(distance < distance_)) return false;
    distance_ = distance;
    return true;
  }

 private:
  Point pixel_;
  Ref hypot_;
  double distance_;
};

/// What `key_points` gives, as numbers.
std::vector<Point> read_key_points(const Editor& editor) {
  std::vector<Point> points{Point{}};  // the origin
  const auto keep = [&](Point point) { points.push_back(point); };
  PointReader reader;
  visit_entity_key_points(editor, keep,
                          [&](const Ref& corners) { reader.for_each_vector(corners, keep); });
  py::for_each(editor.get("clicks"_n), [&](const Ref& click) { keep(read_point(click)); });
  return points;
}

std::optional<Point> nearest_key_point(const Editor& editor, Point pixel) {
  Projection projection(editor);
  NearestPixel nearest(pixel);
  if (editor.has_own("key_points"_n) && projection.has_own_to_screen() && has_own_numpy()) {
    std::optional<Point> best;
    for (const Point point : read_key_points(editor)) {
      if (nearest.offer(projection.to_screen(point))) best = point;
    }
    return best;
  }
  Ref best;
  py::for_each(editor.call("key_points"_n), [&](const Ref& point) {
    if (nearest.offer(projection.to_screen(point))) best = point;
  });
  return best ? std::optional(read_point(best)) : std::nullopt;
}

Ref snapped(const Editor& editor, const Ref& x, const Ref& y) {
  Ref world = editor.call("to_world"_n, x, y);
  if (const auto key_point = nearest_key_point(editor, {x.number(), y.number()})) {
    return array(*key_point);
  }
  if (!editor.variable("snap"_n).truth()) return world;
  const Point free = read_point(world);
  const double step = editor.call("grid_step"_n).number();
  return array({std::nearbyint(free.x / step) * step, std::nearbyint(free.y / step) * step});
}

}  // namespace

const py::Methods& view_methods() {
  using py::method;
  static const py::Methods& methods = *new py::Methods{
      method<&to_screen>("to_screen", {"p"}, "Canvas pixels (x, y) of a plane point."),
      method<&to_world>("to_world", {"x", "y"}, "The plane point under a canvas pixel."),
      method<&extent>("_extent", {}, "Lower left and upper right corner of everything shown."),
      method<&fit>("fit", {}, "Show everything, with a margin."),
      method<&zoom>("_zoom", {"f", "x", "y"}, "Scale the view by f around a canvas pixel."),
      method<&pan_start>("_pan_start", {"e"}, "Remember where a pan drag begins."),
      method<&pan_move>("_pan_move", {"e"}, "Move the view with the pointer."),
      method<&grid_step>("grid_step", {}, "The grid spacing in SI length units."),
      method<&default_grid>("_default_grid", {}, "A round grid spacing for the sketch's extent."),
      method<&key_points>(
          "key_points", {},
          "The plane points that the pointer snaps to: the origin, centres, corners "
          "and slot ends of the shapes, and the corners clicked so far."),
      method<&snapped>("snapped", {"x", "y"},
                       "The plane point for a canvas pixel, pulled onto the nearest key point or "
                       "else, where the grid is on, onto the grid."),
  };
  return methods;
}

}  // namespace tandrel::sketcher
