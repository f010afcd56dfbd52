// How the module loads: its imports in their order, its tables, its function and its class.

#include "canvas_drawing.hpp"
#include "editor.hpp"
#include "neighbours.hpp"
#include "python/extension.hpp"
#include "side_panel.hpp"
#include "tables.hpp"
#include "tools.hpp"
#include "view.hpp"

namespace tandrel::sketcher {

namespace {

struct Import {
  const char* module;
  const char* name;  // of what is imported from it; null: the module itself
  const char* as;
};

// The six names of `typing` are those that annotations use; nothing asks for them here.
constexpr Import kImports[] = {
    {"copy", nullptr, "copy"},
    {"math", nullptr, "math"},
    {"tkinter", nullptr, "tk"},
    {"tkinter", "ttk", "ttk"},
    {"typing", "Any", "Any"},
    {"typing", "Dict", "Dict"},
    {"typing", "List", "List"},
    {"typing", "Optional", "Optional"},
    {"typing", "Sequence", "Sequence"},
    {"typing", "Tuple", "Tuple"},
    {"numpy", nullptr, "np"},
    {"tandrel", "sketch", "S"},
    {"tandrel.gui.i18n", "N_", "N_"},
    {"tandrel.gui.i18n", "tr", "tr"},
    {"tandrel.gui.widgets", "PAL", "PAL"},
    {"tandrel.gui.widgets", "Form", "Form"},
    {"tandrel.gui.widgets", "Tooltip", "Tooltip"},
    {"tandrel.gui.widgets", "num_text", "num_text"},
    {"tandrel.gui.widgets", "px", "px"},
    {"tandrel.gui.widgets", "units", "units"},
};

void add_imports(const Ref& module) {
  for (const Import& row : kImports) {
    const Ref source = py::interned(row.module);
    module.set_attr(py::interned(row.as), row.name == nullptr
                                              ? py::import_module(source)
                                              : py::import_from(source, py::interned(row.name)));
  }
}

void load(const Ref& module) {
  add_imports(module);
  add_tools(module);
  add_tables(module);
  module.set_attr("describe"_n, describe_function().function(module));
  const Ref base = global("tk"_n).attr("Toplevel"_n);
  module.set_attr(
      "SketchEditor"_n,
      py::make_class("SketchEditor", base,
                     "Edit a sketch in place. `result` is the edited sketch after OK (None after "
                     "Cancel).",
                     {&editor_methods(), &view_methods(), &canvas_drawing_methods(),
                      &tools_methods(), &side_panel_methods()}));
}

constexpr py::Extension kExtension{
    "sketcher",
    "Sketch editor: draw closed profiles with the mouse, snap to a grid and to existing points,\n"
    "and type exact dimensions. Used by the sketch-based features (extrude, revolve and 2D "
    "regions).",
    &load};

}  // namespace

}  // namespace tandrel::sketcher

PyMODINIT_FUNC PyInit_sketcher() {
  return tandrel::py::initialise<tandrel::sketcher::kExtension>();
}
