#pragma once

#include "frontend/CMontaray/RunListener.h"

#include <cstdio>
#include <memory>

/// What happens in a run, as lines of JSON at the end of a file. Each line is in the file as soon
/// as it has happened.
class EventLog {
public:
    /// Without a name nothing is written, and all is well.
    explicit EventLog(const std::string& file);

    /// Whether the file has all that was put so far.
    bool is_good() const { return is_whole; }

    void put_started(const std::string& scene, const std::string& folder, int jobs,
                     std::size_t frames);
    void put_frame(const FrameEvent& event);
    void put_finished(int code, int frames_done, double seconds);

private:
    void put(const std::string& line);

    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    std::unique_ptr<std::FILE, Close> file;
    bool is_whole;
};
