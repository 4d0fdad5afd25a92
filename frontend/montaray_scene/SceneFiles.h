#pragma once

#include "kivlib/hdr/KIVString.h"

class FileSearch;
class Findings;
class InterruptedSave;

// The files of a scene folder, looked at one by one. Nothing is changed. While a save waits for its
// last moves, its parts are read where they are.

/// Checksum, classes and record of each part.
void check_parts(const KIVString& folder, const InterruptedSave& interrupted, Findings& findings);

/// Whether the classes are installed that the scene says it uses. The process knows their names
/// afterwards, so it should have read the graph before.
void check_class_usage(const KIVString& folder, const InterruptedSave& interrupted,
                       Findings& findings);

/// Whether the files are there that the asset record names; lost ones are searched.
void check_assets(const KIVString& folder, const InterruptedSave& interrupted, FileSearch& search,
                  Findings& findings);
