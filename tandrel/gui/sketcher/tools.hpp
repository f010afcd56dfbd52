// Pointer events; shapes from drags and clicks; outlines; picking, selecting, moving, deleting.
#pragma once

#include "python/method.hpp"

namespace tandrel::sketcher {

const py::Methods& tools_methods();

}  // namespace tandrel::sketcher
