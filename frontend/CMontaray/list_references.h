#pragma once

struct Options;

/// `list_refs [-1] scene_file`: the files that a scene refers to. Gives the exit code.
int list_references(const Options& options);
