#include "frontend/CMontaray/EventLog.h"

#include "frontend/CMontaray/exit_codes.h"
#include "frontend/CMontaray/outcomes.h"

#include <ctime>
#include <nlohmann/json.hpp>

namespace {
using Json = nlohmann::ordered_json;

std::string inq_time()
{
    char text[] = "2000-01-01T00:00:00Z";
    const std::time_t now = std::time(nullptr);
    struct tm parts {};
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", ::gmtime_r(&now, &parts));
    return text;
}

Json make_event(const char* name)
{
    return {{"event", name}, {"time", inq_time()}};
}

/// Bytes of a path that are no UTF-8 are replaced.
std::string to_line(const Json& event)
{
    return event.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}
} // namespace

EventLog::EventLog(const std::string& name)
    : file(name.empty() ? nullptr : std::fopen(name.c_str(), "ae")), is_whole(name.empty() || file)
{}

void EventLog::put(const std::string& line)
{
    if (!file)
        return;
    is_whole = std::fputs(line.c_str(), file.get()) >= 0 && is_whole;
    is_whole = std::fflush(file.get()) == 0 && is_whole;
}

void EventLog::put_started(const std::string& scene, const std::string& folder, int jobs,
                           std::size_t frames)
{
    Json event = make_event("started");
    event["scene"] = scene;
    event["folder"] = folder;
    event["jobs"] = jobs;
    event["frames"] = frames;
    put(to_line(event));
}

void EventLog::put_frame(const FrameEvent& frame)
{
    const FrameReport& report = frame.report;
    const std::string reason = inq_failure(frame);
    Json event = make_event(reason.empty() ? "frame done" : "frame failed");
    event["frame"] = report.frame;
    event["seconds"] = frame.seconds;
    event["file"] = report.file.str();
    event["peak_memory"] = frame.peak_memory;
    event["how"] = frame.loss.empty() ? inq_outcome_name(report.outcome) : "lost";
    if (!reason.empty()) {
        event["reason"] = reason;
        event["code"] = frame.loss.empty() ? report.result : static_cast<int>(FRAMES_LOST);
    }
    for (int i = 0; i < report.no_images.count(); ++i)
        event["unreadable"].push_back(report.no_images.at_index(i).str());
    put(to_line(event));
}

void EventLog::put_finished(int code, int frames_done, double seconds)
{
    Json event = make_event("finished");
    event["code"] = code;
    event["frames"] = frames_done;
    event["seconds"] = seconds;
    put(to_line(event));
}
