#include "frontend/CMontaray/outcomes.h"

const char* inq_outcome_name(FrameReport::Outcome outcome)
{
    switch (outcome) {
    case FrameReport::WRITTEN:
        return "written";
    case FrameReport::COPIED:
        return "copied";
    case FrameReport::LEFT_OUT:
        return "left out";
    case FrameReport::NO_PIXMAP:
        return "no picture";
    case FrameReport::NOT_WRITTEN:
        return "not written";
    }
    return "";
}

std::string inq_failure(const FrameEvent& event)
{
    const FrameReport& report = event.report;
    if (!event.loss.empty())
        return event.loss;
    if (report.outcome == FrameReport::NO_PIXMAP)
        return "nothing was rendered";
    if (report.outcome != FrameReport::NOT_WRITTEN)
        return "";
    const std::string error =
        report.writer_error == 0
            ? ""
            : " (error " + std::to_string(report.writer_error) + " of its writer)";
    return report.file.str() + " was not written" + error;
}
