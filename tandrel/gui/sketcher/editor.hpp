// The dialog's life, its layout and its bindings.
#pragma once

#include "python/method.hpp"

namespace tandrel::sketcher {

const py::Methods& editor_methods();

/// The class whose base initialises the window; an empty handle forgets it.
void set_editor_class(const py::Ref& held) noexcept;

}  // namespace tandrel::sketcher
