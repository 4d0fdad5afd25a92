#pragma once

#include "kivlib/hdr/KIVString.h"

#include <string>
#include <unordered_set>
#include <vector>

/// Where the parts of a scene, each whole in itself, contradict one another: what they find while
/// they are joined is collected here as long as this lives. A scene collects for itself and tells
/// the user; within somebody else's findings it hands its own over to them and tells nothing.
class LoadFindings {
public:
    LoadFindings();
    LoadFindings(const LoadFindings&) = delete;
    LoadFindings& operator=(const LoadFindings&) = delete;
    ~LoadFindings();

    /// One finding, as a sentence without full stop. Nothing happens where nobody collects.
    static void add(const KIVString& finding);

    /// Each finding once, in the order of coming.
    const std::vector<KIVString>& inq_all() const { return all; }

    /// Tells the user of all of them in one panel, or hands them over. Without findings it does
    /// nothing.
    void tell(const KIVString& scene) const;

private:
    void enter(const KIVString& finding);

    LoadFindings* outer; // not owned; null if nobody else collects
    std::vector<KIVString> all;
    std::unordered_set<std::string> met;
};
