// Tk widgets and variables, and the handlers of their events.
#pragma once

#include <optional>

#include "editor_state.hpp"

namespace tandrel::sketcher {

/// A widget of the themed set: `ttk.<kind>(parent, **options)`.
inline Ref themed(const Ref& kind, const Ref& parent, std::initializer_list<py::Argument> options) {
  return global("ttk"_n).attr(kind)(parent, py::kw(options));
}
inline void pack(const Ref& widget, std::initializer_list<py::Argument> options) {
  widget.call("pack"_n, py::kw(options));
}
inline void bind(const Ref& widget, const Ref& event, const Ref& handler) {
  widget.call("bind"_n, event, handler);
}

/// A Tk variable (`StringVar`, `BooleanVar`) for a widget of `owner`. It belongs to tkinter's
/// default root, unless `owner` is a widget of tkinter's that stands under another one.
Ref make_variable(const Ref& kind, const Ref& owner, const Ref& value);

/// Calls these operations one after the other, without the event; each is looked up when the event
/// comes.
Ref handler(const Editor& editor, std::initializer_list<Ref> operations);
/// Calls `delete`, unless the key was typed into the box of corners, whose text it edits.
Ref delete_handler(const Editor& editor);
/// Calls `_zoom` at the event's position: with `factor`, or, where it isn't given, by the direction
/// of the wheel that the event tells.
Ref zoom_handler(const Editor& editor, std::optional<double> factor = std::nullopt);

/// The scale's factor for one step of the wheel; a step back has the inverse.
inline constexpr double kZoomStep = 1.2;

}  // namespace tandrel::sketcher
