// Coordinates, fit, zoom and pan; the grid step; key points and snapping.
#pragma once

#include "python/method.hpp"

namespace tandrel::sketcher {

const py::Methods& view_methods();

}  // namespace tandrel::sketcher
