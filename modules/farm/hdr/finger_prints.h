#pragma once

#include <string>
#include <vector>

// What things are known again by, as texts. A file that is read from a shared disc is opened, since
// a host may remember older facts of one that it does not open.

/// The contents of the scene's own files, and size and time of each file that it shows. Throws a
/// `std::runtime_error` while the scene is being saved, or if there is none.
std::string inq_scene_print(const std::string& scene, const std::vector<std::string>& shown);

/// The release and the contents of a program. Throws a `std::runtime_error` if it can't be read.
std::string inq_program_print(const std::string& program);

/// Of the texts and of their order.
std::string inq_text_print(const std::vector<std::string>& texts);
