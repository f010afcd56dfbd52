// Pointer events; shapes from drags and clicks; outlines; picking, selecting, moving, deleting.
#pragma once

#include "python/method.hpp"

namespace tandrel::sketcher {

/// Adds TOOLS and TOOL_TIPS to the module.
void add_tools(const py::Ref& module);

const py::Methods& tools_methods();

}  // namespace tandrel::sketcher
