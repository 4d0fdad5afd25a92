#pragma once

#include "kivlib/hdr/KIVString.h"

bool inq_file_exists(const KIVString& path);
bool inq_is_directory(const KIVString& path);

/// Makes a folder, `with_parents` if asked. 0 on success, 17 if something of the name is there,
/// else -1 or another error number.
int makedir(const KIVString& path, int mode, bool with_parents);

/// Changes the working directory. False on failure.
bool kiv_chdir(const KIVString& path);

/// The working directory; empty if it can't be read.
KIVString inq_working_directory();

/// `path` without dots and doubled slashes, from the root of the file system. What `..` means
/// behind a symbolic link is read from the disc; other links stay.
KIVString inq_absolute_path(const KIVString& path);

/// The same, with symbolic links followed as far as something is there.
KIVString inq_real_path(const KIVString& path);

/// Gives the content of `from` the second name `to`, which outlives the first. 0 on success.
int make_symbolic_link(const KIVString& from, const KIVString& to);

/// Where a program may leave files that nobody keeps.
KIVString inq_kiv_scratch_directory();

/// Where the user's settings are kept; it need not exist.
KIVString get_user_kiv_directory();
bool create_user_kiv_directory();

KIVString get_user_login_name();
