// Tk widgets and variables, and the callables that they call.
#pragma once

#include <optional>

#include "editor_state.hpp"

namespace tandrel::sketcher {

/// A widget of the themed set: `ttk.<kind>(parent, **options)`.
template <class... Options>
Ref themed(const Ref& kind, const Ref& parent, const Options&... options) {
  return global("ttk"_n).attr(kind)(parent, py::kw(options...));
}
template <class... Options>
void pack(const Ref& widget, const Options&... options) {
  widget.call("pack"_n, py::kw(options...));
}
inline void bind(const Ref& widget, const Ref& event, const Ref& handler) {
  widget.call("bind"_n, event, handler);
}

/// A Tk variable (`StringVar`, `BooleanVar`) in the interpreter of `owner`, which need not be Tk's
/// default one; where `owner` is no widget, the default one serves.
Ref make_variable(const Ref& kind, const Ref& owner, const Ref& value);

/// Calls the operation without arguments, whatever Tk passes.
Ref command(const Editor& editor, const Ref& operation);
/// Calls the operation with the event.
Ref event_handler(const Editor& editor, const Ref& operation);
/// Calls one operation after the other without arguments and returns nothing to Tk, so that
/// bindings further up follow. `operations` is a sequence of names.
Ref command_sequence(const Editor& editor, const Ref& operations);
/// Calls `_zoom` at the event's position: with `factor`, or, where it isn't given, by the direction
/// of the wheel that the event tells.
Ref zoom_handler(const Editor& editor, std::optional<double> factor = std::nullopt);

/// The scale's factor for one step of the wheel; a step back has the inverse.
inline constexpr double kZoomStep = 1.2;

}  // namespace tandrel::sketcher
