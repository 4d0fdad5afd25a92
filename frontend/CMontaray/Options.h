#pragma once

#include "frontend/CMontaray/FrameList.h"
#include "imagelib/hdr/TiffCompression.h"
#include "render/hdr/OutputFileType.h"

#include <string>

/// The options of this program that begin with two hyphens, and the words that are left without
/// them: those of the system's own command line.
struct Options {
    /// Takes the options out of `argv`. False after a mistake, of which the user has been told;
    /// `mistake` is the exit code then.
    bool read(int argc, char** argv);

    /// The same if an option is meant for the other form of the command line.
    bool check_form(bool is_list);

    bool help = false;
    bool version = false;
    std::optional<FrameList> frames;
    bool clamp = false;
    bool skip_existing = false;
    bool strict = false;
    int jobs = 1;
    bool dry_run = false;
    bool progress = false;
    std::string log_file; // empty: none
    std::optional<OutputFileType> file_type;
    TiffCompression tiff_compression = TiffCompression::DEFLATE;
    bool json = false;
    bool check = false;

    std::vector<char*> words; // the program's name first
    int mistake = 0;

private:
    bool read_switch(const std::string& name, bool has_value);
    bool read_value(const std::string& name, const char* value);
    bool read_frames(const std::string& value);
    bool read_jobs(const std::string& value);
    bool read_log_file(const std::string& value);
    bool read_format(const std::string& value);
    bool read_tiff_compression(const std::string& value);
    bool refuse(int code, const std::string& reason);

    std::vector<std::string> names; // of those that were given
};

extern const char* const OPTIONS_HELP;
