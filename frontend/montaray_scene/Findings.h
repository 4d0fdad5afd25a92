#pragma once

#include "kivlib/hdr/ConsoleOStream.h"
#include "kivlib/hdr/alert_panel.h"

#include <string>
#include <vector>

/// What is found in a scene, each with the file that it is about. Faults keep the scene from being
/// what it should; notes do not.
class Findings {
public:
    struct Finding {
        KIVString file;
        KIVString text;
        bool is_fault;
    };

    void fault(const KIVString& file, const KIVString& text) { all.push_back({file, text, true}); }
    void note(const KIVString& file, const KIVString& text) { all.push_back({file, text, false}); }

    bool has_faults() const;
    void add(const Findings& more) { all.insert(all.end(), more.all.begin(), more.all.end()); }

    /// A line each, whatever names and texts hold.
    std::string inq_text() const;

private:
    std::vector<Finding> all;
};

/// Takes the alert panels that come up while this lives. What readers say on the console besides
/// is dropped.
class Alerts {
public:
    Alerts();
    Alerts(const Alerts&) = delete;
    Alerts& operator=(const Alerts&) = delete;
    ~Alerts();

    /// Turns them into faults of `file`, whose name at their end is dropped.
    void move_to(Findings& findings, const KIVString& file);

private:
    static int take(const char* message, const char*, const char*, const char*, const char*);

    inline static std::vector<std::string> our_messages;
    AlertPanel old_panel;
    StringOStream output;
    KIVOStream* old_output; // not owned
};
