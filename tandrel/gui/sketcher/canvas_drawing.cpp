#include "canvas_drawing.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>

#include "painter.hpp"
#include "projection.hpp"

namespace tandrel::sketcher {

namespace {

constexpr double kLeastGridPixels = 10;
constexpr double kLeastGridLines = 100'000;  // that can always be drawn
constexpr double kCornerRadius = 3;          // pixels; rings on the clicked corners
constexpr double kPointerRadius = 2;         // pixels; the dot where a click would land
constexpr std::size_t kMostTogether = 64;    // shapes

Ref first_axis_colour() {
  return "#D2504B"_n;
}
Ref second_axis_colour() {
  return "#3E9B5B"_n;
}

/// What one repaint works with.
struct Picture {
  explicit Picture(const Editor& of)
      : editor(of),
        canvas(of.canvas()),
        width(canvas.call("winfo_width"_n)),
        height(canvas.call("winfo_height"_n)) {}

  const Editor& editor;
  Ref canvas;
  Ref width;  // pixels, as the canvas gives them
  Ref height;
};

/// Whether painting asks the application for nothing but outlines and colours.
bool is_plain(const Editor& editor, Projection& projection) {
  return projection.has_own_to_screen() && !editor.object().type().find_attr("sel"_n);
}

// -- background --------------------------------------------------------------------------------

/// More grid lines than a side of the canvas has room for.
double most_lines(const Ref& pixels) {
  return std::max(pixels.number(), kLeastGridLines);
}

void draw_grid(const Picture& picture, Projection& projection, Painter& painter) {
  const Ref zero = py::to_python(0);
  const Point lo = projection.to_world(zero, picture.height);
  const Point hi = projection.to_world(picture.width, zero);
  const double typed_step = picture.editor.call("grid_step"_n).number();
  const double step = drawn_grid_step(typed_step, picture.editor.scale(), kLeastGridPixels);
  if (!is_finite(lo) || !is_finite(hi)) return;
  ItemOptions options;
  Ref places = py::list();
  const auto draw_gathered = [&] {
    if (places.size() == 0) return;
    if (!options) options = ItemOptions("fill"_n, palette("bg"_n));
    painter.items("line"_n, places, options);
    places = py::list();
  };
  const auto add_line = [&](const Ref& x1, const Ref& y1, const Ref& x2, const Ref& y2) {
    py::append(places, py::tuple(x1, y1, x2, y2));
    // An overridden `to_screen` sees each line on the canvas before it is asked for the next one.
    if (!projection.has_own_to_screen()) draw_gathered();
  };
  for_each_grid_coordinate(lo.x, hi.x, step, most_lines(picture.width), [&](double x) {
    const Ref sx = py::to_python(projection.to_screen({x, 0}).x);
    add_line(sx, zero, sx, picture.height);
  });
  for_each_grid_coordinate(lo.y, hi.y, step, most_lines(picture.height), [&](double y) {
    const Ref sy = py::to_python(projection.to_screen({0, y}).y);
    add_line(zero, sy, picture.width, sy);
  });
  draw_gathered();
}

void draw_axes(const Picture& picture, Projection& projection, Painter& painter) {
  const Point origin = projection.to_screen({0, 0});
  const auto [first, second] = picture.editor.axis_names();
  const Ref dash = py::tuple(4, 3);
  painter.item("line"_n, py::tuple(0, origin.y, picture.width, origin.y),
               ItemOptions("fill"_n, first_axis_colour(), "dash"_n, dash));
  painter.item("line"_n, py::tuple(origin.x, 0, origin.x, picture.height),
               ItemOptions("fill"_n, second_axis_colour(), "dash"_n, dash));
  painter.item("text"_n, py::tuple(picture.width.subtract(py::to_python(6)), origin.y - 4),
               ItemOptions("text"_n, first, "anchor"_n, "se", "fill"_n, first_axis_colour()));
  painter.item("text"_n, py::tuple(origin.x + 4, 6),
               ItemOptions("text"_n, second, "anchor"_n, "nw", "fill"_n, second_axis_colour()));
}

void draw_references(const Picture& picture, Projection& projection, Painter& painter) {
  py::for_each(picture.editor.get("refs"_n), [&](const Ref& reference) {
    const Ref points = py::unpack<2>(reference)[1];
    if (points.size() < 2) return;
    std::vector<Point> pixels = projection.to_screen_all(points);
    if (pixels.empty()) return;  // whatever length it tells
    pixels.push_back(pixels.front());
    painter.polyline(pixels, ItemOptions("fill"_n, palette("muted"_n), "dash"_n, py::tuple(2, 3)));
  });
}

// -- shapes ------------------------------------------------------------------------------------

/// The outlines of one repaint: each entity's is asked for once, when it is first needed, unless
/// `_ok` is overridden and has to be asked at each turn.
class Outlines {
 public:
  Outlines(const Editor& editor, const Ref& entities)
      : editor_(editor), own_ok_(entities.size() != 0 && editor.has_own("_ok"_n)) {}

