// The dialog's life, its layout and its bindings.
#pragma once

#include "python/method.hpp"

namespace tandrel::sketcher {

const py::Methods& editor_methods();

}  // namespace tandrel::sketcher
