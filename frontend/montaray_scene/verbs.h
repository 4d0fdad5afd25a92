#pragma once

#include <string>

// What `montaray-scene` can do; each gives the exit status.

enum ExitStatus { DONE = 0, FAILED = 1, BAD_INPUT = 2 };

/// Makes the scene that a JSON file describes.
int build_scene(const std::string& description, const std::string& scene_folder);

/// Prints the sheet and the graph of a scene.
int show_scene(const std::string& scene_folder);