  bool is_valid(std::size_t index, const Ref& entity) {
    return own_ok_ ? static_cast<bool>(find(index, entity)) : editor_.is_valid(entity);
  }
  /// Whether `find` has its answer already.
  bool has_asked(std::size_t index, const Ref& entity) const {
    return index < answers_.size() && answers_[index].entity.is(entity);
  }
  /// Empty for an entity that isn't valid.
  Ref find(std::size_t index, const Ref& entity) {
    if (!own_ok_) return editor_.valid_outline(entity);
    if (index >= answers_.size()) answers_.resize(index + 1);
    if (!has_asked(index, entity)) {
      answers_[index] = {entity, outline_unless_refused(entity)};
    }
    return answers_[index].outline;
  }

 private:
  struct Answer {
    Ref entity;
    Ref outline;
  };

  const Editor& editor_;
  bool own_ok_;
  std::vector<Answer> answers_;
};

/// One nesting depth for each entity. All zero where an entity isn't valid or the sketch module
/// can't tell.
std::vector<double> nesting_depths(const Editor& editor, const Ref& entities, Outlines& outlines) {
  Ref depths;
  py::attempt(
      [&] {
        std::size_t index = 0;
        const bool all_valid = py::all_of(
            entities, [&](const Ref& entity) { return outlines.is_valid(index++, entity); });
        if (all_valid) depths = S().call("depths"_n, editor.sketch());
      },
      py::ValueError, py::KeyError);
  std::vector<double> result(static_cast<std::size_t>(entities.size()));
  if (depths) {
    for (std::size_t i = 0; i < result.size(); ++i) {
      result[i] = depths[static_cast<Py_ssize_t>(i)].number();
    }
  }
  return result;
}

/// Indexes by depth; those of equal depth keep their order. What isn't a number comes last, for a
/// sort needs every two depths to be comparable.
std::vector<std::size_t> painting_order(std::vector<double> depths) {
  for (double& depth : depths) {
    if (std::isnan(depth)) depth = std::numeric_limits<double>::infinity();
  }
  std::vector<std::size_t> order(depths.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return depths[a] < depths[b]; });
  return order;
}

/// Polygon options of the four looks of a shape, each made when it is first needed.
class ShapeLooks {
 public:
  bool has_asked(bool is_hole, bool is_selected) const {
    return static_cast<bool>(looks_[is_hole ? 1 : 0][is_selected ? 1 : 0]);
  }
  const ItemOptions& of(bool is_hole, bool is_selected) {
    ItemOptions& look = looks_[is_hole ? 1 : 0][is_selected ? 1 : 0];
    if (!look) {
      const Ref fill = palette(is_hole ? "panel"_n : "accent_soft"_n);
      const Ref outline = is_selected ? highlight_colour() : palette("accent"_n);
      look = ItemOptions("fill"_n, fill, "outline"_n, outline, "width"_n, is_selected ? 3 : 2);
    }
    return look;
  }

 private:
  ItemOptions looks_[2][2];
};

/// Shapes of one look, one upon the other, that wait to be painted together: not so many that what
/// was made of the first is out of the processor's caches before the last is there.
class Run {
 public:
  explicit Run(const Painter& painter) : painter_(painter) {}

