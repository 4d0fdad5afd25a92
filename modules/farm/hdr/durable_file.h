#pragma once

#include <string>

/// Puts the contents under the name, where a reader finds the old or the new ones whole, whenever
/// it comes and whatever host fails. Throws a `std::runtime_error`.
void write_durably(const std::string& path, const std::string& contents);

/// Adds a line to a file, and waits until the disc has it. Throws a `std::runtime_error`.
void add_line_durably(const std::string& path, const std::string& line);

/// Empty if there is no such file or it can't be read.
std::string read_file(const std::string& path);

/// Throws a `std::runtime_error` with the system's words.
[[noreturn]] void throw_disc_error(const std::string& what);

/// By which the processes of this host are told from those of others.
std::string inq_host_name();

/// Of who runs this process; the number where there is no name.
std::string inq_user_name();

/// A name that no other process of any host has at the time.
std::string inq_process_name();
