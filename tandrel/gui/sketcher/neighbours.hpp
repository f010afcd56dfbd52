// The module's own namespace: what it imported, and its tables, read afresh at each use, so that a
// replaced name takes effect at once.
#pragma once

#include "geometry.hpp"
#include "python/object.hpp"

namespace tandrel::sketcher {

using py::Ref;
using namespace py::literals;

/// A name of the module; NameError where it was deleted.
Ref global(const Ref& name);

/// The sketch geometry of the application.
inline Ref S() {
  return global("S"_n);
}
/// The current display units.
inline Ref units() {
  return global("units"_n)();
}
/// A length in SI units as a short display text with its unit.
inline Ref format_length(const Ref& unit_system, const Ref& length) {
  return unit_system.call("fmt"_n, length, "length"_n);
}
/// The translation of an English text.
inline Ref tr(const Ref& text) {
  return global("tr"_n)(text);
}
/// A colour of the application's palette.
inline Ref palette(const Ref& role) {
  return global("PAL"_n)[role];
}
/// A size in nominal pixels at the screen's scaling.
inline Ref px(int size) {
  return global("px"_n)(size);
}
inline Ref deepcopy(const Ref& object) {
  return global("copy"_n).call("deepcopy"_n, object);
}

/// The snapping radius in pixels.
inline double snap_radius() {
  return global("SNAP_PX"_n).number();
}
/// What tkinter itself has under this name; an empty handle where it has none, isn't there, or
/// where something that is no module has its place.
Ref tkinters(const Ref& name);
/// Whether an object is an instance of tkinter's own class of this name. Nothing is asked of the
/// object.
bool is_tkinters(const Ref& object, const Ref& class_name);

/// Whether `np` is numpy as it was imported, so that the same may be computed without it.
bool has_own_numpy();
/// `np.array([x, y])`.
Ref array(Point point);
/// `np.array(vector, float)`.
Ref float_array(const Ref& vector);
/// The Euclidean norm as numpy computes it.
double norm(Point vector);

}  // namespace tandrel::sketcher