  void add(Outline pixels, const ItemOptions& look) {
    if (look_ != &look || outlines_.size() == kMostTogether) paint();
    look_ = &look;
    outlines_.push_back(std::move(pixels));
  }
  void paint() {
    if (!outlines_.empty()) painter_.polygons(outlines_, *look_);
    outlines_.clear();
  }

 private:
  const Painter& painter_;
  const ItemOptions* look_ = nullptr;
  std::vector<Outline> outlines_;
};

void draw_shapes(const Editor& editor, Projection& projection, Painter& painter) {
  const Ref entities = editor.entities();
  Outlines outlines(editor, entities);
  const std::vector<double> depths = nesting_depths(editor, entities, outlines);
  const bool may_wait = entities.is_exact_list() && is_plain(editor, projection);
  ShapeLooks looks;
  Run run(painter);
  for (const std::size_t index : painting_order(depths)) {
    const Ref entity = entities[static_cast<Py_ssize_t>(index)];
    if (!outlines.has_asked(index, entity)) run.paint();
    const Ref outline = outlines.find(index, entity);
    if (!outline) continue;
    std::optional<Outline> pixels = projection.to_screen_at_once(outline);
    if (!pixels) {
      run.paint();
      pixels = projection.to_screen_all(outline);
    }
    const bool is_hole = std::fmod(depths[index], 2) != 0;
    const Ref selection = editor.selection();
    if (!selection.is_none() && !selection.is_exact_int()) run.paint();
    const bool is_selected = py::to_python(index).equals(selection);
    if (!looks.has_asked(is_hole, is_selected)) run.paint();
    run.add(*std::move(pixels), looks.of(is_hole, is_selected));
    if (is_selected || !may_wait) run.paint();
    if (!is_selected) continue;
    painter.drop_colours();
    editor.call("_dimensions"_n, entity);
  }
  run.paint();
}

void redraw(const Editor& editor) {
  Painter painter(editor.canvas());
  Projection projection(editor);
  painter.clear(is_plain(editor, projection));
  const Picture picture(editor);
  if (picture.width.number() < 2) return;  // not laid out yet
  draw_grid(picture, projection, painter);
  draw_axes(picture, projection, painter);
  draw_references(picture, projection, painter);
  draw_shapes(editor, projection, painter);
  painter.drop_colours();
  editor.call("_preview"_n);
}

// -- dimension labels --------------------------------------------------------------------------

class Labels {
 public:
  explicit Labels(const Editor& editor)
      : editor_(editor), painter_(editor.canvas()), unit_system_(units()) {}

  const Editor& editor() const { return editor_; }

  Ref length(double value) const { return format_length(unit_system_, py::to_python(value)); }

  /// Writes a label centred on a pixel.
  void write(Point pixel, const Ref& text) {
    painter_.item("text"_n, py::tuple(pixel.x, pixel.y),
                  ItemOptions("text"_n, text, "fill"_n, highlight_colour()));
  }
  /// Writes a label with its left end at a pixel.
  void write_right_of(Point pixel, const Ref& text) {
    painter_.item("text"_n, py::tuple(pixel.x, pixel.y),
                  ItemOptions("text"_n, text, "fill"_n, highlight_colour(), "anchor"_n, "w"));
  }

