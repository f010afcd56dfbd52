#include "side_panel.hpp"

#include "tables.hpp"
#include "widgets.hpp"

namespace tandrel::sketcher {

namespace {

constexpr int kLabelWidth = 14;  // characters
constexpr int kEntryWidth = 10;  // characters
constexpr int kHintWidth = 260;  // nominal pixels

// -- shape list --------------------------------------------------------------------------------

/// The entity's size in a few words, "?" for one that can't be described.
Ref summary(const Ref& entity) {
  Ref text;
  const auto failed = py::attempt([&] { text = global("describe"_n)(entity); }, py::KeyError,
                                  py::ValueError, py::TypeError);
  return failed ? "?"_n : text;
}

Ref row_text(Py_ssize_t index, const Ref& entity) {
  const Ref type = entity["type"_n];
  return py::text_of(index + 1, ". ", tr(global("TYPE_LABEL"_n)[type]));
}

void refresh_list(const Editor& editor, const Ref& keep) {
  const Ref rows = editor.get("list"_n);
  rows.attr("delete"_n).apply(rows.call("get_children"_n).to_tuple());
  Py_ssize_t index = 0;
  py::for_each(editor.entities(), [&](const Ref& entity) {
    const Ref size = summary(entity);
    const Ref text = row_text(index, entity);
    const Ref iid = py::to_python(index).to_str();
    rows.call("insert"_n, "", "end",
              py::kw({"iid"_a = iid, "text"_a = text, "values"_a = py::tuple(size)}));
    ++index;
  });
  if (editor.has_selection()) rows.call("selection_set"_n, editor.selection().to_str());
  if (!keep || !keep.truth()) editor.call("show_props"_n);
}

void list_selected(const Editor& editor) {
  const Ref rows = editor.get("list"_n).call("selection"_n);
  const Ref index = rows.truth() ? rows[0].to_int() : Ref::none();
  // Selecting a row by program comes here too and must not start over.
  if (index.equals(editor.selection())) return;
  editor.set("sel"_n, index);
  editor.call("show_props"_n);
  editor.redraw();
}

// -- property form -----------------------------------------------------------------------------

/// One row of FIELDS.
struct Field {
  explicit Field(const Ref& row) : Field(py::unpack<3>(row)) {}

  Ref key;
  Ref label;
  bool is_length;

