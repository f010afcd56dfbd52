// The list of shapes and the property form.
#pragma once

#include "python/method.hpp"

namespace tandrel::sketcher {

const py::Methods& side_panel_methods();

}  // namespace tandrel::sketcher
