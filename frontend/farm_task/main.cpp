#include "kivlib/hdr/prepare_process.h"
#include "modules/farm/hdr/Child.h"
#include "modules/farm/hdr/ChunkTask.h"

#include <charconv>
#include <iostream>
#include <string_view>

namespace {
constexpr int BAD_USAGE = 2;
constexpr int FAILED = 1;

/// A whole number from 0; below 0 if it is none.
int read_chunk(std::string_view text)
{
    int chunk = -1;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), chunk);
    return read.ec == std::errc() && read.ptr == text.data() + text.size() ? chunk : -1;
}
} // namespace

/// What the batch service runs on the hosts of a farm.
int main(int argc, char** argv)
{
    prepare_process();
    const int chunk = argc == 3 ? read_chunk(argv[2]) : -1;
    if (chunk < 0) {
        std::cerr << "Usage: montaray-farm-task JOB_FOLDER CHUNK\n";
        return BAD_USAGE;
    }
    HeldSignals::hold();
    try {
        return ChunkTask(JobFolder(argv[1]), chunk).run();
    } catch (const std::exception& exception) {
        std::cerr << "montaray-farm-task: " << exception.what() << '\n';
        return FAILED;
    }
}
