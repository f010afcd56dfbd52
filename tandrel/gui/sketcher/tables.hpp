// The module's vocabulary tables, and entity summaries.
#pragma once

#include "python/method.hpp"

namespace tandrel::sketcher {

/// Adds TOOLS, TOOL_TIPS, FIELDS, TYPE_LABEL and SNAP_PX to the module.
void add_tables(const py::Ref& module);

/// The module's function `describe`.
const py::Signature& describe_function();

}  // namespace tandrel::sketcher
