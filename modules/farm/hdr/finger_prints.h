#pragma once

#include <string>
#include <vector>

// What things are known again by, as texts.

/// The contents of the scene's own files. Throws a `std::runtime_error` while the scene is being
/// saved, or if there is none.
std::string inq_scene_print(const std::string& scene);

/// Size and time of a file, or NO_FILE_PRINT. The file is opened, since a host may remember older
/// facts of one on a shared disc that it does not open.
std::string inq_file_print(const std::string& path);
inline constexpr char NO_FILE_PRINT[] = "none";

/// The release and the contents of a program, with those of the libraries of this project that are
/// installed for it. Throws a `std::runtime_error` if it can't be read.
std::string inq_program_print(const std::string& program);

/// Of the texts and of their order.
std::string inq_text_print(const std::vector<std::string>& texts);