 private:
  explicit Field(const std::array<Ref, 3>& row)
      : key(row[0]), label(row[1]), is_length(row[2].truth()) {}
};

Ref fields_of(const Ref& entity) {
  return global("FIELDS"_n)[entity["type"_n]];
}

/// A length in SI units as the text of an entry.
Ref length_text(const Ref& unit_system, const Ref& length) {
  const Ref num_text = global("num_text"_n);
  return num_text(unit_system.call("from_si"_n, length, "length"_n));
}

Ref field_text(const Field& field, const Ref& entity) {
  const Ref value = entity.call("get"_n, field.key, 0);
  if (field.is_length) return length_text(units(), py::to_python(value.to_float()));
  return global("num_text"_n)(value.to_float());
}

void add_field(const Editor& editor, const Ref& form, const Field& field, const Ref& entity) {
  const Ref text = field_text(field, entity);
  const Ref variable = make_variable("StringVar"_n, editor.get("props"_n), text);
  editor.get("vars"_n).set_item(field.key, variable);
  const Ref label = tr(field.label);
  const Ref unit = field.is_length ? units().call("unit"_n, "length"_n) : ""_n;
  const Ref entry = form.call("entry"_n, label, variable, unit, py::kw({"width"_a = kEntryWidth}));
  bind(entry, "<Return>"_n, handler(editor, {"apply_props"_n}));
}

void add_corners_box(const Editor& editor, const Ref& form, const Ref& entity) {
  form.call("note"_n, tr("Corners (u v, one pair per line):"_n));
  const Ref box = global("tk"_n).call("Text"_n, editor.get("props"_n),
                                      py::kw({"height"_a = 6, "width"_a = 28}));
  editor.set("points_text"_n, box);
  const Ref unit_system = units();
  const Ref lines = py::list();
  py::for_each(entity["points"_n], [&](const Ref& point) {
    const Ref u = length_text(unit_system, point[0]);
    const Ref v = length_text(unit_system, point[1]);
    py::append(lines, py::text_of(u, " ", v));
  });
  box.call("insert"_n, "1.0", "\n"_n.call("join"_n, lines));
  pack(box, {"fill"_a = "x"});
}

void show_props(const Editor& editor) {
  const Ref props = editor.get("props"_n);
  py::for_each(props.call("winfo_children"_n), [](const Ref& child) { child.call("destroy"_n); });
  if (!editor.has_selection()) {
    const Ref label = themed("Label"_n, props,
                             {"text"_a = tr("Select a shape to type its exact size."_n),
                              "style"_a = "Muted.TLabel", "wraplength"_a = px(kHintWidth)});
    pack(label, {"anchor"_a = "w"});
    return;
  }
  const Ref entity = editor.selected_entity();
  const Ref form = global("Form"_n)(props, py::kw({"label_width"_a = kLabelWidth}));
  form.call("pack"_n);
  editor.set("vars"_n, py::dict());
  py::for_each(fields_of(entity),
               [&](const Ref& row) { add_field(editor, form, Field(row), entity); });
  if (keeps_points(entity["type"_n])) add_corners_box(editor, form, entity);
  const Ref apply = themed("Button"_n, props,
                           {"text"_a = tr("Apply"_n), "command"_a = editor.get("apply_props"_n)});
  pack(apply, {"anchor"_a = "e", "pady"_a = py::tuple(6, 0)});
}

/// The nearest integer, of two equally near the even one.
Ref rounded(double value) {
  return py::to_python(value).call("__round__"_n);
}

void read_field(const Editor& editor, const Field& field, const Ref& entity,
                const Ref& unit_system) {
  const double value = editor.get("vars"_n)[field.key].call("get"_n).to_float();
  if (field.is_length) {
    entity.set_item(field.key, unit_system.call("to_si"_n, value, "length"_n));
  } else if (field.key.equals("n"_n)) {
    entity.set_item(field.key, rounded(value));
  } else {
    entity.set_item(field.key, value);
  }
}

/// One corner for each line that isn't blank: two numbers in display units, apart by blanks or a
/// comma.
Ref read_corners(const Editor& editor, const Ref& unit_system) {
  const Ref typed = editor.get("points_text"_n).call("get"_n, "1.0", "end");
  Ref corners = py::list();
  const auto read_length = [&](const Ref& text) {
    return unit_system.call("to_si"_n, text.to_float(), "length"_n);
  };
  py::for_each(typed.call("replace"_n, ",", " ").call("splitlines"_n), [&](const Ref& line) {
    const Ref texts = line.call("split"_n);
    if (texts.size() == 0) return;
    if (texts.size() != 2) {
      py::Error::raise(py::ValueError, tr("each corner needs two numbers"_n));
    }
    const Ref u = read_length(texts[0]);
    py::append(corners, py::list(u, read_length(texts[1])));
  });
  return corners;
}

void apply_props(const Editor& editor) {
  if (editor.selection().is_none()) return;
  const Ref entity = deepcopy(editor.selected_entity());
  const Ref unit_system = units();
  const auto refused = py::attempt(
      [&] {
        py::for_each(fields_of(entity),
                     [&](const Ref& row) { read_field(editor, Field(row), entity, unit_system); });
        if (keeps_points(entity["type"_n])) {
          entity.set_item("points"_n, read_corners(editor, unit_system));
        }
        S().call("outline"_n, entity);
      },
      py::ValueError);
  if (refused) {
    const Ref message = tr("Not applied: {why}"_n);
    editor.set_status(message.call("format"_n, py::kw({"why"_a = refused->value()})));
    return;
  }
  editor.entities().set_item(editor.selection(), entity);
  editor.set_status(""_n);
  editor.call("refresh_list"_n, py::kw({"keep"_a = true}));
  editor.redraw();
}

}  // namespace

const py::Methods& side_panel_methods() {
  using py::method;
  static const py::Methods& methods = *new py::Methods{
      method<&refresh_list>("refresh_list", {"keep=False"},
                            "Rebuild the rows from the sketch, and the property form unless keep."),
      method<&list_selected>("_list_selected", {}, "Take over a selection made in the list."),
      method<&show_props>("show_props", {}, "Rebuild the property form for the selection."),
      method<&apply_props>("apply_props", {},
                           "Put the typed values in place of the selected entity's, if they are "
                           "valid."),
  };
  return methods;
}

}  // namespace tandrel::sketcher
