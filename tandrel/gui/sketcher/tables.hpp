// The one place that knows the types of shapes: their names, fields, centres, corners and
// summaries.
#pragma once

#include <vector>

#include "python/method.hpp"

namespace tandrel::sketcher {

/// Marks a text for the catalogues where it is written; `marked` marks it for Python's own marker
/// when the module is loaded.
constexpr const char* N_(const char* text) {
  return text;
}
py::Ref marked(const char* text);

/// What the editor knows of a type of shape. Its outline and its corners the sketch module knows.
struct EntityType {
  struct Field {
    const char* key;
    const char* label;
    bool is_length = true;  // else a plain number: a count or an angle
  };
  struct Centre {  // the keys of its coordinates
    py::Ref x;
    py::Ref y;
  };
  /// The entity's size in a few words, in these display units.
  using Summary = py::Ref (*)(const py::Ref& entity, const py::Ref& unit_system);

  py::Ref name;
  const char* label = nullptr;
  std::vector<Field> fields = {};    // in the order of the form
  std::vector<Centre> centres = {};  // that the pointer snaps to
  bool has_corners = false;          // that the sketch module tells, to snap to
  bool keeps_points = false;         // its corners, under "points", typed as text
  Summary summary = nullptr;
};

/// The type of this name; null for a name that is none.
const EntityType* find_type(const py::Ref& name);
/// Whether an entity of this type keeps a list of its corners under "points".
bool keeps_points(const py::Ref& type);

/// Adds FIELDS, TYPE_LABEL and SNAP_PX to the module.
void add_tables(const py::Ref& module);

/// The module's function `describe`.
const py::Signature& describe_function();

}  // namespace tandrel::sketcher
