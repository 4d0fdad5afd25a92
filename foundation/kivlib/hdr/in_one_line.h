#pragma once

#include "kivlib/hdr/KIVString.h"

/// `text` for a list with a line for each thing: control characters and backslashes become
/// escapes, such as \n.
KIVString in_one_line(std::string_view text);
