#include "xsheet/store_control/hdr/LoadFindings.h"

#include "kivlib/hdr/alert_panel.h"

namespace {
constexpr std::size_t MOST_TOLD = 40; // lines that a panel has room for

LoadFindings* present = nullptr; // not owned
} // namespace

LoadFindings::LoadFindings() : outer(std::exchange(present, this)) {}

LoadFindings::~LoadFindings()
{
    present = outer;
}

void LoadFindings::add(const KIVString& finding)
{
    if (present)
        present->enter(finding);
}

void LoadFindings::enter(const KIVString& finding)
{
    if (met.insert(finding.str()).second)
        all.push_back(finding);
}

void LoadFindings::tell(const KIVString& scene) const
{
    if (all.empty())
        return;
    if (outer) {
        for (const KIVString& finding : all)
            outer->enter(finding);
        return;
    }
    KIVString message = "The parts of the scene " + scene + " contradict one another:";
    for (std::size_t i = 0; i < std::min(all.size(), MOST_TOLD); ++i)
        message += "\n" + all[i] + ".";
    if (all.size() > MOST_TOLD)
        message += "\nand " + KIVString(static_cast<int>(all.size() - MOST_TOLD), 0) + " more.";
    run_alert_panel(message, "Scene Loaded", nullptr, nullptr, nullptr);
}
