#include "tables.hpp"

#include "neighbours.hpp"
#include "points.hpp"

namespace tandrel::sketcher {

namespace {

constexpr int kSnapPixels = 9;  // SNAP_PX: of the canvas, not scaled to the screen

// -- summaries ---------------------------------------------------------------------------------

Ref describe_rectangle(const Ref& entity, const Ref& unit_system) {
  const Ref width = format_length(unit_system, entity["w"_n]);
  return py::text_of(width, " x ", format_length(unit_system, entity["h"_n]));
}

/// Twice the radius.
Ref diameter(const Ref& entity, const Ref& unit_system) {
  return format_length(unit_system, py::to_python(2 * entity["r"_n].to_float()));
}

Ref describe_circle(const Ref& entity, const Ref& unit_system) {
  const Ref fill_in = tr("diameter {d}"_n).attr("format"_n);
  return fill_in(py::kw({"d"_a = diameter(entity, unit_system)}));
}

Ref describe_regular(const Ref& entity, const Ref& unit_system) {
  const Ref fill_in = tr("{n} sides, {d} across corners"_n).attr("format"_n);
  return fill_in(py::kw({"n"_a = entity["n"_n].to_int(), "d"_a = diameter(entity, unit_system)}));
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

Ref describe_outline(const Ref& entity, const Ref&) {
  const Ref fill_in = tr("{n} corners"_n).attr("format"_n);
  const Ref points = entity.call("get"_n, "points"_n, py::list());
  return fill_in(py::kw({"n"_a = points.size()}));
}

// -- types -------------------------------------------------------------------------------------

std::vector<EntityType> make_entity_types() {
  return {
      {.name = "rectangle"_n,
       .label = N_("Rectangle"),
       .fields = {{"x", N_("Corner u")},
                  {"y", N_("Corner v")},
                  {"w", N_("Width")},
                  {"h", N_("Height")},
                  {"radius", N_("Corner radius (0 = sharp)")}},
       .has_corners = true,
       .summary = &describe_rectangle},
      {.name = "circle"_n,
       .label = N_("Circle"),
       .fields = {{"xc", N_("Centre u")}, {"yc", N_("Centre v")}, {"r", N_("Radius")}},
       .centres = {{"xc"_n, "yc"_n}},
       .summary = &describe_circle},
      {.name = "regular"_n,
       .label = N_("Polygon"),
       .fields = {{"xc", N_("Centre u")},
                  {"yc", N_("Centre v")},
                  {"r", N_("Corner radius from centre")},
                  {"n", N_("Sides"), false},
                  {"angle", N_("Angle of first corner (degrees)"), false}},
       .centres = {{"xc"_n, "yc"_n}},
       .has_corners = true,
       .summary = &describe_regular},
      {.name = "slot"_n,
       .label = N_("Slot"),
       .fields = {{"x1", N_("End 1 centre u")},
                  {"y1", N_("End 1 centre v")},
                  {"x2", N_("End 2 centre u")},
                  {"y2", N_("End 2 centre v")},
                  {"r", N_("Half width")}},
       .centres = {{"x1"_n, "y1"_n}, {"x2"_n, "y2"_n}},
       .summary = &describe_slot},
      {.name = "polygon"_n,
       .label = N_("Outline"),
       .fields = {{"radius", N_("Corner radius (0 = sharp)")}},
       .has_corners = true,
       .keeps_points = true,
       .summary = &describe_outline},
  };
}

const std::vector<EntityType>& entity_types() {
  // Never destroyed: at process exit the interpreter may be gone before C++ statics are.
  static const auto& types = *new std::vector<EntityType>(make_entity_types());
  return types;
}

Ref field_dictionary() {
  Ref result = py::dict();
  for (const EntityType& type : entity_types()) {
    const Ref fields = py::list();
    for (const EntityType::Field& field : type.fields) {
      py::append(fields, py::tuple(field.key, marked(field.label), field.is_length));
    }
    result.set_item(type.name, fields);
  }
  return result;
}

Ref label_dictionary() {
  Ref result = py::dict();
  for (const EntityType& type : entity_types()) result.set_item(type.name, marked(type.label));
  return result;
}

/// What is no known type is summarised as an outline.
Ref describe(const Ref& entity) {
  const Ref unit_system = units();
  const EntityType* type = find_type(entity["type"_n]);
  return (type != nullptr ? type->summary : &describe_outline)(entity, unit_system);
}

}  // namespace

Ref marked(const char* text) {
  return global("N_"_n)(text);
}

const EntityType* find_type(const Ref& name) {
  for (const EntityType& type : entity_types()) {
    if (name.equals(type.name)) return &type;
  }
  return nullptr;
}

bool keeps_points(const Ref& type) {
  const EntityType* known = find_type(type);
  return known != nullptr && known->keeps_points;
}

void add_tables(const Ref& module) {
  module.set_attr("FIELDS"_n, field_dictionary());
  module.set_attr("TYPE_LABEL"_n, label_dictionary());
  module.set_attr("SNAP_PX"_n, kSnapPixels);
}

const py::Signature& describe_function() {
  static const py::Signature& function = *py::static_method<&describe>(
      "describe", {"e"}, "A short summary of an entity in display units.");
  return function;
}

}  // namespace tandrel::sketcher
