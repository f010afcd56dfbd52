#include "tables.hpp"

#include "neighbours.hpp"
#include "points.hpp"

namespace tandrel::sketcher {

namespace {

constexpr int kSnapPixels = 9;  // SNAP_PX: of the canvas, not scaled to the screen

struct Text {
  const char* key;
  const char* text;
};

/// Marks a text for the catalogues where it is written; Python's own marker sees it at load time.
consteval const char* N_(const char* text) {
  return text;
}

constexpr Text kTools[] = {
    {"select", N_("Select and move")}, {"line", N_("Line (closed outline)")},
    {"rectangle", N_("Rectangle")},    {"circle", N_("Circle")},
    {"regular", N_("Polygon")},        {"slot", N_("Slot")},
};

constexpr Text kToolTips[] = {
    {"select",
     N_("Click a shape to select it and edit its dimensions; drag to move it; Delete removes it.")},
    {"line",
     N_("Click corner after corner; click the first corner again (or press Enter) to close the "
        "outline.")},
    {"rectangle", N_("Drag from one corner to the opposite corner.")},
    {"circle", N_("Press at the centre and drag out the radius.")},
    {"regular", N_("Press at the centre and drag to a corner; set the number of sides first.")},
    {"slot", N_("Click the centre of one end, then the other end, then the width.")},
};

constexpr Text kTypeLabels[] = {
    {"rectangle", N_("Rectangle")}, {"circle", N_("Circle")},   {"regular", N_("Polygon")},
    {"slot", N_("Slot")},           {"polygon", N_("Outline")},
};

struct Field {
  const char* type;
  const char* key;
  const char* label;
  bool is_length = true;  // else a plain number: a count or an angle
};

constexpr Field kFields[] = {
    {"rectangle", "x", N_("Corner u")},
    {"rectangle", "y", N_("Corner v")},
    {"rectangle", "w", N_("Width")},
    {"rectangle", "h", N_("Height")},
    {"rectangle", "radius", N_("Corner radius (0 = sharp)")},
    {"circle", "xc", N_("Centre u")},
    {"circle", "yc", N_("Centre v")},
    {"circle", "r", N_("Radius")},
    {"regular", "xc", N_("Centre u")},
    {"regular", "yc", N_("Centre v")},
    {"regular", "r", N_("Corner radius from centre")},
    {"regular", "n", N_("Sides"), false},
    {"regular", "angle", N_("Angle of first corner (degrees)"), false},
    {"slot", "x1", N_("End 1 centre u")},
    {"slot", "y1", N_("End 1 centre v")},
    {"slot", "x2", N_("End 2 centre u")},
    {"slot", "y2", N_("End 2 centre v")},
    {"slot", "r", N_("Half width")},
    {"polygon", "radius", N_("Corner radius (0 = sharp)")},
};

/// Marks a text for translation; the tables keep the English source.
Ref marked(const char* text) {
  return global("N_"_n)(text);
}

template <std::size_t N>
Ref text_dictionary(const Text (&rows)[N]) {
  Ref result = py::dict();
  for (const Text& row : rows) result.set_item(py::to_python(row.key), marked(row.text));
  return result;
}

Ref tool_list() {
  Ref result = py::list();
  for (const Text& tool : kTools) py::append(result, py::tuple(tool.key, marked(tool.text)));
  return result;
}

Ref field_dictionary() {
  Ref result = py::dict();
  for (const Field& field : kFields) {
    const Ref fields = result.call("setdefault"_n, field.type, py::list());
    py::append(fields, py::tuple(field.key, marked(field.label), field.is_length));
  }
  return result;
}

Ref describe_rectangle(const Ref& entity, const Ref& unit_system) {
  const Ref width = format_length(unit_system, entity["w"_n]);
  return py::text_of(width, " x ", format_length(unit_system, entity["h"_n]));
}

/// Twice the radius.
Ref diameter(const Ref& entity, const Ref& unit_system) {
  return format_length(unit_system, py::to_python(2 * entity["r"_n].to_float()));
}

Ref describe_circle(const Ref& entity, const Ref& unit_system) {
  const Ref text = tr("diameter {d}"_n);
  return text.call("format"_n, py::kw({"d"_a = diameter(entity, unit_system)}));
}

Ref describe_regular(const Ref& entity, const Ref& unit_system) {
  const Ref text = tr("{n} sides, {d} across corners"_n);
  return text.call("format"_n,
                   py::kw({"n"_a = entity["n"_n].to_int(), "d"_a = diameter(entity, unit_system)}));
}

/// Overall length end to end by overall width.
Ref describe_slot(const Ref& entity, const Ref& unit_system) {
  const Point end1 = read_fields(entity, "x1"_n, "y1"_n);
  const Point end2 = read_fields(entity, "x2"_n, "y2"_n);
  const double r = entity["r"_n].to_float();
  const Point axis = end2 - end1;
  const double length = global("math"_n).call("hypot"_n, axis.x, axis.y).number() + 2 * r;
  const Ref overall_length = format_length(unit_system, py::to_python(length));
  return py::text_of(overall_length, " x ", format_length(unit_system, py::to_python(2 * r)));
}

Ref describe_corners(const Ref& entity) {
  const Ref text = tr("{n} corners"_n);
  const Ref points = entity.call("get"_n, "points"_n, py::list());
  return text.call("format"_n, py::kw({"n"_a = points.size()}));
}

Ref describe(const Ref& entity) {
  const Ref unit_system = units();
  const Ref type = entity["type"_n];
  if (type.equals("rectangle"_n)) return describe_rectangle(entity, unit_system);
  if (type.equals("circle"_n)) return describe_circle(entity, unit_system);
  if (type.equals("regular"_n)) return describe_regular(entity, unit_system);
  if (type.equals("slot"_n)) return describe_slot(entity, unit_system);
  return describe_corners(entity);
}

}  // namespace

void add_tables(const Ref& module) {
  module.set_attr("TOOLS"_n, tool_list());
  module.set_attr("TOOL_TIPS"_n, text_dictionary(kToolTips));
  module.set_attr("FIELDS"_n, field_dictionary());
  module.set_attr("TYPE_LABEL"_n, text_dictionary(kTypeLabels));
  module.set_attr("SNAP_PX"_n, kSnapPixels);
}

const py::Signature& describe_function() {
  static const py::Signature& function = *py::static_method<&describe>(
      "describe", {"e"}, "A short summary of an entity in display units.");
  return function;
}

}  // namespace tandrel::sketcher
