#include "editor.hpp"

#include "widgets.hpp"

namespace tandrel::sketcher {

namespace {

// -- layout ------------------------------------------------------------------------------------
//
//   dialog
//     outer
//       top       plane, offset (3D sketches only), snap, grid, fit
//       body
//         tools   one button a tool, sides, delete
//         canvas
//         side    list of shapes, property form
//       status
//       bottom    hint, OK, Cancel

Ref panel(const Ref& parent) {
  return themed("Frame"_n, parent, {"style"_a = "Panel.TFrame"});
}

void pack_left(const Ref& widget, const Ref& padx) {
  if (padx) {
    pack(widget, {"side"_a = "left", "padx"_a = padx});
  } else {
    pack(widget, {"side"_a = "left"});
  }
}

void add_label(const Ref& parent, const Ref& text, const char* style, const Ref& padx = {}) {
  pack_left(themed("Label"_n, parent, {"text"_a = text, "style"_a = style}), padx);
}

void add_unit_label(const Ref& parent, const Ref& padx) {
  add_label(parent, units().call("unit"_n, "length"_n), "Muted.TLabel", padx);
}

Ref add_entry(const Ref& parent, const Ref& variable, int width, const Ref& padx = {}) {
  Ref entry = themed("Entry"_n, parent, {"textvariable"_a = variable, "width"_a = width});
  pack_left(entry, padx);
  return entry;
}

void build_placement(const Editor& editor, const Ref& top, const Ref& allow_plane) {
  if (allow_plane.truth()) {
    add_label(top, tr("Plane"_n), "Panel.TLabel");
    const Ref chooser =
        themed("Combobox"_n, top,
               {"textvariable"_a = editor.get("plane"_n), "values"_a = S().attr("PLANES"_n),
                "state"_a = "readonly", "width"_a = 5});
    pack(chooser, {"side"_a = "left", "padx"_a = py::tuple(4, 12)});
    bind(chooser, "<<ComboboxSelected>>"_n, handler(editor, {"_plane_changed"_n, "redraw"_n}));
  }
  add_label(top, tr("Offset along the normal"_n), "Panel.TLabel");
  add_entry(top, editor.get("offset"_n), 9, py::tuple(4, 2));
  add_unit_label(top, py::tuple(0, 12));
}

void build_top(const Editor& editor, const Ref& outer, const Ref& allow_plane) {
  const Ref top = panel(outer);
  pack(top, {"fill"_a = "x"});
  if (editor.is_in_space()) build_placement(editor, top, allow_plane);
  const Ref snap = themed("Checkbutton"_n, top,
                          {"text"_a = tr("Snap to grid"_n), "variable"_a = editor.get("snap"_n)});
  pack(snap, {"side"_a = "left"});
  add_label(top, tr("Grid"_n), "Panel.TLabel", py::tuple(10, 4));
  const Ref grid = add_entry(top, editor.get("grid"_n), 7);
  for (const Ref& event : {"<Return>"_n, "<FocusOut>"_n}) {
    bind(grid, event, handler(editor, {"redraw"_n}));
  }
  add_unit_label(top, py::tuple(2, 0));
  const Ref fit =
      themed("Button"_n, top, {"text"_a = tr("Fit"_n), "command"_a = editor.get("fit"_n)});
  pack(fit, {"side"_a = "right"});
}

void build_tools(const Editor& editor, const Ref& body) {
  const Ref column = panel(body);
  pack(column, {"side"_a = "left", "fill"_a = "y", "padx"_a = py::tuple(0, 8)});
  py::for_each(global("TOOLS"_n), [&](const Ref& tool) {
    const auto [key, label] = py::unpack<2>(tool);
    const Ref button = themed(
        "Radiobutton"_n, column,
        {"text"_a = tr(label), "value"_a = key, "variable"_a = editor.get("tool"_n),
         "style"_a = "SketchTool.TRadiobutton", "command"_a = editor.get("cancel_drawing"_n)});
    pack(button, {"fill"_a = "x", "pady"_a = 1});
    global("Tooltip"_n)(button, tr(global("TOOL_TIPS"_n)[key]));
  });
  const Ref row = panel(column);
  pack(row, {"fill"_a = "x", "pady"_a = py::tuple(6, 0)});
  add_label(row, tr("Sides"_n), "Panel.TLabel");
  const Ref sides =
      themed("Spinbox"_n, row,
             {"from_"_a = 3, "to"_a = 64, "textvariable"_a = editor.get("sides"_n), "width"_a = 4});
  pack_left(sides, py::tuple(4, 0));
  const Ref remove =
      themed("Button"_n, column, {"text"_a = tr("Delete"_n), "command"_a = editor.get("delete"_n)});
  pack(remove, {"fill"_a = "x", "pady"_a = py::tuple(12, 0)});
}

void build_canvas(const Editor& editor, const Ref& body) {
  const Ref canvas = global("tk"_n).call(
      "Canvas"_n, body,
      py::kw({"width"_a = 620, "height"_a = 460, "background"_a = palette("panel"_n),
              "highlightthickness"_a = 1, "highlightbackground"_a = palette("line"_n),
              "cursor"_a = "crosshair"}));
  editor.set("canvas"_n, canvas);
  pack(canvas, {"side"_a = "left", "fill"_a = "both", "expand"_a = true});
}

void build_side(const Editor& editor, const Ref& body) {
  const Ref side = themed("Frame"_n, body, {"style"_a = "Panel.TFrame", "width"_a = 280});
  pack(side, {"side"_a = "left", "fill"_a = "y", "padx"_a = py::tuple(8, 0)});
  const Ref rows = themed("Treeview"_n, side,
                          {"columns"_a = py::tuple("size"_n), "show"_a = "tree headings",
                           "height"_a = 8, "selectmode"_a = "browse"});
  editor.set("list"_n, rows);
  rows.call("heading"_n, "#0", py::kw({"text"_a = tr("Shape"_n)}));
  rows.call("heading"_n, "size", py::kw({"text"_a = tr("Size"_n)}));
  rows.call("column"_n, "#0", py::kw({"width"_a = 110}));
  rows.call("column"_n, "size", py::kw({"width"_a = 160}));
  pack(rows, {"fill"_a = "x"});
  bind(rows, "<<TreeviewSelect>>"_n, handler(editor, {"_list_selected"_n}));
  const Ref props = panel(side);
  editor.set("props"_n, props);
  pack(props, {"fill"_a = "x", "pady"_a = py::tuple(8, 0)});
}

void build_status(const Editor& editor, const Ref& outer) {
  const Ref status = themed(
      "Label"_n, outer,
      {"text"_a = "", "style"_a = "Muted.TLabel", "wraplength"_a = px(900), "justify"_a = "left"});
  editor.set("status"_n, status);
  pack(status, {"fill"_a = "x", "pady"_a = py::tuple(6, 0)});
}

void build_bottom(const Editor& editor, const Ref& outer) {
  const Ref bottom = panel(outer);
  pack(bottom, {"fill"_a = "x", "pady"_a = py::tuple(8, 0)});
  add_label(bottom, tr("Shapes inside other shapes become holes; overlapping shapes join."_n),
            "Muted.TLabel");
  const Ref cancel = themed("Button"_n, bottom,
                            {"text"_a = tr("Cancel"_n), "command"_a = editor.get("destroy"_n)});
  pack(cancel, {"side"_a = "right"});
  const Ref ok = themed(
      "Button"_n, bottom,
      {"text"_a = tr("OK"_n), "style"_a = "Primary.TButton", "command"_a = editor.get("ok"_n)});
  pack(ok, {"side"_a = "right", "padx"_a = py::tuple(0, 6)});
}

// -- bindings ----------------------------------------------------------------------------------

struct EventBinding {
  const char* event;
  const char* operation;
  /// Whether the operation is bound as it is when the binding is made, and gets the event; others
  /// are looked up when the event comes.
  bool takes_event;
};

constexpr EventBinding kCanvasBindings[] = {
    {"<Configure>", "redraw", false},
    {"<ButtonPress-1>", "_press", true},
    {"<B1-Motion>", "_drag", true},
    {"<ButtonRelease-1>", "_release", true},
    {"<Double-Button-1>", "close_line", false},
    {"<Motion>", "_motion", true},
    {"<ButtonPress-2>", "_pan_start", true},
    {"<ButtonPress-3>", "_pan_start", true},
    {"<B2-Motion>", "_pan_move", true},
    {"<B3-Motion>", "_pan_move", true},
};

constexpr EventBinding kKeyBindings[] = {
    {"<Escape>", "cancel_drawing", false},
    {"<Return>", "close_line", false},
};

void bind_all(const Editor& editor, const Ref& widget, std::span<const EventBinding> bindings) {
  for (const EventBinding& row : bindings) {
    const Ref operation = py::interned(row.operation);
    bind(widget, py::to_python(row.event),
         row.takes_event ? editor.get(operation) : handler(editor, {operation}));
  }
}

void bind_canvas(const Editor& editor, const Ref& canvas) {
  bind_all(editor, canvas, kCanvasBindings);
  bind(canvas, "<MouseWheel>"_n, zoom_handler(editor));
  bind(canvas, "<Button-4>"_n, zoom_handler(editor, kZoomStep));
  bind(canvas, "<Button-5>"_n, zoom_handler(editor, 1 / kZoomStep));
}

void bind_keys(const Editor& editor) {
  bind_all(editor, editor.object(), kKeyBindings);
  for (const Ref& key : {"<Delete>"_n, "<BackSpace>"_n}) {
    bind(editor.object(), key, delete_handler(editor));
  }
}

void build(const Editor& editor, const Ref& allow_plane) {
  const Ref sketch = editor.sketch();
  editor.set("plane"_n,
             make_variable("StringVar"_n, editor.object(), sketch.call("get"_n, "plane"_n, "XY")));
  Ref offset = sketch.call("get"_n, "offset"_n, 0);
  if (!offset.truth()) offset = py::to_python(0);
  const Ref shown_offset = units().call("from_si"_n, offset, "length"_n);
  editor.set("offset"_n,
             make_variable("StringVar"_n, editor.object(), global("num_text"_n)(shown_offset)));

  const Ref outer =
      themed("Frame"_n, editor.object(), {"style"_a = "Panel.TFrame", "padding"_a = 10});
  pack(outer, {"fill"_a = "both", "expand"_a = true});
  build_top(editor, outer, allow_plane);
  const Ref body = panel(outer);
  pack(body, {"fill"_a = "both", "expand"_a = true, "pady"_a = py::tuple(8, 0)});
  build_tools(editor, body);
  build_canvas(editor, body);
  build_side(editor, body);
  build_status(editor, outer);
  build_bottom(editor, outer);
  bind_canvas(editor, editor.canvas());
  editor.call("refresh_list"_n);
}

// -- life --------------------------------------------------------------------------------------

/// The constructor's arguments after the parent.
struct Request {
  Ref sketch;
  Ref dim;
  Ref title;
  Ref references;
  Ref allow_plane;
};

void set_state(const Editor& editor, const Request& request) {
  const Ref np = global("np"_n);
  const Ref sketch = request.sketch.truth() ? deepcopy(request.sketch) : S().call("new"_n);
  sketch.call("setdefault"_n, "entities"_n, py::list());
  editor.set("sk"_n, sketch);
  editor.set("dim"_n, request.dim);
  editor.set("refs"_n, request.references.to_list());
  editor.set("result"_n, Ref::none());
  editor.set("sel"_n, Ref::none());
  const Ref tool = editor.entities().truth() ? "select"_n : "rectangle"_n;
  editor.set("tool"_n, make_variable("StringVar"_n, editor.object(), tool));
  editor.set("snap"_n, make_variable("BooleanVar"_n, editor.object(), py::to_python(true)));
  const Ref num_text = global("num_text"_n);
  const Ref unit_system = units();
  const Ref step = unit_system.call("from_si"_n, editor.call("_default_grid"_n), "length"_n);
  editor.set("grid"_n, make_variable("StringVar"_n, editor.object(), num_text(step)));
  editor.set("sides"_n, make_variable("StringVar"_n, editor.object(), "6"_n));
  editor.set("drag"_n, Ref::none());
  editor.set("clicks"_n, py::list());
  editor.set("cursor"_n, np.call("zeros"_n, 2));
  editor.set("scale"_n, 1.0);
  editor.set("centre"_n, np.call("zeros"_n, 2));
}

void open(const Editor& editor, const Ref& parent, const Request& request) {
  const Ref title = request.title.truth() ? request.title : tr("Sketch"_n);
  editor.call("title"_n, title);
  editor.call("transient"_n, parent);
  editor.call("configure"_n, py::kw({"background"_a = palette("panel"_n)}));
  set_state(editor, request);
  editor.call("_build"_n, request.allow_plane);
  editor.call("update_idletasks"_n);
  editor.call("fit"_n);
  bind_keys(editor);
}

void close_half_built(const Editor& editor) noexcept {
  try {
    editor.call("destroy"_n);
  } catch (...) {
    // Whatever it is: the error that stopped the construction is the one to report.
  }
}

void init(const Editor& editor, const Ref& parent, const Ref& sketch, const Ref& dim,
          const Ref& title, const Ref& references, const Ref& allow_plane) {
  py::super(editor.object()).call("__init__"_n, parent);
  try {
    open(editor, parent,
         {sketch, dim ? dim : py::to_python(3), title ? title : ""_n,
          references ? references : py::tuple(), allow_plane ? allow_plane : py::to_python(true)});
  } catch (...) {
    close_half_built(editor);
    throw;
  }
}

/// The pixel at which the dialog starts, so that `1 / part` of the free space is before it; never
/// before the master's own start.
Ref start_within(const Ref& start, const Ref& free, int part) {
  const Ref before = free.floor_divide(py::to_python(part));
  return start.add(py::builtin("max"_n)(before, 0));
}

Ref run(const Editor& editor) {
  editor.call("update_idletasks"_n);
  const Ref master = editor.get("master"_n);
  const Ref left = master.call("winfo_rootx"_n);
  const Ref width = master.call("winfo_width"_n);
  const Ref x = start_within(left, width.subtract(editor.call("winfo_width"_n)), 2);
  const Ref top = master.call("winfo_rooty"_n);
  const Ref height = master.call("winfo_height"_n);
  const Ref y = start_within(top, height.subtract(editor.call("winfo_height"_n)), 4);
  editor.call("geometry"_n, py::text_of("+", x, "+", y));
  editor.call("grab_set"_n);
  editor.call("fit"_n);
  editor.call("wait_window"_n);
  return editor.get("result"_n);
}

void store_placement(const Editor& editor) {
  const Ref sketch = editor.sketch();
  const Ref unit_system = units();
  const double typed = editor.variable("offset"_n).to_float();
  sketch.set_item("offset"_n, unit_system.call("to_si"_n, typed, "length"_n));
  sketch.set_item("plane"_n, editor.variable("plane"_n));
}

void ok(const Editor& editor) {
  if (editor.is_in_space()) {
    const auto unreadable = py::attempt([&] { store_placement(editor); }, py::ValueError);
    if (unreadable) {
      editor.set_status(tr("The offset must be a number."_n));
      return;
    }
  }
  const Ref problems = S().call("check"_n, editor.sketch());
  if (problems.truth()) {
    editor.set_status("; "_n.call("join"_n, problems));
    return;
  }
  editor.set("result"_n, editor.sketch());
  editor.call("destroy"_n);
}

bool is_ok(const Ref& entity) {
  return static_cast<bool>(outline_unless_refused(entity));
}

void plane_changed(const Editor& editor) {
  const Ref plane = editor.variable("plane"_n);
  editor.sketch().set_item("plane"_n, plane);
}

}  // namespace

const py::Methods& editor_methods() {
  using py::method;
  static const py::Methods& methods = *new py::Methods{
      method<&init>("__init__",
                    {"parent", "sketch", "dim=3", "title=''", "references=()", "allow_plane=True"},
                    "Open a dialog over parent on a copy of the sketch, or on a new one."),
      method<&build>("_build", {"allow_plane"}, "Make the dialog's widgets."),
      method<&run>("run", {}, "Show the dialog, wait for its end and return `result`."),
      method<&ok>("ok", {}, "Accept the sketch, or tell why not."),
      py::static_method<&is_ok>("_ok", {"e"}, "Whether the sketch module can outline entity e."),
      method<&plane_changed>("_plane_changed", {}, "Take over the chosen plane."),
  };
  return methods;
}

}  // namespace tandrel::sketcher
