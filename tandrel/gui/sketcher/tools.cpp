#include "tools.hpp"

#include <cmath>
#include <limits>

#include "projection.hpp"
#include "tables.hpp"

namespace tandrel::sketcher {

namespace {

constexpr int kLeastCorners = 3;
constexpr int kLeastSides = 3;
constexpr int kDefaultSides = 6;
constexpr int kAngleDecimals = 6;

// -- the tools ---------------------------------------------------------------------------------

struct Tool {
  using Press = void (*)(const Editor& editor, const Ref& event, const Ref& point);
  using Shape = Ref (*)(const Editor& editor, Point start, Point end);

  Ref name;
  const char* label = nullptr;
  const char* tip = nullptr;
  Press press = nullptr;  // `point` is the event's, snapped
  Shape shape = nullptr;  // of a drag, or None; null for a tool that isn't dragged
};

/// In the order of the buttons.
const std::vector<Tool>& tools();

/// The tool in use; null where the variable holds another text.
const Tool* chosen_tool(const Editor& editor) {
  const Ref name = editor.variable("tool"_n);
  for (const Tool& tool : tools()) {
    if (name.equals(tool.name)) return &tool;
  }
  return nullptr;
}

// -- hover -------------------------------------------------------------------------------------

void motion(const Editor& editor, const Ref& event) {
  const Ref cursor = editor.snapped(event);
  editor.set("cursor"_n, cursor);
  const Ref unit_system = units();
  const auto [first, second] = editor.axis_names();
  const Ref u = format_length(unit_system, cursor[0]);
  const Ref v = format_length(unit_system, cursor[1]);
  const Ref hint = tr(global("TOOL_TIPS"_n)[editor.variable("tool"_n)]);
  editor.set_status(py::text_of(first, " = ", u, "   ", second, " = ", v, "     ", hint));
  editor.redraw();
}

// -- press, drag, release ----------------------------------------------------------------------

void press_select(const Editor& editor, const Ref& event, const Ref& start) {
  const Ref x = event.attr("x"_n);
  const Ref hit = editor.call("pick"_n, x, event.attr("y"_n));
  editor.call("select"_n, hit);
  if (hit.is_none()) return;
  const Ref original = deepcopy(editor.entities()[hit]);
  editor.set("drag"_n, py::dict({"kind"_a = "move"_n, "start"_a = start, "orig"_a = original}));
}

/// Whether a click lands on the first corner of an outline that has enough corners to be closed.
bool closes_outline(const Editor& editor, const Ref& event, const Ref& clicks) {
  if (clicks.size() < kLeastCorners) return false;
  const Point first = editor.to_screen(clicks[0]);
  const Point click{event.attr("x"_n).number(), event.attr("y"_n).number()};
  const Point d = click - first;
  return global("math"_n).call("hypot"_n, d.x, d.y).number() <= snap_radius();
}

bool is_elsewhere(const Ref& point, const Ref& other) {
  return norm(read_point(point) - read_point(other)) > 0;
}

void press_line(const Editor& editor, const Ref& event, const Ref& point) {
  if (closes_outline(editor, event, editor.get("clicks"_n))) {
    editor.call("close_line"_n);
    return;
  }
  // Read again: the operations asked so far may have put another list there.
  const Ref clicks = editor.get("clicks"_n);
  if (!clicks.truth() || is_elsewhere(point, clicks[clicks.size() - 1])) {
    clicks.call("append"_n, point);
  }
  editor.redraw();
}

void press_slot(const Editor& editor, const Ref&, const Ref& point) {
  const Ref clicks = editor.get("clicks"_n);
  if (clicks.size() < 2) {
    if (!clicks.truth() || is_elsewhere(point, clicks[0])) clicks.call("append"_n, point);
  } else {
    const Ref end1 = clicks[0];
    const Ref entity = editor.call("_slot"_n, end1, clicks[1], point);
    editor.set("clicks"_n, py::list());
    if (!entity.is_none()) editor.call("add"_n, entity);
  }
  editor.redraw();
}

void press_drag(const Editor& editor, const Ref&, const Ref& point) {
  editor.set("drag"_n, py::dict({"kind"_a = "new"_n, "start"_a = point}));
}

void press(const Editor& editor, const Ref& event) {
  const Ref point = editor.snapped(event);
  editor.set("cursor"_n, point);
  if (const Tool* tool = chosen_tool(editor)) tool->press(editor, event, point);
}

void drag(const Editor& editor, const Ref& event) {
  const Ref point = editor.snapped(event);
  editor.set("cursor"_n, point);
  const Ref drag = editor.get("drag"_n);
  if (drag.truth() && drag["kind"_n].equals("move"_n) && !editor.selection().is_none()) {
    // From the copy taken at the press, so that rounding doesn't build up.
    const Point shift = read_point(point) - read_point(drag["start"_n]);
    const Ref moved = editor.call("_moved"_n, drag["orig"_n], array(shift));
    editor.entities().set_item(editor.selection(), moved);
    editor.call("refresh_list"_n, py::kw({"keep"_a = true}));
  }
  editor.redraw();
}

void release(const Editor& editor, const Ref& event) {
  const Ref drag = editor.get("drag"_n);
  if (!drag.truth()) return;
  const Ref point = editor.snapped(event);
  if (drag["kind"_n].equals("new"_n)) {
    const Ref entity = editor.call("_from_drag"_n, drag["start"_n], point);
    if (!entity.is_none() && editor.is_valid(entity)) editor.call("add"_n, entity);
  } else if (drag["kind"_n].equals("move"_n)) {
    editor.call("show_props"_n);
  }
  editor.set("drag"_n, Ref::none());
  editor.redraw();
}

// -- shapes from drags and clicks --------------------------------------------------------------

/// The text of the sides field as a count: at least a triangle, a hexagon where it is no integer.
Ref number_of_sides(const Editor& editor) {
  Ref sides;
  const auto unreadable =
      py::attempt([&] { sides = editor.variable("sides"_n).to_int(); }, py::ValueError);
  if (unreadable) return py::to_python(kDefaultSides);
  const Ref least = py::to_python(kLeastSides);
  return least.less(sides) ? sides : least;
}

/// `math.degrees(math.atan2(y, x))` to six decimals; the interpreter's own rounding is exact in
/// decimal.
Ref direction_in_degrees(Point d) {
  const Ref math = global("math"_n);
  const Ref degrees = math.call("degrees"_n, math.call("atan2"_n, d.y, d.x));
  return degrees.call("__round__"_n, kAngleDecimals);
}

Ref rectangle_from_drag(const Editor&, Point a, Point b) {
  const double width = std::abs(b.x - a.x);
  const double height = std::abs(b.y - a.y);
  if (width == 0 || height == 0) return Ref::none();
  return py::dict({"type"_a = "rectangle"_n, "x"_a = lesser(a.x, b.x), "y"_a = lesser(a.y, b.y),
                   "w"_a = width, "h"_a = height, "radius"_a = 0.0});
}

Ref circle_from_drag(const Editor&, Point a, Point b) {
  const double r = norm(b - a);
  if (r == 0) return Ref::none();
  return py::dict({"type"_a = "circle"_n, "xc"_a = a.x, "yc"_a = a.y, "r"_a = r});
}

Ref regular_from_drag(const Editor& editor, Point a, Point b) {
  const double r = norm(b - a);
  if (r == 0) return Ref::none();
  return py::dict({"type"_a = "regular"_n, "xc"_a = a.x, "yc"_a = a.y, "r"_a = r,
                   "n"_a = number_of_sides(editor), "angle"_a = direction_in_degrees(b - a)});
}

Ref from_drag(const Editor& editor, const Ref& start, const Ref& end) {
  const Tool* tool = chosen_tool(editor);
  const Point a = read_point(start);
  const Point b = read_point(end);
  return tool != nullptr && tool->shape != nullptr ? tool->shape(editor, a, b) : Ref::none();
}

Ref slot(const Editor&, const Ref& first_end, const Ref& second_end, const Ref& side) {
  const Point a = read_point(first_end);
  const Point b = read_point(second_end);
  const Point axis = b - a;
  const double length = norm(axis);
  if (length == 0) return Ref::none();
  // The distance of a point from the line through both ends: the cross product is the area of the
  // parallelogram over the axis, the distance its height.
  const double r = std::abs(cross(axis, read_point(side) - a)) / length;
  if (r == 0) return Ref::none();
  return py::dict(
      {"type"_a = "slot"_n, "x1"_a = a.x, "y1"_a = a.y, "x2"_a = b.x, "y2"_a = b.y, "r"_a = r});
}

// -- outlines ----------------------------------------------------------------------------------

void add(const Editor& editor, const Ref& entity) {
  const Ref entities = editor.entities();
  entities.call("append"_n, entity);
  editor.set("sel"_n, entities.size() - 1);
  editor.call("refresh_list"_n);
  editor.redraw();
}

Ref polygon_through(const Ref& clicks) {
  const Ref points = py::list();
  py::for_each(clicks, [&](const Ref& click) {
    const double u = click[0].to_float();
    py::append(points, py::list(u, click[1].to_float()));
  });
  return py::dict({"type"_a = "polygon"_n, "points"_a = points, "radius"_a = 0.0});
}

/// Tells why the sketch module doesn't accept an entity, where it says so in words.
void report_not_added(const Editor& editor, const Ref& entity) {
  const auto refused = py::attempt([&] { S().call("outline"_n, entity); }, py::ValueError,
                                   py::KeyError, py::TypeError);
  if (refused && refused->matches(py::ValueError)) {
    const Ref message = tr("Not added: {why}"_n);
    editor.set_status(message.call("format"_n, py::kw({"why"_a = refused->value()})));
  }
}

void close_line(const Editor& editor) {
  if (!editor.tool_is("line"_n)) return;
  const Ref clicks = editor.get("clicks"_n);
  if (clicks.size() < kLeastCorners) return;
  const Ref entity = polygon_through(clicks);
  editor.set("clicks"_n, py::list());
  if (editor.is_valid(entity)) {
    editor.call("add"_n, entity);
  } else {
    report_not_added(editor, entity);
  }
  editor.redraw();
}

void cancel_drawing(const Editor& editor) {
  editor.set("clicks"_n, py::list());
  editor.set("drag"_n, Ref::none());
  editor.redraw();
}

// -- picking, selecting, moving, deleting ------------------------------------------------------

/// Pixels from `pixel` to the nearest outline point; not a number where one of them isn't.
double distance_to(Point pixel, const std::vector<Point>& outline) {
  double nearest = std::numeric_limits<double>::infinity();
  for (const Point point : outline) {
    const Point d = point - pixel;
    // No distance is shorter than its longer side, so most points need no square root.
    if (greater(std::abs(d.x), std::abs(d.y)) > nearest) continue;
    nearest = lesser(nearest, std::hypot(d.x, d.y));
  }
  return nearest;
}

/// The same by the module's `np`, whatever has been put in its place.
double distance_by_numpy(Point pixel, const std::vector<Point>& outline) {
  const Ref np = global("np"_n);
  double nearest = std::numeric_limits<double>::infinity();
  for (const Point point : outline) {
    const Point d = point - pixel;
    nearest = lesser(nearest, np.call("hypot"_n, d.x, d.y).number());
  }
  return nearest;
}

Ref pick(const Editor& editor, const Ref& x, const Ref& y) {
  const Ref world = editor.call("to_world"_n, x, y);
  const Point pixel{x.number(), y.number()};
  Projection projection(editor);
  const double radius = snap_radius();
  const auto distance = has_own_numpy() ? distance_to : distance_by_numpy;
  Ref hit = Ref::none();
  Ref hit_area;
  Py_ssize_t index = 0;
  py::for_each(editor.entities(), [&](const Ref& entity) {
    const Py_ssize_t current = index++;
    const Ref outline = editor.valid_outline(entity);
    if (!outline) return;
    const bool is_near = distance(pixel, projection.to_screen_all(outline)) <= radius;
    if (!is_near && !S().call("inside"_n, outline, world).truth()) return;
    const Ref area = S().call("area"_n, entity);
    if (!hit_area || area.less(hit_area)) {
      hit = py::to_python(current);
      hit_area = area;
    }
  });
  return hit;
}

void select(const Editor& editor, const Ref& index) {
  editor.set("sel"_n, index);
  editor.call("refresh_list"_n, py::kw({"keep"_a = true}));
  editor.call("show_props"_n);
  editor.redraw();
}

void shift_coordinate(const Ref& entity, const Ref& key, double by) {
  entity.set_item(key, entity[key].to_float() + by);
}

/// Shifts the position that an entity of any type keeps under these two keys, if it has them.
void shift_position(const Ref& entity, const Ref& x_key, const Ref& y_key, Point by) {
  if (!entity.contains(x_key)) return;
  shift_coordinate(entity, x_key, by.x);
  shift_coordinate(entity, y_key, by.y);
}

Ref moved(const Ref& entity, const Ref& by) {
  Ref result = deepcopy(entity);
  const Point shift{by[0].to_float(), by[1].to_float()};
  shift_position(result, "x"_n, "y"_n, shift);
  shift_position(result, "xc"_n, "yc"_n, shift);
  shift_position(result, "x1"_n, "y1"_n, shift);
  shift_position(result, "x2"_n, "y2"_n, shift);
  if (keeps_points(result["type"_n])) {
    const Ref points = py::list();
    py::for_each(result["points"_n], [&](const Ref& point) {
      const double u = point[0].to_float() + shift.x;
      py::append(points, py::list(u, point[1].to_float() + shift.y));
    });
    result.set_item("points"_n, points);
  }
  return result;
}

/// Whether a text field has the keyboard: the delete keys edit its text then.
bool is_typing(const Editor& editor) {
  const Ref ttk = global("ttk"_n);
  const Ref entry = ttk.attr("Entry"_n);
  const Ref plain_entry = global("tk"_n).attr("Entry"_n);
  return editor.call("focus_get"_n)
      .is_instance(py::tuple(entry, plain_entry, ttk.attr("Spinbox"_n)));
}

void delete_selected(const Editor& editor) {
  if (editor.selection().is_none() || is_typing(editor)) return;
  editor.entities().del_item(editor.selection());
  editor.set("sel"_n, Ref::none());
  editor.call("refresh_list"_n);
  editor.redraw();
}

// -- table of the tools ------------------------------------------------------------------------

std::vector<Tool> make_tools() {
  return {
      {.name = "select"_n,
       .label = N_("Select and move"),
       .tip = N_("Click a shape to select it and edit its dimensions; drag to move it; Delete "
                 "removes it."),
       .press = &press_select},
      {.name = "line"_n,
       .label = N_("Line (closed outline)"),
       .tip = N_("Click corner after corner; click the first corner again (or press Enter) to "
                 "close the outline."),
       .press = &press_line},
      {.name = "rectangle"_n,
       .label = N_("Rectangle"),
       .tip = N_("Drag from one corner to the opposite corner."),
       .press = &press_drag,
       .shape = &rectangle_from_drag},
      {.name = "circle"_n,
       .label = N_("Circle"),
       .tip = N_("Press at the centre and drag out the radius."),
       .press = &press_drag,
       .shape = &circle_from_drag},
      {.name = "regular"_n,
       .label = N_("Polygon"),
       .tip = N_("Press at the centre and drag to a corner; set the number of sides first."),
       .press = &press_drag,
       .shape = &regular_from_drag},
      {.name = "slot"_n,
       .label = N_("Slot"),
       .tip = N_("Click the centre of one end, then the other end, then the width."),
       .press = &press_slot},
  };
}

const std::vector<Tool>& tools() {
  // Never destroyed: at process exit the interpreter may be gone before C++ statics are.
  static const auto& tools = *new std::vector<Tool>(make_tools());
  return tools;
}

}  // namespace

void add_tools(const Ref& module) {
  const Ref labels = py::list();
  for (const Tool& tool : tools()) py::append(labels, py::tuple(tool.name, marked(tool.label)));
  const Ref tips = py::dict();
  for (const Tool& tool : tools()) tips.set_item(tool.name, marked(tool.tip));
  module.set_attr("TOOLS"_n, labels);
  module.set_attr("TOOL_TIPS"_n, tips);
}

const py::Methods& tools_methods() {
  using py::method;
  static const py::Methods& methods = *new py::Methods{
      method<&motion>("_motion", {"e"}, "Show the pointer's coordinates and the tool's hint."),
      method<&press>("_press", {"e"}, "Start or advance the tool's action."),
      method<&drag>("_drag", {"e"}, "Move the selected shape, or the shape being drawn."),
      method<&release>("_release", {"e"}, "Finish a drag."),
      method<&from_drag>("_from_drag", {"a", "b"},
                         "The entity that the tool makes of a drag from a to b, or None."),
      method<&slot>("_slot", {"a", "b", "p"},
                    "The slot with end centres a and b whose side runs through p, or None."),
      method<&add>("add", {"ent"}, "Append an entity and select it."),
      method<&close_line>("close_line", {},
                          "Close the outline through the corners clicked so far."),
      method<&cancel_drawing>("cancel_drawing", {}, "Abandon what is being drawn."),
      method<&pick>("pick", {"x", "y"},
                    "Index of the smallest shape under a canvas pixel, or None."),
      method<&select>("select", {"i"}, "Select the entity with index i, or nothing for None."),
      py::static_method<&moved>("_moved", {"e", "d"}, "A copy of entity e shifted by d."),
      method<&delete_selected>("delete", {},
                               "Remove the selected entity, unless a text field has the focus."),
  };
  return methods;
}

}  // namespace tandrel::sketcher
