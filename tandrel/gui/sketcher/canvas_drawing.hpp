// Repainting the canvas: grid, axes, references, shapes, dimension labels, the live preview.
#pragma once

#include "python/method.hpp"

namespace tandrel::sketcher {

const py::Methods& canvas_drawing_methods();

}  // namespace tandrel::sketcher
