#include "frontend/montaray_scene/Findings.h"

#include "kivlib/hdr/in_one_line.h"

#include <algorithm>

namespace {
bool take_from_end(std::string& text, const std::string& end)
{
    const bool is_there = text.ends_with(end);
    if (is_there)
        text.resize(text.size() - end.size());
    return is_there;
}
} // namespace

bool Findings::has_faults() const
{
    return std::ranges::any_of(all, &Finding::is_fault);
}

std::string Findings::inq_text() const
{
    std::string text;
    for (const Finding& finding : all)
        text += in_one_line(finding.file).str() + (finding.is_fault ? ": " : ": note: ") +
                in_one_line(finding.text).str() + '\n';
    return text;
}

Alerts::Alerts() : old_panel(set_alert_panel(take)), old_output(std::exchange(coutp, &output))
{
    our_messages.clear();
}

Alerts::~Alerts()
{
    set_alert_panel(old_panel);
    coutp = old_output;
}

int Alerts::take(const char* message, const char*, const char*, const char*, const char*)
{
    our_messages.emplace_back(message);
    return 1;
}

void Alerts::move_to(Findings& findings, const KIVString& file)
{
    for (std::string& message : our_messages) {
        take_from_end(message, ".  Contact your system administrator.");
        take_from_end(message, "\n" + file.str());
        take_from_end(message, ".");
        findings.fault(file, message);
    }
    our_messages.clear();
}
