#pragma once

class KIVString;

/// Loads the installed module that serves the class: `<module folder>/<class name>.so`, where a
/// module of several classes is installed under each of their names. True if it was loaded.
bool load_module_of_class(const KIVString& class_name);