 private:
  const Editor& editor_;
  Painter painter_;
  Ref unit_system_;
};

void label_rectangle(Labels& labels, const Ref& entity) {
  const Point corner = read_fields(entity, "x"_n, "y"_n);
  const Point size = read_fields(entity, "w"_n, "h"_n);
  const Point below = labels.editor().to_screen(py::tuple(corner.x + size.x / 2, corner.y));
  labels.write(below + Point{0, 12}, labels.length(size.x));
  const Point right =
      labels.editor().to_screen(py::tuple(corner.x + size.x, corner.y + size.y / 2));
  labels.write_right_of(right + Point{6, 0}, labels.length(size.y));
}

void label_diameter(Labels& labels, const Ref& entity, const Ref& prefix) {
  const Ref x = entity["xc"_n];
  const Point centre = labels.editor().to_screen(py::tuple(x, entity["yc"_n]));
  const Ref diameter = labels.length(2 * entity["r"_n].to_float());
  labels.write(centre, py::text_of(prefix, diameter));
}

void label_slot(Labels& labels, const Ref& entity) {
  const Point end1 = read_fields(entity, "x1"_n, "y1"_n);
  const Point end2 = read_fields(entity, "x2"_n, "y2"_n);
  const Point sum = end1 + end2;
  const Point middle = labels.editor().to_screen(py::tuple(sum.x * 0.5, sum.y * 0.5));
  labels.write(middle, global("describe"_n)(entity));
}

void dimensions(const Editor& editor, const Ref& entity) {
  Labels labels(editor);
  const Ref type = entity["type"_n];
  if (type.equals("rectangle"_n)) {
    label_rectangle(labels, entity);
  } else if (type.equals("circle"_n)) {
    label_diameter(labels, entity, "Ø "_n);
  } else if (type.equals("regular"_n)) {
    label_diameter(labels, entity, ""_n);
  } else if (type.equals("slot"_n)) {
    label_slot(labels, entity);
  }
}

// -- live preview ------------------------------------------------------------------------------

class Preview {
 public:
  explicit Preview(const Editor& editor)
      : editor_(editor),
        cursor_(editor.get("cursor"_n)),
        projection_(editor),
        painter_(editor.canvas()) {}

  void draw() {
    const Ref tool = editor_.variable("tool"_n);
    const Ref drag = editor_.get("drag"_n);
    if (drag.truth() && drag.call("get"_n, "kind"_n).equals("new"_n)) {
      draw_outline(editor_.call("_from_drag"_n, drag["start"_n], cursor_));
    }
    if (tool.equals("line"_n)) draw_corners(editor_.get("clicks"_n));
    if (tool.equals("slot"_n)) draw_slot(editor_.get("clicks"_n));
    painter_.circle(projection_.to_screen(cursor_), kPointerRadius,
                    ItemOptions("fill"_n, highlight_colour(), "outline"_n, ""_n));
  }

 private:
  static Ref dash() { return py::tuple(5, 3); }

  void draw_outline(const Ref& entity) {
    if (entity.is_none()) return;
    const Ref outline = editor_.valid_outline(entity);
    if (!outline) return;
    painter_.polygons(std::array{projection_.to_screen_all(outline)},
                      ItemOptions("fill"_n, ""_n, "outline"_n, highlight_colour(), "width"_n, 2,
                                  "dash"_n, dash()));
  }

  void draw_corners(const Ref& clicks) {
    if (!clicks.truth()) return;
    std::vector<Point> pixels = projection_.to_screen_all(clicks);
    pixels.push_back(projection_.to_screen(cursor_));
    painter_.polyline(pixels, ItemOptions("fill"_n, highlight_colour(), "width"_n, 2));
    const ItemOptions ring("outline"_n, highlight_colour());
    py::for_each(clicks, [&](const Ref& click) {
      painter_.circle(projection_.to_screen(click), kCornerRadius, ring);
    });
  }

  void draw_slot(const Ref& clicks) {
    if (!clicks.truth()) return;
    if (clicks.size() != 1) {
      const Ref end1 = clicks[0];
      draw_outline(editor_.call("_slot"_n, end1, clicks[1], cursor_));
      return;
    }
    const Point end = projection_.to_screen(clicks[0]);
    painter_.polyline({end, projection_.to_screen(cursor_)},
                      ItemOptions("fill"_n, highlight_colour(), "width"_n, 2, "dash"_n, dash()));
  }

  const Editor& editor_;
  Ref cursor_;
  Projection projection_;
  Painter painter_;
};

void preview(const Editor& editor) {
  Preview(editor).draw();
}

}  // namespace

const py::Methods& canvas_drawing_methods() {
  using py::method;
  static const py::Methods& methods = *new py::Methods{
      method<&redraw>("redraw", {}, "Paint the whole picture again."),
      method<&dimensions>("_dimensions", {"e"}, "Dimension labels for the selected shape."),
      method<&preview>("_preview", {}, "The shape being drawn, following the pointer."),
  };
  return methods;
}

}  // namespace tandrel::sketcher
